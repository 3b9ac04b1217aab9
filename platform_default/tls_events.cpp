#include "platform_default/tls_events.h"

#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>

#include "platform_default/certificate_text.h"

namespace vtdirect::platform {
namespace {

int EventsIndex() {
  static const int index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
  return index;
}

/// Null when they are those of a later connection by now.
TlsEvents* EventsOf(const SSL* connection) {
  const SSL_CTX* context = SSL_get_SSL_CTX(connection);
  auto* events = static_cast<TlsEvents*>(SSL_CTX_get_ex_data(context, EventsIndex()));
  return events != nullptr && events->context == context ? events : nullptr;
}

/// OpenSSL calls this when the server has asked for a certificate and has shown its own.
int OnCertificateAsked(SSL* connection, void*) {
  TlsEvents* events = EventsOf(connection);
  if (events != nullptr) events->certificateAsked = true;
  return 1;  // go on, with whatever there is
}

void OnState(const SSL* connection, int where, int alert) {
  if ((where & SSL_CB_ALERT) == 0) return;
  TlsEvents* events = EventsOf(connection);
  if (events == nullptr) return;
  const bool isRead = (where & SSL_CB_READ) != 0;
  if (isRead && (alert & 0xFF) == SSL_AD_CLOSE_NOTIFY) events->closed = true;
  if ((alert >> 8) != SSL3_AL_FATAL) return;
  (isRead ? events->fatalAlert : events->ownAlert) = alert & 0xFF;
}

void NoteVerdict(bool isGood, X509_STORE_CTX* verification) {
  const auto* connection =
      static_cast<const SSL*>(X509_STORE_CTX_get_ex_data(verification, SSL_get_ex_data_X509_STORE_CTX_idx()));
  TlsEvents* events = connection == nullptr ? nullptr : EventsOf(connection);
  const X509* certificate = X509_STORE_CTX_get_current_cert(verification);
  if (events == nullptr || certificate == nullptr) return;
  const int depth = X509_STORE_CTX_get_error_depth(verification);
  if (isGood) {
    if (depth == 0) events->certificateHosts = HostsOf(certificate);
    return;
  }
  CertificateFault& fault = events->fault;
  fault.code = X509_STORE_CTX_get_error(verification);
  fault.isOfAuthority = depth > 0;
  fault.date = fault.code == X509_V_ERR_CERT_NOT_YET_VALID ? DateText(X509_get0_notBefore(certificate))
                                                           : DateText(X509_get0_notAfter(certificate));
}

/// OpenSSL calls this for each certificate of the chain, with its verdict, which stays as it is.
int OnVerdict(int isGood, X509_STORE_CTX* verification) {
  try {
    NoteVerdict(isGood == 1, verification);
  } catch (...) {
    // For want of memory the words are left out. Nothing may be thrown through OpenSSL.
  }
  return isGood;
}

}  // namespace

void BeginAnew(TlsEvents* events, const ssl_ctx_st* context) {
  *events = {};
  events->context = context;
}

void WatchTls(ssl_ctx_st* context, TlsEvents* events) {
  if (SSL_CTX_set_ex_data(context, EventsIndex(), events) != 1) return;
  BeginAnew(events, context);
  events->begun = true;
  SSL_CTX_set_cert_cb(context, &OnCertificateAsked, nullptr);
  SSL_CTX_set_info_callback(context, &OnState);
  SSL_CTX_set_verify(context, SSL_CTX_get_verify_mode(context), &OnVerdict);
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
