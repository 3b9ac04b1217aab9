#include "platform_default/curl_errors.h"

namespace vtdirect::platform {

using du::http::ErrorCode;

ErrorCode ErrorCodeOf(CURLcode result) {
  switch (result) {
    case CURLE_OK:
      return ErrorCode::Done;
    case CURLE_URL_MALFORMAT:
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
    case CURLE_INTERFACE_FAILED:
    case CURLE_NO_CONNECTION_AVAILABLE:
    case CURLE_PROXY:
      return ErrorCode::NoConnection;
    case CURLE_OPERATION_TIMEDOUT:
      return ErrorCode::TimedOut;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_SHUTDOWN_FAILED:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
    case CURLE_SSL_CLIENTCERT:
    case CURLE_USE_SSL_FAILED:
      return ErrorCode::TlsFailure;
    default:
      // Cut short, broken off, closed without an answer, no HTTP at all, and whatever a later curl adds.
      return ErrorCode::ProtocolFailure;
  }
}

}  // namespace vtdirect::platform
