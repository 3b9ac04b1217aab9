#include "base/server_key.h"

#include <optional>

#include "base/settings.h"

namespace lxservices::cms_interface {
namespace {

// What comes after the scheme, or nothing for a scheme that no server has.
std::optional<std::string_view> BehindScheme(std::string_view url, std::string_view uidScheme) {
  const std::string keyPrefix = std::string(uidScheme) + "://";
  for (const std::string_view prefix :
       {std::string_view("http://"), std::string_view("https://"), std::string_view(keyPrefix)}) {
    if (url.starts_with(prefix)) return url.substr(prefix.size());
  }
  return std::nullopt;
}

}  // namespace

std::string NormalizeServerUri(const char* url) {
  return NormalizeServerUri(url, CurrentSettings()->uidScheme);
}

std::string NormalizeServerUri(const char* url, std::string_view uidScheme) {
  if (url == nullptr) return {};
  const auto rest = BehindScheme(url, uidScheme);
  if (!rest) return {};
  std::string_view kept = *rest;
  // An "@" before the first "/" ends the key: what comes before it is kept, and not the host after it. UIDs
  // hold keys of this form, and one that kept the host would name another server than they do.
  const auto position = kept.find_first_of("@/");
  if (position != std::string_view::npos && kept[position] == '@') kept = kept.substr(0, position);
  std::string key(uidScheme);
  key += "://";
  key += kept;
  return WithTrailingSlash(key);
}

std::string WithTrailingSlash(std::string_view url) {
  std::string result(url);
  if (!result.empty() && result.back() != '/') result += '/';
  return result;
}

}  // namespace lxservices::cms_interface
