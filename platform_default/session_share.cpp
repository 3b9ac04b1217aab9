#include "platform_default/session_share.h"

namespace vtdirect::platform {

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
  const auto known = ports_.find(origin.host);
  if (known != ports_.end()) return known->second == origin.port;
  return ports_.size() < mostHosts && ports_.emplace(origin.host, origin.port).second;
}

void SessionShare::Lock(CURL*, curl_lock_data data, curl_lock_access, void* self) {
  static_cast<SessionShare*>(self)->mutexes_[data].lock();
}

void SessionShare::Unlock(CURL*, curl_lock_data data, void* self) {
  static_cast<SessionShare*>(self)->mutexes_[data].unlock();
}

}  // namespace vtdirect::platform
