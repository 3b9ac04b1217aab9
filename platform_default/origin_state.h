#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/http_settings.h"
#include "platform_default/curl_handle.h"
#include "platform_default/exchange_places.h"
#include "platform_default/origin.h"
#include "platform_default/origin_session.h"

namespace vtdirect::platform {

/// What the process has of one origin: the session that all its connections share, the handles that nobody
/// uses at the moment, and the places of the exchanges with it. Any thread.
///
/// Where a redirect leads out of an origin, its home, the other origin gets a state of its own for those who
/// come that way: a server must not be able to send us anywhere with a login that the user has there. Coming
/// back that way finds it again, and its cookies are those of home, as a single sign-on needs, but for another
/// port of a host that has been there already.
class OriginState {
 public:
  using Time = std::chrono::steady_clock::time_point;
  using Handles = std::vector<std::unique_ptr<CurlHandle>>;

  /// @param home  where the redirects that lead to `origin` begin; null for the direct way
  OriginState(std::shared_ptr<OriginState> home, Origin origin)
      : home_(std::move(home)), origin_(std::move(origin)), originText_(origin_.Text()) {}

  [[nodiscard]] bool IsHome() const { return home_ == nullptr; }
  /// Where the redirects begin that lead here; this origin itself for the direct way.
  [[nodiscard]] const Origin& home() const { return IsHome() ? origin_ : home_->origin_; }
  [[nodiscard]] const Origin& origin() const { return origin_; }
  /// The text of the origin: URLs are made of it for each request.
  [[nodiscard]] const std::string& originText() const { return originText_; }

  /// The session of now. Away from home it ends with that of home.
  [[nodiscard]] std::shared_ptr<OriginSession> Session();

  /// Ends the session with all that it has learned: the next one begins with nothing. Exchanges that are
  /// under way finish with what they have. The handles are for the caller to close, outside of any lock.
  [[nodiscard]] Handles EndSession();

  /// A handle of this session that was used before, of several the one that was used last. Null when there is
  /// none, or none that was idle for as short as the settings want it.
  [[nodiscard]] std::unique_ptr<CurlHandle> TakeHandle(const OriginSession& session,
                                                       const du::http::TransportSettings& settings);

  /// Keeps a handle for the next exchange, unless it is worn, its session has ended or none are to be kept;
  /// of too many, the one that was idle longest is closed.
  void GiveBack(std::unique_ptr<CurlHandle> handle, const du::http::TransportSettings& settings);

  /// Takes out the handles that were idle for too long. They are for the caller to close.
  [[nodiscard]] Handles TakeExpired(const du::http::TransportSettings& settings);

  ExchangePlaces places;

 private:
  struct Idle {
    std::unique_ptr<CurlHandle> handle;
    Time since;
  };

  /// A session with its idle handles. To be let go while no lock is held: connections are closed, and the
  /// session may hold a function of the host's.
  struct Ended {
    std::shared_ptr<OriginSession> session;
    Handles handles;
  };
  [[nodiscard]] Ended TakeSession();
  [[nodiscard]] std::shared_ptr<SessionShare> NewShare() const;

  const std::shared_ptr<OriginState> home_;
  const Origin origin_;
  const std::string originText_;
  std::mutex mutex_;  ///< away from home, home's is taken inside of it and never the other way round
  std::shared_ptr<OriginSession> session_;
  std::shared_ptr<SessionShare> shareOfHome_;  ///< away from home, of home's session when this one began
  std::vector<Idle> idle_;                     ///< in the order of their last use
};

}  // namespace vtdirect::platform
