#include "translation/xliff_queries.h"

#include "base/failure_step.h"
#include "connection/json_members.h"
#include "connection/odata_page_reader.h"
#include "connection/url_escape.h"

namespace lxservices::cms_interface::vantry {
namespace {

std::string DocumentPath(const std::string& id) {
  return "servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('" + EscapeForUrl(id) + "')";
}

// Takes over what the object has; whether it has both.
bool ReadReference(const rapidjson::Value& object, XliffDocumentRef& reference) {
  const rapidjson::Value* id = FindString(object, "ID");
  const rapidjson::Value* language = FindString(object, "AuthoringLanguage");
  if (id != nullptr) reference.id = TextView(*id);
  if (language != nullptr) reference.language = TextView(*language);
  return id != nullptr && language != nullptr;
}

// The last row decides, whatever the rows before it were.
bool ReadLastReference(ServerContext& server, const std::string& path, XliffDocumentRef& reference) {
  ODataPageReader reader(server, path);
  bool complete = false;
  while (reader.Next()) {
    if (!reader.page().IsObject()) return false;
    const rapidjson::Value* rows = FindArray(reader.page(), "value");
    if (rows == nullptr) continue;
    for (const auto& row : rows->GetArray()) {
      if (row.IsObject()) complete = ReadReference(row, reference);
    }
    if (complete) return true;
  }
  return false;
}

void ReadTranslations(const rapidjson::Value& page, std::map<std::string, std::string>& translations) {
  const rapidjson::Value* rows = FindArray(page, "Translations");
  if (rows == nullptr) return;
  for (const auto& row : rows->GetArray()) {
    XliffDocumentRef translation;
    if (ReadReference(row, translation)) translations[translation.language] = translation.id;
  }
}

}  // namespace

bool FindSourceXliff(ServerContext& server, const std::string& sourceId, XliffDocumentRef& xliff) {
  const FailureStep step("find the source XLIFF");
  return ReadLastReference(server, DocumentPath(sourceId) + "/Xliff", xliff);
}

bool ReadDocumentLanguage(ServerContext& server, const std::string& documentId, XliffDocumentRef& document) {
  const FailureStep step("read the language");
  return ReadLastReference(server, DocumentPath(documentId), document);
}

bool ListTranslations(ServerContext& server, const std::string& sourceId, XliffDocumentRef& source,
                      std::map<std::string, std::string>& translations) {
  const FailureStep step("list the translations");
  ODataPageReader reader(server, DocumentPath(sourceId) + "?$expand=Translations");
  bool complete = false;
  while (reader.Next()) {
    complete = false;
    if (!reader.page().IsObject()) break;
    complete = ReadReference(reader.page(), source);
    ReadTranslations(reader.page(), translations);
  }
  return complete;
}

}  // namespace lxservices::cms_interface::vantry
