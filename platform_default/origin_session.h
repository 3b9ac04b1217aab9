#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "platform_default/connection_way.h"
#include "platform_default/first_exchange.h"
#include "platform_default/session_share.h"

namespace vtdirect::platform {

/// How a server takes a password, as far as it has told.
enum class PasswordScheme { Unknown, Basic, Digest };

/// What all connections to an origin share, and what is forgotten when its credentials or the way to it
/// change: cookies and TLS sessions (its share, which sessions of other origins may have too), how the server
/// takes a password, and that nothing answers there.
///
/// The way belongs to the session. A resumed TLS session isn't verified once more, so it must not outlive
/// the trust that it was verified with, nor the certificate that was shown.
class OriginSession {
 public:
  using Time = std::chrono::steady_clock::time_point;

  OriginSession(ConnectionWay way, std::shared_ptr<SessionShare> share)
      : way_(std::move(way)), share_(std::move(share)) {}
  OriginSession(const OriginSession&) = delete;
  OriginSession& operator=(const OriginSession&) = delete;

  [[nodiscard]] const ConnectionWay& way() const { return way_; }
  [[nodiscard]] const std::shared_ptr<SessionShare>& share() const { return share_; }

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
  struct WrittenOff {
    Time since;
    long connectLimit;
  };

  const ConnectionWay way_;
  const std::shared_ptr<SessionShare> share_;
  std::atomic<PasswordScheme> passwordScheme_{PasswordScheme::Unknown};
  mutable std::mutex mutex_;
  std::optional<WrittenOff> writtenOff_;
  std::atomic<bool> mayBeWrittenOff_{false};  ///< mostly not, which then takes no lock
};

}  // namespace vtdirect::platform
