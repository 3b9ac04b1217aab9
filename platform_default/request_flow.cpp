#include "platform_default/request_flow.h"

#include <algorithm>
#include <utility>

#include "platform/trace.h"
#include "platform_default/header_lines.h"
#include "platform_default/redirection.h"
#include "platform_default/request_target.h"
#include "platform_default/routing_sink.h"

namespace vtdirect::platform {

using du::http::ErrorCode;
using du::http::Method;

namespace {

constexpr int unauthorized = 401;
/// Demands of one exchange that are no further try: the first, which only tells how to log in, and the last,
/// which is the answer.
constexpr int freeDemands = 2;

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

std::string UrlAt(std::string_view originText, std::string_view uri) {
  std::string url;
  url.reserve(originText.size() + uri.size() + 1);
  url.append(originText);
  AppendRequestTarget(uri, &url);
  return url;
}

void TraceFailure(const Origin& origin, const std::string& sentence) {
  dp::LXTracer("fenlet", "Transport")(dp::TraceType::Error) << origin.Text() << ": " << sentence << ".\n";
}

}  // namespace

RequestFlow::RequestFlow(std::shared_ptr<OriginState> home, const du::http::CommonAuth& auth,
                         const du::http::Request& request, bool mayWait)
    : auth_(auth),
      request_(request),
      body_(request.method == Method::Get ? nullptr : request.body),
      rules_(RulesNow(mayWait)),
      base_(home),
      home_(home->origin()),
      visit_(std::move(home), rules_),
      origin_(home_),
      url_(UrlAt(visit_.originText(), OrEmpty(request.uri))),
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
    const ErrorCode result = at_->Send(MakeOutgoing(), sink, &status);
    if (result == ErrorCode::TooLarge) *httpStatus = status;
    if (result != ErrorCode::Done) {
      TellWhatWasFound();
      return result;
    }
    if (at_->HeldLoginBack()) carried_ = Carried::Nothing;
    LearnScheme();
    CountDemands(status);
    if (!FollowsUp(status)) {
      HasFinalAnswer();
      TellWhatWasFound();
      const ErrorCode delivered = sink.Deliver();
      if (delivered == ErrorCode::Done) *httpStatus = status;
      return delivered;
    }
    if (body_ != nullptr && !body_->Rewind()) return ErrorCode::LocalFileFailure;
    at_->JoinSession();
  }
}

void RequestFlow::TellWhatWasFound() const {
  const du::http::FailureReport& found = at_->Found();
  if (found.detail == du::http::FailureDetail::Unknown) return;
  TraceFailure(origin_, found.text);
  if (auth_.explain) auth_.explain(found);
}

bool RequestFlow::HoldsBack(int status) {
  if (MayFollowUp(status)) return true;
  // A large content may take minutes to arrive; whoever waits for this answer needs no more than its head.
  HasFinalAnswer();
  return false;
}

void RequestFlow::HasFinalAnswer() {
  visit_.HasFinalAnswer();
  if (secured_) secured_->HasFinalAnswer();
  if (abroad_) abroad_->HasFinalAnswer();
}

ErrorCode RequestFlow::ReadHeaders() {
  const ErrorCode read = ReadHeaderText(request_.headers, &callerText_);
  if (read != ErrorCode::Done) return read;
  constexpr std::size_t usualLines = 4;
  lines_.reserve(usualLines);
  if (!AppendHeaderLines(OrEmpty(auth_.header), &lines_)) return ErrorCode::ProtocolFailure;
  clientLines_ = lines_.size();
  return AppendHeaderLines(callerText_, &lines_) ? ErrorCode::Done : ErrorCode::ProtocolFailure;
}

OutgoingRequest RequestFlow::MakeOutgoing() {
  OutgoingRequest outgoing;
  outgoing.method = request_.method;
  outgoing.url = url_;
  outgoing.body = body_;
  outgoing.headerLines = LinesForPlace();
  AskForCoding(&outgoing);
  outgoing.demands = triesLeft_ + freeDemands;
  AddCredentials(&outgoing);
  return outgoing;
}

std::span<const std::string_view> RequestFlow::LinesForPlace() {
  if (place_ != Place::Foreign) return lines_;
  otherLines_.clear();
  for (std::size_t line = 0; line < lines_.size(); ++line) {
    // A nonce or any other line of the caller's speaks to the server it was made for, and to no other.
    const bool isOfClient = line < clientLines_;
    if (isOfClient || HasHeaderName(lines_[line], "Accept")) otherLines_.push_back(lines_[line]);
  }
  return otherLines_;
}

void RequestFlow::AskForCoding(OutgoingRequest* outgoing) const {
  const std::span<const std::string_view> lines = outgoing->headerLines;
  if (ContainsHeader(lines, "Accept-Encoding")) return;
  if (AcceptsJsonOrXml(lines)) {
    outgoing->asksForCompression = rules_.settings.compressedAnswers && !ContainsHeader(lines, "Range");
  } else {
    // The bytes of a content are a user's file, and of those of another kind nobody says how to read them.
    outgoing->asksForIdentity = request_.method == Method::Get;
  }
}

