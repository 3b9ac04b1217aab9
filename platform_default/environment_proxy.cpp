#include "platform_default/environment_proxy.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace vtdirect::platform {
namespace {

// curl knows no HTTP_PROXY: a web server would let whoever asks set it, by a header line "Proxy".
constexpr std::array<std::string_view, 3> plainNames{"all_proxy=", "ALL_PROXY=", "http_proxy="};
constexpr std::array<std::string_view, 4> namesForTls{
    "all_proxy=", "ALL_PROXY=", "https_proxy=", "HTTPS_PROXY="};

constexpr char Lower(char letter) {
  return static_cast<char>(letter | 0x20);
}

/// Most variables are told apart by their first letters, and have not to be looked at any further.
bool MayBeOne(const char* variable) {
  const char first = Lower(variable[0]);
  if (first == 'a') return Lower(variable[1]) == 'l';
  return first == 'h' && Lower(variable[1]) == 't';
}

template <typename Names>
bool IsSetToOne(std::string_view variable, const Names& names) {
  return std::any_of(names.begin(), names.end(), [variable](std::string_view name) {
    return variable.size() > name.size() && variable.starts_with(name);
  });
}

}  // namespace

bool EnvironmentNamesProxy(bool isPlain) {
  for (char** variable = ::environ; variable != nullptr && *variable != nullptr; ++variable) {
    if (!MayBeOne(*variable)) continue;
    if (isPlain ? IsSetToOne(*variable, plainNames) : IsSetToOne(*variable, namesForTls)) return true;
  }
  return false;
}

}  // namespace vtdirect::platform
