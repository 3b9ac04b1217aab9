#include "translation/xliff_upload.h"

#include <utility>

#include "base/failure_step.h"
#include "base/local_path.h"
#include "documents/reading/document_reads.h"
#include "documents/storing/text_document.h"
#include "translation/xliff_context.h"
#include "translation/xliff_folder.h"
#include "translation/xliff_link.h"
#include "translation/xliff_preferences.h"
#include "translation/xliff_queries.h"

namespace lxservices::cms_interface::vantry {
namespace {

// A preference that is absent counts as empty.
std::string Preference(const XliffPreferences& preferences, const char* name) {
  const auto entry = preferences.find(name);
  return entry != preferences.end() ? entry->second : std::string();
}

bool AreComplete(const XliffPreferences& preferences) {
  for (const char* name : {"DB_CONTEXT_TYPE", "ZVK_DD_TRANSLATE", "ZVK_DD_LANGUAGE", "DB_CONTEXT_NAME",
                           "ZVK_DD_EXTENDED_DOC_TYPE", "UPLOAD_SOFT_TYPE"}) {
    if (Preference(preferences, name).empty()) return false;
  }
  return !Preference(preferences, "SUB_FOLDER_PATH").empty() ||
         !Preference(preferences, "CABINET_OID").empty();
}

// Where a source XLIFF goes. An empty folder leaves the place to the server.
struct Place {
  std::string contextId;
  std::string folderId;
};

Place FindPlaceByCabinet(ServerContext& server, const XliffPreferences& preferences) {
  return {FindContextByCabinet(server, Preference(preferences, "DB_CONTEXT_NAME"),
                               Preference(preferences, "CABINET_OID"),
                               Preference(preferences, "DB_CONTEXT_TYPE")),
          Preference(preferences, "SUB_FOLDER_OID")};
}

// The folder is looked for even when no context fits.
Place FindPlaceByPath(ServerContext& server, const XliffPreferences& preferences) {
  const std::string name = Preference(preferences, "DB_CONTEXT_NAME");
  const std::string type = Preference(preferences, "DB_CONTEXT_TYPE");
  Place place;
  if (!FindContextByName(server, name, type, place.contextId)) return {};
  place.folderId = FindFolderByPath(server, name.c_str(), type.c_str(),
                                    Preference(preferences, "SUB_FOLDER_PATH").c_str());
  return place;
}

FileInfo MakeFileInfoOf(const DocumentRecord& record) {
  FileInfo info = MakeFileInfo(record);
  info.id = record.id;
  return info;
}

}  // namespace

bool UploadSourceXliff(ServerContext& server, const std::string& sourceId, const char* xliffPath,
                       const char* language, FileInfo& result, du::http::ProgressFunction progress) {
  const FailureStep step("upload the source XLIFF");
  const FailureMark mark;
  const XliffPreferences preferences = GetXliffPreferences(server, sourceId.c_str(), language);
  if (!AreComplete(preferences)) {
    ReportReason(FollowsOr(mark, FailureKind::ServiceMissing));
    return false;
  }
  const bool byCabinet = !Preference(preferences, "CABINET_OID").empty();
  const Place place =
      byCabinet ? FindPlaceByCabinet(server, preferences) : FindPlaceByPath(server, preferences);
  if (place.contextId.empty()) {
    ReportReason(FollowsOr(mark, FailureKind::NotFound));
    return false;
  }
  DocumentRecord record;
  if (!UpdateTextDocument(server, nullptr, BareName(xliffPath).c_str(), place.contextId.c_str(),
                          place.folderId.empty() ? nullptr : place.folderId.c_str(), xliffPath,
                          Preference(preferences, "ZVK_DD_TRANSLATE").c_str(),
                          Preference(preferences, "ZVK_DD_LANGUAGE").c_str(),
                          Preference(preferences, "ZVK_DD_EXTENDED_DOC_TYPE").c_str(),
                          Preference(preferences, "UPLOAD_SOFT_TYPE").c_str(), &record,
                          std::move(progress))) {
    return false;
  }
  result = MakeFileInfoOf(record);
  // The document is on the server whether or not it could be linked; a host that was told of a failure
  // would upload it a second time.
  const FailureAside aside;
  (void)LinkXliffDocument(server, sourceId, record.id);
  return true;
}

bool UpdateSourceXliff(ServerContext& server, const std::string& sourceId, const char* xliffPath,
                       const char* language, FileInfo& result, du::http::ProgressFunction progress) {
  const FailureStep step("upload the source XLIFF");
  XliffDocumentRef xliff;
  if (!FindSourceXliff(server, sourceId, xliff)) return false;
  DocumentRecord document;
  if (ReadDocument(server, xliff.id, document) != Ok) return false;
  DocumentRecord record;
  if (!UpdateTextDocument(server, &document, nullptr, nullptr, nullptr, xliffPath, nullptr, language, nullptr,
                          nullptr, &record, std::move(progress))) {
    return false;
  }
  result = MakeFileInfoOf(record);
  const FailureAside aside;
  (void)LinkXliffDocument(server, sourceId, record.id);
  return true;
}

}  // namespace lxservices::cms_interface::vantry
