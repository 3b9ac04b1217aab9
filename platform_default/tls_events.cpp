#include "platform_default/tls_events.h"

#include <openssl/ssl.h>

namespace vtdirect::platform {
namespace {

int EventsIndex() {
  static const int index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
  return index;
}

/// OpenSSL calls this when the server has asked for a certificate and has shown its own.
int OnCertificateAsked(SSL*, void* events) {
  static_cast<TlsEvents*>(events)->certificateAsked = true;
  return 1;  // go on, with whatever there is
}

void OnState(const SSL* connection, int where, int alert) {
  if ((where & SSL_CB_READ_ALERT) != SSL_CB_READ_ALERT) return;
  auto* events = static_cast<TlsEvents*>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(connection), EventsIndex()));
  if (events == nullptr) return;
  if ((alert & 0xFF) == SSL_AD_CLOSE_NOTIFY) events->closed = true;
  if ((alert >> 8) == SSL3_AL_FATAL) events->fatalAlert = alert & 0xFF;
}

}  // namespace

void WatchTls(ssl_ctx_st* context, TlsEvents* events) {
  if (SSL_CTX_set_ex_data(context, EventsIndex(), events) != 1) return;
  SSL_CTX_set_cert_cb(context, &OnCertificateAsked, events);
  SSL_CTX_set_info_callback(context, &OnState);
}

bool RefusedCertificate(const TlsEvents& events) {
  switch (events.fatalAlert.value_or(-1)) {
    case SSL_AD_HANDSHAKE_FAILURE:
      // With TLS 1.2 also the word of a server that has no cipher in common with us, before it asks.
      return events.certificateAsked;
    case SSL_AD_BAD_CERTIFICATE:
    case SSL_AD_UNSUPPORTED_CERTIFICATE:
    case SSL_AD_CERTIFICATE_REVOKED:
    case SSL_AD_CERTIFICATE_EXPIRED:
    case SSL_AD_CERTIFICATE_UNKNOWN:
    case SSL_AD_UNKNOWN_CA:
    case SSL_AD_ACCESS_DENIED:
    case SSL_AD_CERTIFICATE_REQUIRED:
      return true;
    default:
      return false;
  }
}

}  // namespace vtdirect::platform
