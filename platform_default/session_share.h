#pragma once

#include <curl/curl.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform_default/origin.h"

namespace vtdirect::platform {

/// What the cookies of one session may take of memory, in bytes. A server that works by sessions sets one of them.
inline constexpr std::size_t mostCookieBytes = 1024 * 1024;

/// What all handles of one session have in common inside curl: cookies and TLS sessions. The session of an
/// origin has it together with the sessions of those that its redirects lead to: whom a server sends to a
/// login for its whole domain comes back with a cookie that counts at both.
///
/// A cookie goes where its host or domain allows it, but never to another port of the host that it came from:
/// another port may be another user's server. curl knows no ports of cookies, so of each host only one port
/// gets in. A TLS session goes to the host and port that gave it, and to no other. Any thread.
class SessionShare {
 public:
  SessionShare();
  SessionShare(const SessionShare&) = delete;
  SessionShare& operator=(const SessionShare&) = delete;

  /// Whether the sessions of this origin may have it too. The first port of a host that asks gets in.
  [[nodiscard]] bool Admits(const Origin& origin);

  /// To be told after each exchange how many bytes of cookies its answers have set. From time to time this counts
  /// what is kept of them, and drops all of it when that is more than mostCookieBytes: a server could set new ones
  /// with each answer.
  /// @param handle  one that has the share and performs no exchange
  void CookiesCame(CURL* handle, std::size_t bytes);

  /// For CURLOPT_SHARE. Null when curl has no memory for it: then each handle has its own.
  [[nodiscard]] CURLSH* forCurl() const { return share_.get(); }

 private:
  struct Closer {
    void operator()(CURLSH* share) const { curl_share_cleanup(share); }
  };
  static void Lock(CURL* handle, curl_lock_data data, curl_lock_access access, void* self);
  static void Unlock(CURL* handle, curl_lock_data data, void* self);

  std::atomic<std::size_t> uncounted_{0};  ///< bytes of cookies that came since they were counted
  std::mutex portsMutex_;
  std::map<std::string, std::uint16_t> ports_;           ///< by host
  std::array<std::mutex, CURL_LOCK_DATA_LAST> mutexes_;  ///< one for each kind of data that curl locks
  std::unique_ptr<CURLSH, Closer> share_;
};

}  // namespace vtdirect::platform
