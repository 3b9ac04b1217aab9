#include "simulator/store/xliff_preferences.h"

#include <algorithm>
#include <array>

#include "simulator/store/folder_store.h"

namespace vantry_sim {
namespace {

constexpr std::string_view folderName = "Translations";

constexpr std::array<std::string_view, 9> names{
    "DB_CONTEXT_TYPE", "DB_CONTEXT_NAME",          "CABINET_OID",
    "SUB_FOLDER_OID",  "SUB_FOLDER_PATH",          "ZVK_DD_TRANSLATE",
    "ZVK_DD_LANGUAGE", "ZVK_DD_EXTENDED_DOC_TYPE", "UPLOAD_SOFT_TYPE"};

/// Preferences know a context's type in capitals, unlike the lists of contexts.
std::string InCapitals(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return text;
}

void AddFolder(std::vector<XliffPreference>& out, Database& database, const DocumentRow& document,
               XliffFolder way) {
  const auto roots = RootFolders(database, document.contextKey);
  if (roots.empty()) return;
  const auto folder = FindFolderByPath(database, document.contextKey, folderName);
  if (way == XliffFolder::Path) {
    out.push_back({"SUB_FOLDER_PATH", FolderPath(database, folder ? folder->key : roots.front().key)});
    return;
  }
  out.push_back({"CABINET_OID", roots.front().oid});
  if (folder) out.push_back({"SUB_FOLDER_OID", folder->oid});
}

/// Takes `text` up to the apostrophe that ends it off the front, which begins with the opening one.
std::optional<std::string> TakeText(std::string_view& text) {
  if (!text.starts_with('\'')) return std::nullopt;
  text.remove_prefix(1);
  std::string out;
  while (!text.empty()) {
    const bool quote = text.front() == '\'';
    const bool doubled = text.starts_with("''");
    if (quote && !doubled) {
      text.remove_prefix(1);
      return out;
    }
    out += text.front();
    text.remove_prefix(doubled ? 2 : 1);
  }
  return std::nullopt;
}

}  // namespace

bool IsXliffPreference(std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::vector<XliffPreference> XliffPreferencesFor(Database& database, const Options& options,
                                                 const DocumentRow& document, const std::string& language) {
  std::vector<XliffPreference> all{{"DB_CONTEXT_TYPE", InCapitals(document.contextKind)},
                                   {"DB_CONTEXT_NAME", document.contextName}};
  AddFolder(all, database, document, options.xliffFolder);
  all.push_back({"ZVK_DD_TRANSLATE", "yes"});
  all.push_back({"ZVK_DD_LANGUAGE", language});
  all.push_back({"ZVK_DD_EXTENDED_DOC_TYPE", "x-raomSource"});
  all.push_back({"UPLOAD_SOFT_TYPE", std::string(xliffType)});
  const auto& missing = options.missingPreferences;
  std::erase_if(all, [&](const XliffPreference& preference) {
    return std::find(missing.begin(), missing.end(), preference.name) != missing.end();
  });
  return all;
}

std::optional<XliffQuestion> ParseXliffQuestion(std::string_view arguments) {
  XliffQuestion question;
  for (;;) {
    const auto equals = arguments.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    const std::string_view name = arguments.substr(0, equals);
    arguments.remove_prefix(equals + 1);
    const bool isDocument = name == "oidForQ7zkDocument";
    if (!isDocument && name != "sourceLanguage") return std::nullopt;
    auto value = TakeText(arguments);
    std::string& place = isDocument ? question.document : question.language;
    if (!value || value->empty() || !place.empty()) return std::nullopt;
    place = std::move(*value);
    if (arguments.empty()) break;
    if (!arguments.starts_with(',')) return std::nullopt;
    arguments.remove_prefix(1);
  }
  if (question.document.empty() || question.language.empty()) return std::nullopt;
  return question;
}

}  // namespace vantry_sim
