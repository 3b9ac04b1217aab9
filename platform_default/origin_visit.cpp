#include "platform_default/origin_visit.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform_default/failure_words.h"

namespace vtdirect::platform {

using du::http::ErrorCode;
using du::http::FailureDetail;

VisitRules RulesNow(bool mayWait) {
  VisitRules rules{du::http::GetTransportSettings(), mayWait, std::chrono::steady_clock::now()};
  // More than this can't be added to a time of the clock.
  constexpr long longest = 100L * 365 * 24 * 60 * 60;
  const std::chrono::seconds connecting(std::min(rules.settings.connectTimeoutMilliseconds / 1000, longest));
  const std::chrono::seconds answering(std::min(rules.settings.firstByteTimeoutSeconds, longest));
  rules.firstExchangeDeadline += connecting + answering;
  return rules;
}

OriginVisit::OriginVisit(std::shared_ptr<OriginState> state, const VisitRules& rules)
    : state_(std::move(state)), rules_(rules) {}

OriginVisit::~OriginVisit() {
  if (session_ != nullptr) session_->firstExchange.Leave(this);
  if (handle_ != nullptr) state_->GiveBack(std::move(handle_), rules_.settings);
}

void OriginVisit::JoinSession() {
  do {
    FollowSession(state_->Session());
    // Away from home the request that was redirected keeps others waiting there already. Waiting here as well
    // could make two requests wait for each other.
    if (!state_->IsHome() || session_->firstExchange.IsOpen()) return;
    session_->firstExchange.Enter(this, rules_.mayWait, rules_.firstExchangeDeadline);
    // While this visit waited, the session may have ended and another one begun.
  } while (SessionHasEnded());
}

void OriginVisit::FollowSession(std::shared_ptr<OriginSession> session) {
  if (session == session_) return;
  if (session_ != nullptr) session_->firstExchange.Leave(this);
  session_ = std::move(session);
  // The demand that was just answered with new credentials came over this handle: it knows what the server
  // asks for, and its connection is at hand.
  if (handle_ != nullptr && !handle_->Join(session_)) handle_.reset();
}

bool OriginVisit::SessionHasEnded() {
  return state_->Session() != session_;
}

bool OriginVisit::IsWrittenOff() const {
  const auto now = std::chrono::steady_clock::now();
  if (!session_->IsWrittenOff(now, rules_.settings.connectTimeoutMilliseconds)) return false;
  // A kept connection needs no new one.
  return handle_ == nullptr || !handle_->IsConnected();
}

ErrorCode OriginVisit::Send(const OutgoingRequest& request, du::http::FileSink& sink, int* httpStatus) {
  found_ = {};
  if (!UnlockIdentity()) return ErrorCode::TlsFailure;
  place_.emplace(state_->places, rules_.settings.exchangesAtOnce, rules_.mayWait);
  const ErrorCode result = SendInPlace(request, sink, httpStatus);
  if (result != ErrorCode::Done) place_.reset();
  return result;
}

ErrorCode OriginVisit::SendInPlace(const OutgoingRequest& request, du::http::FileSink& sink,
                                   int* httpStatus) {
  if (handle_ != nullptr && handle_->IsWorn()) handle_.reset();
  if (handle_ == nullptr) handle_ = state_->TakeHandle(*session_, rules_.settings);
  if (IsWrittenOff()) {
    found_ = ReportOf(FailureDetail::WrittenOff, {state_->origin().host});
    return ErrorCode::TimedOut;
  }
  if (handle_ == nullptr) handle_ = CurlHandle::Make(session_);
  if (handle_ == nullptr) return ErrorCode::NoConnection;
  // An exchange that failed, or was left by an exception, has lost its connection: its handle is not kept.
  std::unique_ptr<CurlHandle> used = std::move(handle_);
  heldLoginBack_ = used->HoldsLoginBack(request);
  const ErrorCode result = used->Send(request, sink, rules_.settings, httpStatus);
  found_ = used->Explain(state_->origin(), result);
  if (result == ErrorCode::Done) {
    session_->ForgetWriteOff();
    handle_ = std::move(used);
  } else {
    NoteFailure(*used);
  }
  return result;
}

void OriginVisit::NoteFailure(const CurlHandle& used) {
  const std::shared_ptr<ClientIdentity>& identity = session_->way().identity;
  if (identity != nullptr && used.IdentityWasUnreadable()) identity->ForgetPassphrase(used.passphrase());
  if (used.ConnectLimitRanOut()) {
    session_->WriteOff(std::chrono::steady_clock::now(), rules_.settings.connectTimeoutMilliseconds);
  }
}

bool OriginVisit::UnlockIdentity() {
  const std::shared_ptr<ClientIdentity>& identity = session_->way().identity;
  if (identity == nullptr || state_->origin().scheme != "https" || identity->Unlock()) return true;
  found_ = ReportOf(FailureDetail::ClientKeyLocked, {identity->keyFile()});
  return false;
}

void OriginVisit::HasFinalAnswer() {
  session_->firstExchange.Answered(this);
}

PasswordScheme OriginVisit::LearnScheme() {
  const PasswordScheme shown = handle_->DemandedScheme();
  if (shown != PasswordScheme::Unknown) session_->LearnPasswordScheme(shown);
  return shown;
}

}  // namespace vtdirect::platform