void RequestFlow::AddCredentials(OutgoingRequest* outgoing) {
  carried_ = Carried::Nothing;
  if (place_ == Place::Foreign || ContainsHeader(outgoing->headerLines, "Authorization")) return;
  std::optional<Credentials> credentials = StandingCredentials();
  if (!credentials) return;
  switch (credentials->kind) {
    case CredentialKind::Token:
      carried_ = Carried::Token;
      tokenLine_ = "Authorization: Bearer " + credentials->secret;
      otherLines_ = lines_;  // a token goes to no foreign place
      otherLines_.push_back(tokenLine_);
      outgoing->headerLines = otherLines_;
      break;
    case CredentialKind::Negotiate:
      carried_ = Carried::Negotiate;
      outgoing->authenticationMask = CURLAUTH_NEGOTIATE;
      break;
    case CredentialKind::Password:
      AddPassword(std::move(*credentials), outgoing);
      break;
  }
}

void RequestFlow::AddPassword(Credentials credentials, OutgoingRequest* outgoing) {
  carried_ = PasswordRoad(KnownScheme(), body_ != nullptr);
  if (carried_ == Carried::Nothing) return;
  outgoing->user = std::move(credentials.user);
  outgoing->password = std::move(credentials.secret);
  outgoing->authenticationMask = carried_ == Carried::Basic    ? CURLAUTH_BASIC
                                 : carried_ == Carried::Digest ? CURLAUTH_DIGEST
                                                               : CURLAUTH_BASIC | CURLAUTH_DIGEST;
}

std::optional<Credentials> RequestFlow::StandingCredentials() const {
  std::optional<Credentials> own = FindCredentials(origin_);
  if (own || place_ != Place::Secured || !loginDemanded_) return own;
  // The host is asked with the address that it knows, the one with http, and sets its answer for that.
  return FindCredentials(home_);
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
  if (place_ == Place::Foreign) return;
  const PasswordScheme shown = at_->LearnScheme();
  if (shown != PasswordScheme::Unknown) demanded_ = shown;
}

// Those that an exchange has followed up by itself count like the others: a server that calls each login
// stale would be logged in to without end.
void RequestFlow::CountDemands(int status) {
  const int followed = at_->Demands() - (status == unauthorized ? freeDemands : 1);
  triesLeft_ = std::max(0, triesLeft_ - std::max(0, followed));
}

PasswordScheme RequestFlow::KnownScheme() const {
  if (demanded_ != PasswordScheme::Unknown) return demanded_;
  return at_->KnownScheme();
}

bool RequestFlow::MayFollowUp(int status) const {
  if (status == unauthorized) return place_ != Place::Foreign && (triesLeft_ > 0 || OnlyAskedForNonce());
  return IsRedirect(status) && redirectsLeft_ > 0;
}

bool RequestFlow::FollowsUp(int status) {
  if (!MayFollowUp(status)) return false;
  at_->LeavePlace();
  return status == unauthorized ? FollowsDemand() : FollowsRedirect();
}

bool RequestFlow::OnlyAskedForNonce() const {
  return at_->HeldLoginBack() && !nonceAskedFor_;
}

bool RequestFlow::FollowsDemand() {
  // A demand that only tells how to log in uses up no try.
  if (OnlyAskedForNonce()) {
    nonceAskedFor_ = true;
    standingPasswordTried_ = false;
    if (HasUntriedCredentials()) return true;
    if (triesLeft_ == 0) return at_->SessionHasEnded();
  }
  --triesLeft_;
  // Another thread has answered the same demand meanwhile.
  if (at_->SessionHasEnded()) return true;
  return HasUntriedCredentials() || (auth_.reauthenticate && auth_.reauthenticate());
}

bool RequestFlow::HasUntriedCredentials() {
  const bool knewOfDemand = std::exchange(loginDemanded_, true);
  const std::optional<Credentials> standing = StandingCredentials();
  if (!standing) return false;
  // Those of the http origin count from the first demand on.
  if (place_ == Place::Secured && !knewOfDemand && !FindCredentials(origin_)) return true;
  // A password may be set that the last try did not carry, or not in the way that the server asks for.
  if (standing->kind != CredentialKind::Password || standingPasswordTried_) return false;
  const Carried wanted = PasswordRoad(KnownScheme(), body_ != nullptr);
  if (carried_ == Carried::WhateverIsAsked || wanted == carried_ || wanted == Carried::Nothing) return false;
  // Without a nonce the next try would go without the login as well.
  if (wanted == Carried::Digest && at_->HeldLoginBack() && !at_->HasNonce()) return false;
  standingPasswordTried_ = true;
  return true;
}

bool RequestFlow::FollowsRedirect() {
  const std::optional<Redirection> next = FollowableRedirection(origin_, at_->RedirectUrl());
  if (!next) return false;
  --redirectsLeft_;
  if (next->origin != origin_) GoTo(next->origin);
  url_ = at_->originText() + next->target;
  return true;
}

OriginVisit* RequestFlow::VisitTo(const Origin& origin) {
  abroad_.reset();
  if (origin == home_) return &visit_;
  if (origin == base_->origin()) return &*secured_;
  return &abroad_.emplace(OriginRegistry::Instance().StateFrom(base_, origin), rules_);
}

void RequestFlow::GoTo(const Origin& next) {
  // Once away, always away: a foreign server could otherwise send us back with an address of its own choice.
  const bool secures = place_ == Place::Home && Secures(origin_, next);
  place_ = secures ? Place::Secured : Place::Foreign;
  if (secures) {
    // On its own host the request is at its own origin, as one that was made for https is.
    base_ = OriginRegistry::Instance().StateOf(next);
    secured_.emplace(base_, rules_);
  }
  at_ = VisitTo(next);
  origin_ = next;
  demanded_ = PasswordScheme::Unknown;
  loginDemanded_ = false;
  standingPasswordTried_ = false;
  nonceAskedFor_ = false;
}

}  // namespace vtdirect::platform
