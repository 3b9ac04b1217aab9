#include "public/address_text.h"

#include "base/settings.h"
#include "base/text.h"
#include "connection/url_escape.h"
#include "platform/uri.h"
#include "public/vt_direct_manager.h"

namespace lxservices::cms_interface {
namespace {

constexpr std::string_view legacyScheme = "vndir";

bool HasVfsPrefix(std::string_view text) {
  const auto settings = CurrentSettings();
  return text.starts_with(settings->vfsScheme) ||
         (settings->legacyVfsPaths && text.starts_with(legacyScheme));
}

// The text after "scheme://" or after the bare form's "//"; nothing when it is no VFS path.
std::optional<std::string_view> BehindVfsPrefix(std::string_view text) {
  const auto delimiter = text.find("://");
  if (delimiter == std::string_view::npos) {
    return text.starts_with("//") ? std::optional(text.substr(2)) : std::nullopt;
  }
  return HasVfsPrefix(text) ? std::optional(text.substr(delimiter + 3)) : std::nullopt;
}

bool StartsWithScheme(std::string_view text, std::string_view scheme) {
  return text.starts_with(scheme) && text.substr(scheme.size()).starts_with(':');
}

}  // namespace

std::string SplitVfsPath(const char* text, std::string& relativePath) {
  const auto rest = BehindVfsPrefix(text != nullptr ? text : "");
  if (!rest) return {};
  const auto slash = rest->find('/');
  const std::string nickname(rest->substr(0, slash));
  if (!nickname.empty()) relativePath = slash != std::string_view::npos ? rest->substr(slash + 1) : "";
  return nickname;
}

UidParts SplitUid(const char* text) {
  const std::string uid = text != nullptr ? text : "";
  if (du::GetURIPart(uid, du::URIPart::Scheme) != CurrentSettings()->uidScheme) return {};
  const auto position = du::GetURIPartPosCount(uid, du::URIPart::Query).first;
  if (position == std::string::npos || position == 0) return {uid, {}};
  return {uid.substr(0, position - 1), QueryParameter(uid, "id").value_or("")};
}

std::optional<std::string> QueryParameter(const std::string& text, std::string_view name) {
  const auto [position, count] = du::GetURIPartPosCount(text, du::URIPart::Query);
  if (position == std::string::npos) return std::nullopt;
  std::string_view query = std::string_view(text).substr(position, count);
  while (true) {
    const auto end = query.find('&');
    const std::string_view parameter = query.substr(0, end);
    if (parameter.starts_with(name) && parameter.substr(name.size()).starts_with('=')) {
      return std::string(parameter.substr(name.size() + 1));
    }
    if (end == std::string_view::npos) return std::nullopt;
    query.remove_prefix(end + 1);
  }
}

std::optional<std::string> PlainNameInUid(const std::string& uid) {
  const auto value = QueryParameter(uid, "file");
  if (!value || value->empty()) return std::nullopt;
  const bool hasSlash = value->size() >= 2 && value->front() == '/';
  std::string plain;
  du::URI_Unescape(&plain, 0, hasSlash ? value->substr(1) : *value);
  return plain;
}

std::string MakeUid(const std::string& base, const std::string& id, std::string_view plainName,
                    std::string_view extra) {
  const std::string name(plainName.substr(0, plainName.find('\0')));
  std::string uid = base + "?id=" + id;
  if (!extra.empty()) uid.append("&").append(extra);
  if (!name.empty()) uid.append("&file=/").append(vantry::EscapeForUrl(name));
  return uid;
}

}  // namespace lxservices::cms_interface

namespace VtDirectManager {

using namespace lxservices::cms_interface;

bool IsVFSPath(const char* text) {
  if (text == nullptr) return false;
  const std::string_view path = text;
  const auto settings = CurrentSettings();
  if (StartsWithScheme(path, settings->vfsScheme)) return true;
  return settings->legacyVfsPaths && path.starts_with("vndir://") && !path.starts_with("vndir://?");
}

bool IsUID(const char* text) {
  if (text == nullptr) return false;
  const std::string_view uid = text;
  if (!uid.starts_with(CurrentSettings()->uidScheme)) return false;
  if (uid.find("?id=") != std::string_view::npos) return true;
  const auto query = uid.find('?');
  return query != std::string_view::npos && uid.find("&id=", query) != std::string_view::npos;
}

bool IsManaged(const char* text) {
  if (text == nullptr) return false;
  const auto settings = CurrentSettings();
  return StartsWithScheme(text, settings->uidScheme) || StartsWithScheme(text, settings->vfsScheme) ||
         (settings->legacyVfsPaths && StartsWithScheme(text, legacyScheme));
}

bool CompareUIDsEqual(const char* a, const char* b) {
  // Texts that are no UIDs split into nothing and compare equal. That is intended: two
  // addresses that name no object name no different ones.
  const UidParts left = SplitUid(a);
  const UidParts right = SplitUid(b);
  return left.base == right.base && left.id == right.id;
}

}  // namespace VtDirectManager
