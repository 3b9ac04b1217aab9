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
std::string Preference(const XliffPreferences& preferences, const std::string& name) {
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
  const auto contextId = FindContextByName(server, name, type);
  if (!contextId) return {};
  return {*contextId, FindFolderByPath(server, name, type, Preference(preferences, "SUB_FOLDER_PATH"))};
}

NewTextDocument DocumentFor(const XliffPreferences& preferences, const Place& place,
                            const std::string& xliffPath) {
  NewTextDocument document;
  document.cadName = BareName(xliffPath);
  document.contextId = place.contextId;
  if (!place.folderId.empty()) document.folderId = place.folderId;
  document.translate = Preference(preferences, "ZVK_DD_TRANSLATE");
  document.language = Preference(preferences, "ZVK_DD_LANGUAGE");
  document.extendedDocType = Preference(preferences, "ZVK_DD_EXTENDED_DOC_TYPE");
  document.typeId = Preference(preferences, "UPLOAD_SOFT_TYPE");
  return document;
}

// The document is on the server whether or not it can be linked; a host that was told of a failure would upload
// it a second time.
FileInfo LinkUploaded(ServerContext& server, const std::string& sourceId, const DocumentRecord& uploaded) {
  const FailureAside aside;
  (void)LinkXliffDocument(server, sourceId, uploaded.id);
  return MakeFileInfo(uploaded, uploaded.id);
}

}  // namespace

std::optional<FileInfo> UploadSourceXliff(ServerContext& server, const std::string& sourceId,
                                          const std::string& xliffPath, const std::string& language,
                                          du::http::ProgressFunction progress) {
  const FailureStep step("upload the source XLIFF");
  const FailureMark mark;
  const XliffPreferences preferences = GetXliffPreferences(server, sourceId, language);
  if (!AreComplete(preferences)) {
    ReportReason(FollowsOr(mark, FailureKind::ServiceMissing));
    return std::nullopt;
  }
  const bool byCabinet = !Preference(preferences, "CABINET_OID").empty();
  const Place place =
      byCabinet ? FindPlaceByCabinet(server, preferences) : FindPlaceByPath(server, preferences);
  if (place.contextId.empty()) {
    ReportReason(FollowsOr(mark, FailureKind::NotFound));
    return std::nullopt;
  }
  const auto uploaded =
      UpdateTextDocument(server, DocumentFor(preferences, place, xliffPath), xliffPath, std::move(progress));
  if (!uploaded) return std::nullopt;
  return LinkUploaded(server, sourceId, *uploaded);
}

std::optional<FileInfo> UpdateSourceXliff(ServerContext& server, const std::string& sourceId,
                                          const std::string& xliffPath, const std::string& language,
                                          du::http::ProgressFunction progress) {
  const FailureStep step("upload the source XLIFF");
  const ToldDocument xliff = FindSourceXliff(server, sourceId);
  if (!xliff.complete) return std::nullopt;
  const auto [status, document] = ReadDocument(server, xliff.document.id);
  if (status != Ok) return std::nullopt;
  const auto uploaded = UpdateTextDocument(server, document, language, xliffPath, std::move(progress));
  if (!uploaded) return std::nullopt;
  return LinkUploaded(server, sourceId, *uploaded);
}

}  // namespace lxservices::cms_interface::vantry
