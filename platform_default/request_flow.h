#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/http.h"
#include "platform/http_settings.h"
#include "platform_default/origin_registry.h"
#include "platform_default/origin_visit.h"

namespace vtdirect::platform {

/// One request of the caller with all the tries it takes: redirects and demands for authentication are
/// handled here, around single exchanges. Made for one request; borrows all it is given.
class RequestFlow {
 public:
  /// @param home     the origin of the caller's connection
  /// @param mayWait  false for a call from inside another exchange of this thread
  RequestFlow(std::shared_ptr<OriginState> home, const du::http::CommonAuth& auth,
              const du::http::Request& request, bool mayWait);

  /// Sends the request until an answer is final. The host's callback runs between exchanges, never inside
  /// one.
  [[nodiscard]] du::http::ErrorCode Run(int* httpStatus);

 private:
  /// How the last try carried a password.
  enum class Carried { Nothing, Basic, Digest, WhateverIsAsked };

  [[nodiscard]] du::http::ErrorCode ReadHeaders();
  [[nodiscard]] OriginVisit& Visit() { return abroad_ ? *abroad_ : visit_; }
  [[nodiscard]] bool HoldsBack(int status);
  [[nodiscard]] OutgoingRequest MakeOutgoing();
  void AddCredentials(OutgoingRequest* outgoing);
  [[nodiscard]] PasswordScheme KnownScheme() const;
  [[nodiscard]] Carried PasswordRoad(PasswordScheme scheme, bool hasBody) const;
  void LearnScheme();

  [[nodiscard]] bool MayFollowUp(int status) const;
  [[nodiscard]] bool FollowsUp(int status);
  [[nodiscard]] bool FollowsDemand();
  [[nodiscard]] bool FollowsRedirect();

  const du::http::CommonAuth& auth_;
  const du::http::Request& request_;
  du::http::FileSource* body_;
  const VisitRules rules_;
  const Origin home_;
  OriginVisit visit_;
  std::optional<OriginVisit> abroad_;  ///< where a redirect has led to, while that is another origin

  std::vector<std::string> clientLines_;
  std::vector<std::string> callerLines_;
  Origin origin_;
  std::string target_;
  bool foreign_ = false;  ///< a redirect has led away from the server's own origin, be it back again too
  Carried carried_ = Carried::Nothing;
  /// What this request itself was shown. New credentials end the session and what that has learned, but the
  /// demand that they answer still stands.
  PasswordScheme demanded_ = PasswordScheme::Unknown;
  bool standingPasswordTried_ = false;
  int triesLeft_;
  int redirectsLeft_;
};

}  // namespace vtdirect::platform
