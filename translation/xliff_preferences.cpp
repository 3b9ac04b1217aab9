#include "translation/xliff_preferences.h"

#include "base/failure_step.h"
#include "connection/json_members.h"
#include "connection/odata_page_reader.h"
#include "connection/url_escape.h"

namespace lxservices::cms_interface::vantry {
namespace {

void ReadPreferences(const rapidjson::Value& page, XliffPreferences& preferences) {
  const rapidjson::Value* rows = FindArray(page, "Preferences");
  if (rows == nullptr) return;
  for (const auto& row : rows->GetArray()) {
    const rapidjson::Value* name = FindString(row, "Name");
    const rapidjson::Value* value = FindString(row, "Value");
    if (name != nullptr && value != nullptr) preferences[std::string(TextView(*name))] = TextView(*value);
  }
}

}  // namespace

XliffPreferences GetXliffPreferences(ServerContext& server, const std::string& documentId,
                                     const std::string& sourceLanguage) {
  const FailureStep step("read the translation preferences");
  XliffPreferences preferences;
  ODataPageReader reader(server, "servlet/odata/v1/DynamicDocMgmt/XliffPreferences(oidForQ7zkDocument='" +
                                     EscapeForUrl(documentId) + "',sourceLanguage='" +
                                     EscapeForUrl(sourceLanguage) + "')");
  while (reader.Next()) {
    if (!reader.page().IsObject()) break;
    ReadPreferences(reader.page(), preferences);
  }
  return preferences;
}

}  // namespace lxservices::cms_interface::vantry
