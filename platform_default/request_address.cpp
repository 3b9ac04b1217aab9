#include "platform_default/request_address.h"

#include <algorithm>
#include <utility>

#include "platform_default/characters.h"

namespace vtdirect::platform {
namespace {

/// What curl takes as a part of a URL without changing it. It would write escapes in small letters.
constexpr ByteTable plainBytes = TableOf([](char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value > 0x20 && value < 0x7F && byte != '%' && byte != '#' && byte != '\\';
});

bool IsPlain(std::string_view target) {
  return target.starts_with('/') &&
         std::all_of(target.begin(), target.end(), [](char byte) { return IsIn(plainBytes, byte); });
}

/// "http://host:port" of a URL; empty for a text without a scheme, or with a user in it.
std::string_view OriginIn(std::string_view url) {
  const std::size_t scheme = url.find("://");
  if (scheme == std::string_view::npos || url.find_first_of("@#") != std::string_view::npos) return {};
  return url.substr(0, url.find_first_of("/?", scheme + 3));
}

}  // namespace

void RequestAddress::Give(CURL* handle, std::string_view url) {
  const bool isApart = ChangeTarget(url) || TakeApart(url);
  CURLU* const given = isApart ? parts_.get() : nullptr;
  if (std::exchange(given_, given) != given) curl_easy_setopt(handle, CURLOPT_CURLU, given);
  // curl goes back to the text where it sends a request once more.
  curl_easy_setopt(handle, CURLOPT_URL, url.data());
}

// As curl does it on a handle with CURLOPT_PATH_AS_IS.
bool RequestAddress::TakeApart(std::string_view url) {
  constexpr unsigned asCurlDoes = CURLU_GUESS_SCHEME | CURLU_NON_SUPPORT_SCHEME | CURLU_PATH_AS_IS;
  origin_.clear();
  hasQuery_ = true;
  if (parts_ == nullptr) parts_.reset(curl_url());
  if (curl_url_set(parts_.get(), CURLUPART_URL, url.data(), asCurlDoes) != CURLUE_OK) return false;
  origin_ = OriginIn(url);
  return true;
}

// Most requests of a handle differ in their targets alone.
bool RequestAddress::ChangeTarget(std::string_view url) {
  if (origin_.empty() || !url.starts_with(origin_)) return false;
  const std::string_view target = url.substr(origin_.size());
  if (!IsPlain(target)) return false;
  const std::size_t mark = target.find('?');
  if (mark == std::string_view::npos) return SetPath(target.data()) && SetQuery(nullptr);
  return SetPath(std::string(target.substr(0, mark)).c_str()) && SetQuery(target.data() + mark + 1);
}

bool RequestAddress::SetPath(const char* path) {
  return curl_url_set(parts_.get(), CURLUPART_PATH, path, 0) == CURLUE_OK;
}

bool RequestAddress::SetQuery(const char* query) {
  if (!std::exchange(hasQuery_, query != nullptr) && query == nullptr) return true;
  return curl_url_set(parts_.get(), CURLUPART_QUERY, query, 0) == CURLUE_OK;
}

}  // namespace vtdirect::platform
