#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/http.h"
#include "platform/http_settings.h"
#include "platform_default/curl_handle.h"
#include "platform_default/first_exchange.h"
#include "platform_default/origin_state.h"

namespace vtdirect::platform {

/// How the visits of one request behave.
struct VisitRules {
  du::http::TransportSettings settings;
  /// False for a call from inside another exchange of this thread. It never waits for others, since it could
  /// be waiting for itself.
  bool mayWait = true;
  /// When a visit that waits for the first exchange of a session goes ahead without it.
  FirstExchange::Time firstExchangeDeadline;
};

/// The rules for a request that begins now.
[[nodiscard]] VisitRules RulesNow(bool mayWait);

/// The exchanges of one request with one origin: takes part in the origin's session, takes a handle when one
/// is needed, keeps it from one try to the next, and gives it back at its end. One thread.
class OriginVisit {
 public:
  /// @param rules  must outlive the visit
  OriginVisit(std::shared_ptr<OriginState> state, const VisitRules& rules);
  ~OriginVisit();
  OriginVisit(const OriginVisit&) = delete;
  OriginVisit& operator=(const OriginVisit&) = delete;

  /// To be called before the credentials of a try are looked up: what is found afterwards belongs to this
  /// session or is newer, and never older. Waits while another thread's exchange goes first.
  void JoinSession();
  /// True when the credentials or the trust have changed since then.
  [[nodiscard]] bool SessionHasEnded();

  /// What the URLs of its requests begin with.
  [[nodiscard]] const std::string& originText() const { return state_->originText(); }

  /// Performs one exchange. Waits for a place, and after an answer keeps it. See CurlHandle::Send. Before all
  /// that, it may ask the host for a passphrase.
  /// @return also `NoConnection` when there is no memory for a handle, and `TimedOut`, with nothing tried,
  ///         when a connection was tried in vain a moment ago
  [[nodiscard]] du::http::ErrorCode Send(const OutgoingRequest& request, du::http::FileSink& sink,
                                         int* httpStatus);
  /// What the last exchange failed on, where more is known than its code; see CurlHandle::Explain.
  [[nodiscard]] const du::http::FailureReport& Found() const { return found_; }
  /// Gives the place away and keeps the handle: the request goes on, but first a host's function runs, or an
  /// exchange elsewhere.
  void LeavePlace() { place_.reset(); }
  /// The answer that the request has got is the final one: others need not wait for it any longer.
  void HasFinalAnswer();

  [[nodiscard]] PasswordScheme KnownScheme() const { return session_->passwordScheme(); }
  /// Keeps for all how the server takes a password, if the last answer has shown it, and gives it.
  PasswordScheme LearnScheme();
  /// True when the last exchange went without its login, see CurlHandle::HoldsLoginBack. Holds within the
  /// exchange as well.
  [[nodiscard]] bool HeldLoginBack() const { return heldLoginBack_; }
  /// True when the last exchange left a nonce for a login by Digest.
  [[nodiscard]] bool HasNonce() const { return handle_->HasNonce(); }
  /// Demands for authentication that the last exchange met, those included that it answered by itself.
  [[nodiscard]] int Demands() const { return handle_->Demands(); }
  /// Where the last answer redirects to; empty when it does not.
  [[nodiscard]] std::string RedirectUrl() const { return handle_->RedirectUrl(); }

 private:
  [[nodiscard]] du::http::ErrorCode SendInPlace(const OutgoingRequest& request, du::http::FileSink& sink,
                                                int* httpStatus);
  [[nodiscard]] bool UnlockIdentity();
  void NoteFailure(const CurlHandle& used);
  [[nodiscard]] bool IsWrittenOff() const;
  void FollowSession(std::shared_ptr<OriginSession> session);

  const std::shared_ptr<OriginState> state_;
  const VisitRules& rules_;
  std::shared_ptr<OriginSession> session_;
  /// Outlives the handle: who comes next for the place finds the handle there, and needs no new one.
  std::optional<ExchangePlaces::Place> place_;
  du::http::FailureReport found_;
  bool heldLoginBack_ = false;
  std::unique_ptr<CurlHandle> handle_;  ///< null until one is needed, and after a failure
};

}  // namespace vtdirect::platform
