#include "platform/localizer.h"

#include <fcntl.h>
#include <rapidjson/document.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/environment.h"
#include "platform_default/characters.h"
#include "platform_default/descriptor.h"
#include "platform_default/json_exponents.h"

namespace du {
namespace {

using vtdirect::platform::CloseDescriptor;
using vtdirect::platform::IsAsciiDigit;
using vtdirect::platform::IsAsciiLetter;
using vtdirect::platform::ReadSome;
using vtdirect::platform::ShortenJsonExponents;
using vtdirect::platform::ToAsciiLower;

/// A catalogue holds a handful of words; whatever is larger is no catalogue.
constexpr std::size_t largestCatalogue = 256 * 1024;

struct CompiledText {
  std::string_view key;
  std::string_view text;
};

constexpr std::string_view compiledCatalogue = "cmsinterface:cmsinterfaceStrings";
constexpr std::array<CompiledText, 6> compiledTexts{{
    {"VantryVFSPathProducts", "Products"},
    {"VantryVFSPathLibraries", "Libraries"},
    {"VantryVFSPathProjects", "Projects"},
    {"VantryVFSPathSites", "Sites"},
    {"VantryVFSPathFolders", "Folders"},
    {"VantryVFSPathWorkspaces", "Workspaces"},
}};

struct DirectorySlot {
  std::mutex mutex;
  std::string directory;
};

DirectorySlot& Slot() {
  static DirectorySlot& slot = *new DirectorySlot;
  return slot;
}

std::string CatalogueDirectory() {
  {
    const std::lock_guard lock(Slot().mutex);
    if (!Slot().directory.empty()) return Slot().directory;
  }
  const std::string named = dp::Environment::Get("FENLOOM_CATALOGUES");
  return named.empty() ? VTDIRECT_CATALOGUE_DIRECTORY : named;
}

/// "de" of "de_DE.UTF-8"; empty when the text does not begin with a plain language name. Only letters pass,
/// since the result becomes part of a file name.
std::string LanguageOf(std::string_view locale) {
  std::string language(locale.substr(0, locale.find_first_of("_.@-")));
  if (language.size() < 2 || language.size() > 8) return {};
  if (!std::all_of(language.begin(), language.end(), IsAsciiLetter)) return {};
  std::transform(language.begin(), language.end(), language.begin(), ToAsciiLower);
  return language;
}

std::string CurrentLanguage() {
  for (const char* variable : {"FENLOOM_LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
    const std::string value = dp::Environment::Get(variable);
    if (value.empty()) continue;
    const std::string language = LanguageOf(value);
    return language.empty() || language == "posix" ? "en" : language;
  }
  return "en";
}

bool IsPlainName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char byte) {
    return IsAsciiLetter(byte) || IsAsciiDigit(byte) || byte == '_' || byte == '-';
  });
}

/// The catalogue's file for the language in force; empty for a name that is not of the form "group:name".
std::string CatalogueFile(std::string_view catalogue) {
  const std::size_t colon = catalogue.find(':');
  if (colon == std::string_view::npos) return {};
  const std::string_view group = catalogue.substr(0, colon);
  const std::string_view name = catalogue.substr(colon + 1);
  if (!IsPlainName(group) || !IsPlainName(name)) return {};
  return CatalogueDirectory() + "/" + std::string(group) + "/" + std::string(name) + "." + CurrentLanguage() +
         ".json";
}

/// Reads a small regular file; nothing for any other, so that a pipe cannot stall the caller.
std::optional<std::string> ReadSmallFile(const std::string& path) {
  int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor < 0) return std::nullopt;
  struct stat status {};
  const bool fits = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size >= 0 &&
                    static_cast<std::size_t>(status.st_size) <= largestCatalogue;
  std::string content(fits ? static_cast<std::size_t>(status.st_size) : 0, '\0');
  std::size_t filled = 0;
  while (filled < content.size()) {
    const std::ptrdiff_t got = ReadSome(descriptor, reinterpret_cast<std::uint8_t*>(content.data()) + filled,
                                        content.size() - filled);
    if (got <= 0) break;
    filled += static_cast<std::size_t>(got);
  }
  CloseDescriptor(&descriptor);
  if (!fits || filled != content.size()) return std::nullopt;
  return content;
}

std::optional<std::string> TextFromFile(std::string_view catalogue, std::string_view key) {
  const std::string path = CatalogueFile(catalogue);
  if (path.empty()) return std::nullopt;
  const std::optional<std::string> content = ReadSmallFile(path);
  if (!content) return std::nullopt;
  const std::string json = ShortenJsonExponents(*content);
  rapidjson::Document document;
  // Iterative: the depth of a file that anybody may have edited must not become the depth of our stack.
  constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;
  document.Parse<flags>(json.data(), json.size());
  if (document.HasParseError() || !document.IsObject()) return std::nullopt;
  const auto member = document.FindMember(rapidjson::Value(rapidjson::StringRef(key.data(), key.size())));
  if (member == document.MemberEnd() || !member->value.IsString()) return std::nullopt;
  return std::string(member->value.GetString(), member->value.GetStringLength());
}

std::optional<std::string> CompiledTextOf(std::string_view catalogue, std::string_view key) {
  if (catalogue != compiledCatalogue) return std::nullopt;
  for (const CompiledText& entry : compiledTexts) {
    if (entry.key == key) return std::string(entry.text);
  }
  return std::nullopt;
}

}  // namespace

Localizer::Localizer(const char* catalogue) : catalogue_(catalogue == nullptr ? "" : catalogue) {}

std::string Localizer::LocalizeMessage(const char* key, ActionOnFailure) {
  if (key == nullptr) return {};
  if (const std::optional<std::string> text = TextFromFile(catalogue_, key)) return *text;
  return CompiledTextOf(catalogue_, key).value_or(key);
}

void SetCatalogueDirectory(const std::string& directory) {
  const std::lock_guard lock(Slot().mutex);
  Slot().directory = directory;
}

}  // namespace du
