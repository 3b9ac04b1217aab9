#pragma once

#include <curl/curl.h>

#include <array>
#include <memory>
#include <string>

#include "platform/http.h"
#include "platform/http_settings.h"
#include "platform_default/certificate_store.h"
#include "platform_default/curl_exchange.h"
#include "platform_default/failure_explanation.h"
#include "platform_default/header_order.h"
#include "platform_default/origin_session.h"
#include "platform_default/outgoing_request.h"
#include "platform_default/request_address.h"
#include "platform_default/tls_events.h"

namespace vtdirect::platform {

/// One easy handle of libcurl with its callbacks, on which exchanges with one origin are performed one after
/// the other, each on any thread. Between them it keeps its TCP connection and the state of a Digest login.
class CurlHandle {
 public:
  /// Opens no socket. Null when curl has no memory for a handle.
  [[nodiscard]] static std::unique_ptr<CurlHandle> Make(std::shared_ptr<OriginSession> session);

  ~CurlHandle();
  CurlHandle(const CurlHandle&) = delete;
  CurlHandle& operator=(const CurlHandle&) = delete;

  [[nodiscard]] const std::shared_ptr<OriginSession>& session() const { return session_; }
  /// Goes over to another session with its cookies, and keeps its connection: for a request that is tried
  /// again with new credentials.
  /// @return false, with nothing changed, when that session connects in another way, and when the last
  ///         exchange logged in by Negotiate: a server may keep such a login for the connection
  [[nodiscard]] bool Join(std::shared_ptr<OriginSession> session);

  /// True when Send holds back the login of this request, so that the server demands it and tells a nonce: it
  /// writes, and has to log in by Digest, for which this handle has no nonce yet. curl would ask with an empty
  /// body in place of the request's own, and a server that lets that pass would carry it out.
  [[nodiscard]] bool HoldsLoginBack(const OutgoingRequest& request) const;

  /// Sends one request and reads its answer into the sink; follows no redirect. A demand for authentication
  /// that the request's own user and password can answer is answered on the way, as long as the login is not
  /// held back. Throws what a source or a sink has thrown.
  [[nodiscard]] du::http::ErrorCode Send(const OutgoingRequest& request, du::http::FileSink& sink,
                                         const du::http::TransportSettings& settings, int* httpStatus);

  /// True when this handle is not to be used any more. curl counts over a handle's whole life how often a
  /// kept connection has died under a request, and from the sixth time on reports that instead of trying
  /// again.
  [[nodiscard]] bool IsWorn() const { return exchange_.Revivals() >= 4; }

  // What the last exchange has shown.

  /// Where its answer redirects to, as an absolute URL; empty when it does not.
  [[nodiscard]] std::string RedirectUrl() const;
  /// How the server took or demanded a password; `Unknown` when it demanded none.
  [[nodiscard]] PasswordScheme DemandedScheme() const;
  /// Demands for authentication that it met, those included that were answered on the way.
  [[nodiscard]] int Demands() const { return exchange_.Demands(); }
  /// True when this handle has a nonce for a login by Digest, of the last exchange or an earlier one.
  [[nodiscard]] bool HasNonce() const { return exchange_.HasNonce(); }
  /// True when it left a TCP connection open for the next one.
  [[nodiscard]] bool IsConnected() const;
  /// True when the connect limit ended it.
  [[nodiscard]] bool ConnectLimitRanOut() const { return exchange_.ConnectLimitRanOut(); }
  /// What it failed on, or what its answer shows of something between here and the server; Unknown when
  /// there is no more to say than the code.
  /// @param code  what Send gave
  [[nodiscard]] du::http::FailureReport Explain(const Origin& origin, du::http::ErrorCode code) const;
  /// The passphrase that the key of the client certificate is read with; empty when there is none.
  [[nodiscard]] const std::string& passphrase() const { return passphrase_; }
  /// True when it ended because the client certificate or its key could not be read.
  [[nodiscard]] bool IdentityWasUnreadable() const { return exchange_.Result() == CURLE_SSL_CERTPROBLEM; }

 private:
  struct HandleCloser {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
  };
  using OwnedHandle = std::unique_ptr<CURL, HandleCloser>;
  struct ListFreer {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };

  CurlHandle(std::shared_ptr<OriginSession> session, OwnedHandle handle);
  [[nodiscard]] du::http::ErrorCode Perform(const OutgoingRequest& request, du::http::FileSink& sink,
                                            const du::http::TransportSettings& settings, int* httpStatus);
  static CURLcode OnTlsContext(CURL* handle, void* context, void* self);
  [[nodiscard]] bool CertificateWasRefused() const;
  [[nodiscard]] curl_socket_t KeptSocket() const;
  [[nodiscard]] const TlsEvents* WatchedTls(const OutgoingRequest& request) const;
  [[nodiscard]] du::http::FailureReport ExplainIdentity() const;
  [[nodiscard]] ExchangeEvidence EvidenceOf(const Origin& origin, du::http::ErrorCode code) const;
  void SetFixedOptions();
  void SetTrust();
  void SetIdentity();
  void SetProxy();
  void SetEnvironmentProxy(const OutgoingRequest& request);
  void SetConnectLimit(long milliseconds);
  void SetMethod(const OutgoingRequest& request);
  void SetHeaderLines(const OutgoingRequest& request);
  void SetAuthentication(const OutgoingRequest& request);

  std::shared_ptr<OriginSession> session_;  ///< before the handle, which uses its share to the last
  TrustSource trust_;
  std::string passphrase_;
  // What the handle is set to, so that most exchanges change nothing of it.
  long connectLimit_ = 0;  ///< in milliseconds
  bool isForGet_ = false;
  bool asksEnvironment_ = true;  ///< whether curl looks there for a proxy
  bool hasLogin_ = false;
  bool negotiated_ = false;                       ///< the last exchange carried a login by Negotiate
  bool watchesTls_ = false;                       ///< whether `tlsEvents_` is told anything
  std::array<char, CURL_ERROR_SIZE> curlText_{};  ///< before the handle, which writes it
  TlsEvents tlsEvents_;    ///< of the last exchange; before the handle, whose connections refer to it
  CurlExchange exchange_;  ///< before the handle, whose end still calls it back
  RequestAddress address_;
  std::unique_ptr<curl_slist, ListFreer> headerList_;
  HeaderOrder headerOrder_;  ///< what `headerList_` was made for
  OwnedHandle handle_;
};

}  // namespace vtdirect::platform
