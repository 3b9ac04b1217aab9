#include "hosts/cli/files/name_for_server.h"

#include <charconv>
#include <string_view>

#include "hosts/cli/files/escaped_name.h"
#include "hosts/cli/files/target_file.h"

namespace vtdirect_cli {
namespace {

// With the byte in the place of each "%hh".
[[nodiscard]] std::string Unescaped(std::string_view name) {
  std::string plain;
  while (!name.empty()) {
    unsigned value = 0;
    const bool isLongEnough = name.front() == '%' && name.size() > 2;
    const char* const end = isLongEnough ? name.data() + 3 : name.data();
    const bool isEscape = isLongEnough && std::from_chars(name.data() + 1, end, value, 16).ptr == end;
    plain += isEscape ? static_cast<char>(value) : name.front();
    name.remove_prefix(isEscape ? 3 : 1);
  }
  return plain;
}

// A zero byte would end the path, and these two names are no names in one.
[[nodiscard]] bool IsFit(const std::string& name) {
  return !name.empty() && name.find('\0') == std::string::npos && name != "." && name != "..";
}

}  // namespace

std::string NameForServer(const std::string& fileName) {
  const std::string plain = Unescaped(fileName);
  std::string name = EscapedName(plain);
  // Only what get would call so has been escaped by it: a "100%41" of somebody else is called "100%41".
  return IsFit(plain) && SafeFileName(name) == fileName ? name : NormalizedName(fileName);
}

}  // namespace vtdirect_cli
