#include "platform_default/request_flow.h"

#include <utility>

#include "platform_default/credential_store.h"
#include "platform_default/header_lines.h"
#include "platform_default/redirection.h"
#include "platform_default/request_target.h"
#include "platform_default/routing_sink.h"

namespace vtdirect::platform {

using du::http::ErrorCode;
using du::http::Method;

namespace {

constexpr int unauthorized = 401;

/// The redirects that a GET may follow; the other 3xx statuses are answers in their own right.
bool IsRedirect(int status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool IsKnown(Method method) {
  return method == Method::Get || method == Method::Post || method == Method::Patch;
}

const char* OrEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

}  // namespace

RequestFlow::RequestFlow(std::shared_ptr<OriginState> home, const du::http::CommonAuth& auth,
                         const du::http::Request& request, bool mayWait)
    : auth_(auth),
      request_(request),
      body_(request.method == Method::Get ? nullptr : request.body),
      rules_(RulesFor(du::http::GetTransportSettings(), mayWait)),
      home_(home->origin()),
      visit_(std::move(home), rules_),
      origin_(home_),
      target_(RequestTarget(OrEmpty(request.uri))),
      triesLeft_(rules_.settings.authenticationTries),
      redirectsLeft_(request.method == Method::Get ? rules_.settings.redirects : 0) {}

ErrorCode RequestFlow::Run(int* httpStatus) {
  if (!IsKnown(request_.method)) return ErrorCode::ProtocolFailure;
  const ErrorCode headers = ReadHeaders();
  if (headers != ErrorCode::Done) return headers;
  visit_.JoinSession();
  while (true) {
    RoutingSink sink(request_.sink, [this](int status) { return HoldsBack(status); });
    int status = 0;
    const ErrorCode result = Visit().Send(MakeOutgoing(), sink, &status);
    if (result == ErrorCode::TooLarge) *httpStatus = status;
    if (result != ErrorCode::Done) return result;
    LearnScheme();
    if (!FollowsUp(status)) {
      visit_.HasFinalAnswer();
      const ErrorCode delivered = sink.Deliver();
      if (delivered == ErrorCode::Done) *httpStatus = status;
      return delivered;
    }
    if (body_ != nullptr && !body_->Rewind()) return ErrorCode::LocalFileFailure;
    Visit().JoinSession();
  }
}

bool RequestFlow::HoldsBack(int status) {
  if (MayFollowUp(status)) return true;
  // A large content may take minutes to arrive; whoever waits for this answer needs no more than its head.
  visit_.HasFinalAnswer();
  return false;
}

ErrorCode RequestFlow::ReadHeaders() {
  std::string text;
  const ErrorCode read = ReadHeaderText(request_.headers, &text);
  if (read != ErrorCode::Done) return read;
  auto client = SplitHeaderLines(OrEmpty(auth_.header));
  auto caller = SplitHeaderLines(text);
  if (!client || !caller) return ErrorCode::ProtocolFailure;
  clientLines_ = std::move(*client);
  callerLines_ = std::move(*caller);
  return ErrorCode::Done;
}

OutgoingRequest RequestFlow::MakeOutgoing() {
  OutgoingRequest outgoing;
  outgoing.method = request_.method;
  outgoing.url = origin_.Text() + target_;
  outgoing.body = body_;
  outgoing.headerLines = clientLines_;
  for (const std::string& line : callerLines_) {
    // A nonce or any other line of the caller's speaks to the server it was made for, and to no other.
    if (!foreign_ || HasHeaderName(line, "Accept")) outgoing.headerLines.push_back(line);
  }
  AddCredentials(&outgoing);
  return outgoing;
}

void RequestFlow::AddCredentials(OutgoingRequest* outgoing) {
  carried_ = Carried::Nothing;
  if (foreign_ || ContainsHeader(outgoing->headerLines, "Authorization")) return;
  std::optional<Credentials> credentials = FindCredentials(origin_);
  if (!credentials) return;
  if (credentials->isToken) {
    outgoing->headerLines.push_back("Authorization: Bearer " + credentials->secret);
    return;
  }
  carried_ = PasswordRoad(KnownScheme(), body_ != nullptr);
  if (carried_ == Carried::Nothing) return;
  outgoing->user = std::move(credentials->user);
  outgoing->password = std::move(credentials->secret);
  outgoing->authenticationMask = carried_ == Carried::Basic    ? CURLAUTH_BASIC
                                 : carried_ == Carried::Digest ? CURLAUTH_DIGEST
                                                               : CURLAUTH_BASIC | CURLAUTH_DIGEST;
}

RequestFlow::Carried RequestFlow::PasswordRoad(PasswordScheme scheme, bool hasBody) const {
  if (scheme == PasswordScheme::Basic) return Carried::Basic;
  if (scheme == PasswordScheme::Digest) return Carried::Digest;
  // The server hasn't asked yet. Without a body, asking costs little, and a server that asks for nothing
  // never sees the password.
  if (!hasBody) return Carried::WhateverIsAsked;
  // A body that is refused is sent in vain, so the likely scheme is tried at once; but not in clear text,
  // where a server that wants Digest would have protected the password.
  return origin_.scheme == "https" ? Carried::Basic : Carried::Nothing;
}

void RequestFlow::LearnScheme() {
  if (foreign_) return;
  const PasswordScheme shown = visit_.LearnScheme();
  if (shown != PasswordScheme::Unknown) demanded_ = shown;
}

PasswordScheme RequestFlow::KnownScheme() const {
  return demanded_ != PasswordScheme::Unknown ? demanded_ : visit_.KnownScheme();
}

bool RequestFlow::MayFollowUp(int status) const {
  if (status == unauthorized) return !foreign_ && triesLeft_ > 0;
  return IsRedirect(status) && redirectsLeft_ > 0;
}

bool RequestFlow::FollowsUp(int status) {
  if (!MayFollowUp(status)) return false;
  Visit().LeavePlace();
  return status == unauthorized ? FollowsDemand() : FollowsRedirect();
}

bool RequestFlow::FollowsDemand() {
  --triesLeft_;
  // Another thread has answered the same demand meanwhile.
  if (visit_.SessionHasEnded()) return true;
  // A password may stand that the last try did not carry, or not in the way that the server asks for.
  const Carried wanted = PasswordRoad(KnownScheme(), body_ != nullptr);
  const bool untried = carried_ != Carried::WhateverIsAsked && wanted != carried_;
  if (untried && wanted != Carried::Nothing && !standingPasswordTried_) {
    const std::optional<Credentials> standing = FindCredentials(origin_);
    if (standing && !standing->isToken) {
      standingPasswordTried_ = true;
      return true;
    }
  }
  return auth_.reauthenticate && auth_.reauthenticate();
}

bool RequestFlow::FollowsRedirect() {
  const std::optional<Redirection> next = FollowableRedirection(origin_, Visit().RedirectUrl());
  if (!next) return false;
  --redirectsLeft_;
  // Once away, always away: a foreign server could otherwise send us back with an address of its own choice.
  foreign_ = foreign_ || next->origin != origin_;
  if (next->origin != origin_) {
    abroad_.reset();
    if (next->origin != home_)
      abroad_.emplace(OriginRegistry::Instance().StateOf(home_, next->origin), rules_);
  }
  origin_ = next->origin;
  target_ = next->target;
  return true;
}

}  // namespace vtdirect::platform
