#include "hosts/mount/names/shown_name.h"

#include <algorithm>
#include <cctype>

#include "hosts/cli/files/escaped_name.h"
#include "hosts/cli/files/sha256.h"

namespace vtdirect_mount {
namespace {

constexpr std::size_t hashDigits = 16;

[[nodiscard]] int DigitOf(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  const int lower = std::tolower(static_cast<unsigned char>(character));
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// The character that "%hh" at this place stands for; 0 when it is none of those that paths escape.
[[nodiscard]] char EscapedAt(std::string_view text, std::size_t position) {
  if (text[position] != '%' || text.size() - position < 3) return 0;
  const int high = DigitOf(text[position + 1]);
  const int low = DigitOf(text[position + 2]);
  if (high < 0 || low < 0) return 0;
  const char character = static_cast<char>(high * 16 + low);
  return std::string_view("|\\/<>:\"?*%").find(character) == std::string_view::npos ? '\0' : character;
}

[[nodiscard]] std::string Unescaped(std::string_view entry) {
  std::string plain;
  for (std::size_t position = 0; position < entry.size();) {
    const char escaped = EscapedAt(entry, position);
    plain += escaped != 0 ? escaped : entry[position];
    position += escaped != 0 ? 3 : 1;
  }
  return plain;
}

[[nodiscard]] bool ReadsLikeEscaped(std::string_view plain) {
  for (std::size_t position = 0; position < plain.size(); ++position) {
    if (EscapedAt(plain, position) != 0) return true;
  }
  return false;
}

// These three mean something else in every folder.
[[nodiscard]] bool IsReserved(std::string_view plain) {
  return plain == "." || plain == ".." || plain == versionsFolder;
}

// At the start of a character of UTF-8, so that no half of one is shown.
[[nodiscard]] std::string Cut(const std::string& name) {
  const std::string hash = vtdirect_cli::Sha256OfText(name).substr(0, hashDigits);
  std::size_t end = longestName - hashDigits - 1;
  while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80U) --end;
  return name.substr(0, end) + "~" + hash;
}

[[nodiscard]] std::string Shown(const std::string& plain, bool isToBeEscaped) {
  std::string shown = plain;
  if (IsReserved(plain)) {
    shown = "%2e" + plain.substr(1);
  } else if (isToBeEscaped) {
    shown = vtdirect_cli::EscapedName(plain);
  }
  return shown.size() > longestName ? Cut(shown) : shown;
}

[[nodiscard]] bool HoldsSlash(const std::string& plain) {
  return plain.find('/') != std::string::npos;
}

}  // namespace

std::string ShownName(std::string_view entry) {
  const std::string plain = Unescaped(entry);
  return Shown(plain, HoldsSlash(plain) || ReadsLikeEscaped(plain));
}

std::string ShownFolderName(std::string_view entry) {
  const std::string plain(entry);
  return Shown(plain, HoldsSlash(plain));
}

std::string NameInPath(std::string_view shown) {
  return vtdirect_cli::NormalizedName(shown);
}

std::pair<std::string, std::string> PartsOfPath(const std::string& path) {
  const std::size_t name = path.rfind('/') + 1;
  return {path.substr(0, name), path.substr(name)};
}

}  // namespace vtdirect_mount
