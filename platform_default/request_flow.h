#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/http.h"
#include "platform/http_settings.h"
#include "platform_default/credential_store.h"
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
  /// What the last try carried to log in.
  enum class Carried { Nothing, Basic, Digest, WhateverIsAsked, Token, Negotiate };
  /// Where redirects have led to.
  enum class Place {
    Home,     ///< the server's own origin
    Secured,  ///< the server's own host, from http to https
    Foreign,  ///< any other origin, or back from there: with the session of that place, and no login
  };

  [[nodiscard]] du::http::ErrorCode ReadHeaders();
  [[nodiscard]] bool HoldsBack(int status);
  /// Traces what the last exchange failed on, if that is known, and tells it to the caller.
  void TellWhatWasFound() const;
  [[nodiscard]] OutgoingRequest MakeOutgoing();
  /// The lines that go to where the request is now.
  [[nodiscard]] std::span<const std::string_view> LinesForPlace();
  void AskForCoding(OutgoingRequest* outgoing) const;
  void AddCredentials(OutgoingRequest* outgoing);
  void AddPassword(Credentials credentials, OutgoingRequest* outgoing);
  [[nodiscard]] std::optional<Credentials> StandingCredentials() const;
  [[nodiscard]] PasswordScheme KnownScheme() const;
  [[nodiscard]] Carried PasswordRoad(PasswordScheme scheme, bool hasBody) const;
  void LearnScheme();
  void CountDemands(int status);

  [[nodiscard]] bool MayFollowUp(int status) const;
  [[nodiscard]] bool FollowsUp(int status);
  [[nodiscard]] bool FollowsDemand();
  [[nodiscard]] bool HasUntriedCredentials();
  [[nodiscard]] bool OnlyAskedForNonce() const;
  [[nodiscard]] bool FollowsRedirect();
  void GoTo(const Origin& next);
  [[nodiscard]] OriginVisit* VisitTo(const Origin& origin);
  void HasFinalAnswer();

  const du::http::CommonAuth& auth_;
  const du::http::Request& request_;
  du::http::FileSource* body_;
  const VisitRules rules_;
  /// Where the redirects that lead to another origin begin: the caller's origin, or the secured one of its host.
  std::shared_ptr<OriginState> base_;
  const Origin home_;
  OriginVisit visit_;
  /// Stays while the request is at another origin, as the visit at its own origin does: coming back finds it,
  /// and others wait.
  std::optional<OriginVisit> secured_;
  std::optional<OriginVisit> abroad_;  ///< where a redirect has led to, while that is another origin
  OriginVisit* at_ = &visit_;          ///< the one of these three that goes on

  std::string callerText_;               ///< what the caller's lines are parts of
  std::vector<std::string_view> lines_;  ///< the client's and after them the caller's
  std::size_t clientLines_ = 0;
  std::vector<std::string_view> otherLines_;  ///< of the last try, when that carried other lines
  std::string tokenLine_;                     ///< of the last try, when that carried a token
  Origin origin_;
  std::string url_;
  Place place_ = Place::Home;
  Carried carried_ = Carried::Nothing;
  /// What this request itself was shown. New credentials end the session and what that has learned, but the
  /// demand that they answer still holds.
  PasswordScheme demanded_ = PasswordScheme::Unknown;
  bool loginDemanded_ = false;  ///< by the origin that the request is at
  bool standingPasswordTried_ = false;
  bool nonceAskedFor_ = false;  ///< by a try that the visit held the login back from
  int triesLeft_;
  int redirectsLeft_;
};

}  // namespace vtdirect::platform
