#include "translation/xliff_queries.h"

#include <utility>

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
ToldDocument ReadLastReference(ServerContext& server, const std::string& path, XliffDocumentRef known) {
  ODataPageReader reader(server, path);
  ToldDocument told{std::move(known)};
  while (reader.Next()) {
    if (!reader.page().IsObject()) return {std::move(told.document)};
    const rapidjson::Value* rows = FindArray(reader.page(), "value");
    if (rows == nullptr) continue;
    for (const auto& row : rows->GetArray()) {
      if (row.IsObject()) told.complete = ReadReference(row, told.document);
    }
    if (told.complete) return told;
  }
  return {std::move(told.document)};
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

ToldDocument FindSourceXliff(ServerContext& server, const std::string& sourceId, XliffDocumentRef known) {
  const FailureStep step("find the source XLIFF");
  return ReadLastReference(server, DocumentPath(sourceId) + "/Xliff", std::move(known));
}

ToldDocument ReadDocumentLanguage(ServerContext& server, const std::string& documentId,
                                  XliffDocumentRef known) {
  const FailureStep step("read the language");
  return ReadLastReference(server, DocumentPath(documentId), std::move(known));
}

TranslatedDocument ListTranslations(ServerContext& server, const std::string& sourceId,
                                    TranslatedDocument known) {
  const FailureStep step("list the translations");
  ODataPageReader reader(server, DocumentPath(sourceId) + "?$expand=Translations");
  known.complete = false;
  while (reader.Next()) {
    known.complete = false;
    if (!reader.page().IsObject()) break;
    known.complete = ReadReference(reader.page(), known.source);
    ReadTranslations(reader.page(), known.translations);
  }
  return known;
}

}  // namespace lxservices::cms_interface::vantry
