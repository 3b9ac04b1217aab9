#pragma once

#include <functional>
#include <optional>
#include <string>

#include "export.h"

/// Credentials of the default platform. A host sets them per origin, as a rule from inside its authentication
/// callback. They are sent to that origin (scheme, host and port) only, never to where a redirect leads.
///
/// One redirect is different: from http to https on the same host, whatever the two ports are (the host's
/// name or address must be the same text, in upper or lower case). Credentials of the https origin count
/// there, and so does the authentication callback. It is called with the URL that the connection was made
/// for, the one with http, so it may set credentials for that one: when the https origin has none of its own
/// and asks for a login, those of the http origin count there.
///
/// Credentials that are set already are used before the host is asked: a token at once; a password when the
/// server asks for it, from then on at once, and at once also with a body that goes out over https, which
/// would otherwise have to be sent twice. A header line "Authorization" of the caller's own goes before them.
///
/// Each call begins a new session with its origin: cookies, the connections that are kept and what was
/// learned of how the server takes a password are forgotten, also when the same credentials are set once
/// more. A call for an http origin does so with the https origins of its host as well. Exchanges that are
/// under way finish with what they began with; one that is refused tries the new credentials before it asks
/// the host.
///
/// All functions may be called from any thread, from inside callbacks too, and make no request.
namespace du::http {

/// Sends user name and password, by Basic or Digest as the server asks, to the origin of `url`.
/// Replaces whatever was set for that origin. A URL without a usable origin and a user name with a control
/// byte are ignored.
VTDIRECT_API void SetPasswordCredentials(const std::string& url, const std::string& user,
                                         const std::string& password);

/// Sends a bearer token to the origin of `url`. Replaces whatever was set for that origin. A token with a
/// control byte is ignored.
VTDIRECT_API void SetBearerToken(const std::string& url, const std::string& token);

/// Logs in to the origin of `url` by Negotiate (Kerberos), with the tickets that this process has
/// (`KRB5CCNAME`). Without this call no server gets a ticket, whatever it asks for. The login goes out at
/// once, with a body too. Replaces whatever was set for that origin. Without a ticket for it, or where
/// libcurl can't speak Kerberos, the request goes out without a login, and when the server demands one the
/// host is asked: it may have got a ticket by then, or set a password instead.
VTDIRECT_API void SetNegotiateCredentials(const std::string& url);

/// Forgets the password, token or Negotiate of the origin of `url`.
VTDIRECT_API void ClearCredentials(const std::string& url);

/// Forgets the passwords, tokens and Negotiate of all origins.
VTDIRECT_API void ClearAllCredentials();

/// A certificate with which this process says over TLS who it is. It is shown to a server that asks for one,
/// never to where a redirect leads, but for the redirect from http to https on the same host. What comes back
/// from elsewhere to the origin that it began at is shown it again, as a single sign-on needs.
///
/// A server that demands one and gets none, or refuses the one that it gets, ends the exchange with
/// `TlsFailure`, and a trace line (area "fenlet", name "Transport") says so. Some servers finish the
/// handshake all the same and answer with a page, often with status 400: that is an answer like any other.
struct ClientCertificate {
  /// Asked for the passphrase of a key. Nothing means that there is none, and the exchange ends with
  /// `TlsFailure`.
  using PassphraseFunction = std::function<std::optional<std::string>(const std::string& keyFile)>;

  /// File with the certificate: PEM, with further certificates of its chain after it, or PKCS#12. Which of
  /// them it is shows in its content.
  std::string certificateFile;
  /// File with the key: PEM. Empty means that it is in `certificateFile`. Without effect with PKCS#12.
  std::string keyFile;
  /// Called when the key is locked, on the thread of the exchange that needs it, before it begins and while
  /// no lock is held; possibly on several threads at once. Its answer is kept in memory until the certificate
  /// is set or cleared, and is dropped when it does not fit the key. It may make requests, but none that
  /// needs this key. May be empty: then a locked key is of no use.
  PassphraseFunction passphrase;
};

/// Shows this certificate to the origin of `url`, in place of the one for all. Without a usable origin or
/// with an empty `certificateFile` nothing happens. No file is read before an exchange needs it. Begins new
/// sessions, as credentials do, also when it is the same as before.
VTDIRECT_API void SetClientCertificate(const std::string& url, const ClientCertificate& certificate);

/// Shows this certificate to every origin that has none of its own. Otherwise as SetClientCertificate.
VTDIRECT_API void SetClientCertificateForAll(const ClientCertificate& certificate);

/// Forgets the certificate of the origin of `url`; the one for all counts there again.
VTDIRECT_API void ClearClientCertificate(const std::string& url);

/// Forgets all certificates of the host, the one for all included.
VTDIRECT_API void ClearAllClientCertificates();

/// Sends user name and password to the proxy, by Basic: the proxy of the settings (http_settings.h), or the
/// one of the environment. A user name in the proxy's own URL goes before them. They are never sent to a
/// server. A user name with a control byte or a ":" is ignored. Begins new sessions with all origins.
VTDIRECT_API void SetProxyCredentials(const std::string& user, const std::string& password);

/// Forgets them. Begins new sessions with all origins.
VTDIRECT_API void ClearProxyCredentials();

}  // namespace du::http
