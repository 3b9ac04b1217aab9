#include "platform_default/request_address.h"

#include <algorithm>

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

void RequestAddress::Give(CURL* handle, const std::string& url) {
  const bool isApart = ChangeTarget(url) || TakeApart(url);
  curl_easy_setopt(handle, CURLOPT_CURLU, isApart ? parts_.get() : nullptr);
  // curl goes back to the text where it sends a request once more.
  curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
}

// As curl does it on a handle with CURLOPT_PATH_AS_IS.
bool RequestAddress::TakeApart(const std::string& url) {
  constexpr unsigned asCurlDoes = CURLU_GUESS_SCHEME | CURLU_NON_SUPPORT_SCHEME | CURLU_PATH_AS_IS;
  origin_.clear();
  parts_.reset(curl_url());
  if (curl_url_set(parts_.get(), CURLUPART_URL, url.c_str(), asCurlDoes) != CURLUE_OK) return false;
  origin_ = OriginIn(url);
  return true;
}

// Most requests of a handle differ in their targets alone.
bool RequestAddress::ChangeTarget(const std::string& url) {
  if (origin_.empty() || !url.starts_with(origin_)) return false;
  const std::string_view target = std::string_view(url).substr(origin_.size());
  if (!IsPlain(target)) return false;
  const std::size_t mark = target.find('?');
  const std::string path(target.substr(0, mark));
  const char* query = mark == std::string_view::npos ? nullptr : target.data() + mark + 1;
  return curl_url_set(parts_.get(), CURLUPART_PATH, path.c_str(), 0) == CURLUE_OK &&
         curl_url_set(parts_.get(), CURLUPART_QUERY, query, 0) == CURLUE_OK;
}

}  // namespace vtdirect::platform
