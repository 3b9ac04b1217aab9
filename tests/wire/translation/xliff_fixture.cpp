#include "tests/wire/translation/xliff_fixture.h"

#include <stdlib.h>

namespace vtdirect_test {

std::string DynamicDocumentPath(const std::string& id) {
  return "servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('" + id + "')";
}
std::string SourcePath(const std::string& id) {
  return DynamicDocumentPath(id) + "/Xliff";
}
std::string TranslationsPath(const std::string& id) {
  return DynamicDocumentPath(id) + "?$expand=Translations";
}
std::string PreferencesPath(const std::string& id, const std::string& language) {
  return "servlet/odata/v1/DynamicDocMgmt/XliffPreferences(oidForQ7zkDocument='" + id + "',sourceLanguage='" +
         language + "')";
}
std::string FolderPath(int levels) {
  return "servlet/odata/v1/DataAdmin/Containers?$expand=Folders($select=ID,Name,Location;$levels=" +
         std::to_string(levels) + ")&$select=Name,ID&$filter=Name%20eq%20%27Gadget%27";
}

std::string Reference(const std::string& id, const std::string& language) {
  return R"({"ID":")" + id + R"(","AuthoringLanguage":")" + language + "\"}";
}

std::string Preferences(const std::map<std::string, std::string>& values) {
  std::vector<std::string> rows;
  for (const auto& [name, value] : values) {
    rows.push_back(R"({"Name":)" + Quoted(name) + R"(,"Value":)" + Quoted(value) + "}");
  }
  return "{\"Preferences\":" + List(rows) + "}";
}

std::string LinkBody(const std::string& sourceId, const std::string& xliffId) {
  return R"({ "oidForQ7zkDocument":")" + sourceId + R"(", "oidForXliffDocument":")" + xliffId + R"(" })";
}

std::map<std::string, std::string> PathPreferences() {
  return {{"DB_CONTEXT_TYPE", "Product"},    {"DB_CONTEXT_NAME", "Gadget"},
          {"SUB_FOLDER_PATH", "/Trans/Sub"}, {"ZVK_DD_TRANSLATE", "no"},
          {"ZVK_DD_LANGUAGE", "de"},         {"ZVK_DD_EXTENDED_DOC_TYPE", "XLIFF"},
          {"UPLOAD_SOFT_TYPE", "vn.Soft"}};
}

std::map<std::string, std::string> CabinetPreferences() {
  auto preferences = PathPreferences();
  preferences.erase("SUB_FOLDER_PATH");
  preferences["CABINET_OID"] = "K1";
  preferences["SUB_FOLDER_OID"] = "F9";
  return preferences;
}

TraceLine XliffInformation(const std::string& text) {
  return {0, "VtDirectXliff", text};
}
TraceLine XliffError(const std::string& text) {
  return {3, "VtDirectXliff", text};
}

XliffTest::XliffTest() {
  unsetenv("FENLOOM_FORCE_NRX_XLIFF_ENABLE");
  setenv("FENLOOM_XLIFF_BOUNDED_FOLDER_SCAN", "1", 1);
}

void XliffTest::LoseTemporaryDirectory() const {
  setenv("TMPDIR", directory.File("missing").c_str(), 1);
}

Lines XliffTest::LinesFrom(std::size_t first) const {
  const Lines lines = transport.lines();
  if (first > lines.size()) return {};
  return {lines.begin() + static_cast<std::ptrdiff_t>(first), lines.end()};
}

}  // namespace vtdirect_test
