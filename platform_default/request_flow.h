#pragma once

#include <string>
#include <vector>

#include "platform/http.h"
#include "platform/http_settings.h"
#include "platform_default/curl_connection.h"

namespace vtdirect::platform {

/// One request of the caller with all the tries it takes: redirects and demands for authentication stand
/// here, around single exchanges. Made for one request; borrows all it is given.
class RequestFlow {
 public:
  RequestFlow(CurlConnection& connection, const du::http::CommonAuth& auth, const du::http::Request& request);

  /// Sends the request until an answer is final. The host's callback runs between exchanges, never inside
  /// one.
  [[nodiscard]] du::http::ErrorCode Run(int* httpStatus);

 private:
  /// How the last try carried a password.
  enum class Carried { Nothing, Basic, Digest, WhateverIsAsked };

  [[nodiscard]] du::http::ErrorCode ReadHeaders();
  [[nodiscard]] OutgoingRequest MakeOutgoing();
  void AddCredentials(OutgoingRequest* outgoing);
  [[nodiscard]] Carried PasswordRoad(PasswordScheme scheme, bool hasBody) const;
  void LearnScheme();

  [[nodiscard]] bool MayFollowUp(int status) const;
  [[nodiscard]] bool FollowsUp(int status);
  [[nodiscard]] bool FollowsDemand();
  [[nodiscard]] bool FollowsRedirect();

  CurlConnection& connection_;
  const du::http::CommonAuth& auth_;
  const du::http::Request& request_;
  du::http::FileSource* body_;
  const du::http::TransportSettings settings_;

  std::vector<std::string> clientLines_;
  std::vector<std::string> callerLines_;
  Origin origin_;
  std::string target_;
  bool foreign_ = false;  ///< a redirect has led away from the server's own origin
  Carried carried_ = Carried::Nothing;
  bool standingPasswordTried_ = false;
  int triesLeft_;
  int redirectsLeft_;
};

}  // namespace vtdirect::platform
