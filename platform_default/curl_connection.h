#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/http.h"
#include "platform/http_settings.h"
#include "platform_default/credential_store.h"
#include "platform_default/curl_exchange.h"
#include "platform_default/origin.h"

namespace vtdirect::platform {

/// One request as it goes out, ready for the wire.
struct OutgoingRequest {
  du::http::Method method = du::http::Method::Get;
  std::string url;
  std::vector<std::string> headerLines;
  du::http::FileSource* body = nullptr;  ///< null for a request without one
  long authenticationMask = CURLAUTH_NONE;
  std::string user;
  std::string password;
};

/// A server's connection on libcurl. One handle is kept for its whole life: it keeps the sockets, the cookies
/// of the session and the state of the authentication from one request to the next.
class CurlConnection final : public du::http::Connection {
 public:
  /// Opens no socket. Null when curl has no memory for a handle.
  [[nodiscard]] static std::unique_ptr<CurlConnection> Make(Origin origin);
  ~CurlConnection() override;

  [[nodiscard]] const Origin& origin() const { return origin_; }

  /// Sends one request and reads its answer into the sink; follows no redirect. A demand for authentication
  /// that the request's own user and password can answer is answered on the way. A request from inside
  /// another one's source, sink or progress function gets `NoConnection`.
  [[nodiscard]] du::http::ErrorCode Send(const OutgoingRequest& request, du::http::FileSink& sink,
                                         const du::http::TransportSettings& settings, int* httpStatus);

  /// Where the last answer redirects to, as an absolute URL; empty when it does not.
  [[nodiscard]] std::string RedirectUrl() const;

  /// How the server took or demanded a password in the last exchange; `Unknown` when it demanded none.
  [[nodiscard]] PasswordScheme DemandedScheme() const;

  /// How this server takes a password, as far as requests on this connection have shown.
  PasswordScheme knownScheme = PasswordScheme::Unknown;

 private:
  struct HandleCloser {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
  };
  struct ListFreer {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };

  CurlConnection(Origin origin, CURL* handle);
  [[nodiscard]] du::http::ErrorCode SendAlone(const OutgoingRequest& request, du::http::FileSink& sink,
                                              const du::http::TransportSettings& settings, int* httpStatus);
  void SetFixedOptions();
  void SetLimits(const du::http::TransportSettings& settings);
  void SetMethod(const OutgoingRequest& request);
  void SetHeaderLines(const OutgoingRequest& request);
  void SetAuthentication(const OutgoingRequest& request);

  Origin origin_;
  bool busy_ = false;      ///< an exchange is under way
  CurlExchange exchange_;  ///< in front of the handle, whose last breath still calls it back
  std::unique_ptr<curl_slist, ListFreer> headerList_;
  std::vector<std::string> headerLines_;  ///< what `headerList_` was built from
  std::string systemAuthorityFile_;
  std::string systemAuthorityDirectory_;
  std::unique_ptr<CURL, HandleCloser> handle_;
};

}  // namespace vtdirect::platform
