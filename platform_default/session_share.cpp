#include "platform_default/session_share.h"

#include <algorithm>
#include <cstring>

#include "platform/trace.h"
#include "platform/uri.h"
#include "platform_default/characters.h"

namespace vtdirect::platform {
namespace {

/// A host as curl knows it for its cookies: without escapes, in small letters, and without the zone of
/// "[fe80::1%25eth0]".
std::string HostOfCookies(const std::string& host) {
  std::string known;
  du::URI_Unescape(&known, 0, host);
  known.erase(std::min(known.find_first_of("%]"), known.size()));
  std::transform(known.begin(), known.end(), known.begin(), ToAsciiLower);
  return known;
}

std::size_t SizeOfCookies(CURL* handle) {
  curl_slist* cookies = nullptr;
  if (curl_easy_getinfo(handle, CURLINFO_COOKIELIST, &cookies) != CURLE_OK) return 0;
  std::size_t size = 0;
  for (const curl_slist* cookie = cookies; cookie != nullptr; cookie = cookie->next)
    size += std::strlen(cookie->data);
  curl_slist_free_all(cookies);
  return size;
}

}  // namespace

SessionShare::SessionShare() : share_(curl_share_init()) {
  if (share_ == nullptr) return;
  curl_share_setopt(share_.get(), CURLSHOPT_LOCKFUNC, &Lock);
  curl_share_setopt(share_.get(), CURLSHOPT_UNLOCKFUNC, &Unlock);
  curl_share_setopt(share_.get(), CURLSHOPT_USERDATA, this);
  curl_share_setopt(share_.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
  curl_share_setopt(share_.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
}

bool SessionShare::Admits(const Origin& origin) {
  // A server may redirect to any number of hosts.
  constexpr std::size_t mostHosts = 256;
  const std::lock_guard lock(portsMutex_);
  const std::string host = HostOfCookies(origin.host);
  const auto known = ports_.find(host);
  if (known != ports_.end()) return known->second == origin.port;
  return ports_.size() < mostHosts && ports_.emplace(host, origin.port).second;
}

void SessionShare::CookiesCame(CURL* handle, std::size_t bytes) {
  if (bytes == 0 || uncounted_.fetch_add(bytes) + bytes <= mostCookieBytes) return;
  uncounted_ = 0;
  if (SizeOfCookies(handle) <= mostCookieBytes) return;
  curl_easy_setopt(handle, CURLOPT_COOKIELIST, "ALL");
  dp::LXTracer("fenlet", "Transport")(dp::TraceType::Warning)
      << "A server has set more than " << mostCookieBytes
      << " bytes of cookies. All cookies of its session are dropped.\n";
}

void SessionShare::Lock(CURL*, curl_lock_data data, curl_lock_access, void* self) {
  static_cast<SessionShare*>(self)->mutexes_[data].lock();
}

void SessionShare::Unlock(CURL*, curl_lock_data data, void* self) {
  static_cast<SessionShare*>(self)->mutexes_[data].unlock();
}

}  // namespace vtdirect::platform
