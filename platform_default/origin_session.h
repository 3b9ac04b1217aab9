#pragma once

#include <curl/curl.h>

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform_default/connection_way.h"
#include "platform_default/first_exchange.h"

namespace vtdirect::platform {

/// How a server takes a password, as far as it has told.
enum class PasswordScheme { Unknown, Basic, Digest };

/// What all connections to an origin share, and what is forgotten when its credentials or the way to it
/// change: cookies, TLS sessions, how the server takes a password, and that nothing answers there.
///
/// The way belongs to the session. A resumed TLS session isn't verified once more, so it must not outlive
/// the trust that it was verified with, nor the certificate that was shown.
class OriginSession {
 public:
  using Time = std::chrono::steady_clock::time_point;

  explicit OriginSession(ConnectionWay way);
  ~OriginSession();
  OriginSession(const OriginSession&) = delete;
  OriginSession& operator=(const OriginSession&) = delete;

  [[nodiscard]] const ConnectionWay& way() const { return way_; }
  /// For CURLOPT_SHARE. Null when curl has no memory for it: then each handle has its own.
  [[nodiscard]] CURLSH* share() const { return share_.get(); }

  [[nodiscard]] PasswordScheme passwordScheme() const { return passwordScheme_; }
  void LearnPasswordScheme(PasswordScheme scheme) { passwordScheme_ = scheme; }

  /// A connect limit ran out: for some seconds a further try with the same limit would only wait as long
  /// again.
  void WriteOff(Time now, long connectLimit);
  /// The origin answered.
  void ForgetWriteOff();
  [[nodiscard]] bool IsWrittenOff(Time now, long connectLimit) const;

  FirstExchange firstExchange;

 private:
  struct ShareCloser {
    void operator()(CURLSH* share) const { curl_share_cleanup(share); }
  };
  struct WrittenOff {
    Time since;
    long connectLimit;
  };

  static void Lock(CURL* handle, curl_lock_data data, curl_lock_access access, void* self);
  static void Unlock(CURL* handle, curl_lock_data data, void* self);

  const ConnectionWay way_;
  std::atomic<PasswordScheme> passwordScheme_{PasswordScheme::Unknown};
  mutable std::mutex mutex_;
  std::optional<WrittenOff> writtenOff_;
  std::array<std::mutex, CURL_LOCK_DATA_LAST> shareMutexes_;  ///< one for each kind of data that curl locks
  std::unique_ptr<CURLSH, ShareCloser> share_;
};

}  // namespace vtdirect::platform
