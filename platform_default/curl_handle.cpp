#include "platform_default/curl_handle.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <new>
#include <utility>

#include "platform_default/environment_proxy.h"
#include "platform_default/exchange_recording.h"
#include "platform_default/failure_words.h"
#include "platform_default/kept_socket.h"

namespace vtdirect::platform {
namespace {

using du::http::ErrorCode;
using du::http::FailureDetail;
using du::http::FailureReport;
using du::http::Method;

/// Large enough that a fast download is not a matter of system calls.
constexpr long receiveBufferBytes = 512 * 1024;
/// The same for uploads. A host is told the progress, and may cancel, once for each of these.
constexpr long uploadBufferBytes = 1024 * 1024;

void InitialiseCurlOnce() {
  static std::once_flag once;
  std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

std::string TextInfo(CURL* handle, CURLINFO info) {
  const char* text = nullptr;
  return curl_easy_getinfo(handle, info, &text) == CURLE_OK && text != nullptr ? text : "";
}

long NumberInfo(CURL* handle, CURLINFO info) {
  long number = 0;
  return curl_easy_getinfo(handle, info, &number) == CURLE_OK ? number : 0;
}

/// Whether a stage was reached, of which curl has noted the time.
bool HasTime(CURL* handle, CURLINFO info) {
  curl_off_t microseconds = 0;
  return curl_easy_getinfo(handle, info, &microseconds) == CURLE_OK && microseconds > 0;
}

const char* OrNull(const std::string& text) {
  return text.empty() ? nullptr : text.c_str();
}

/// Where an answer redirects to that curl has not read to its end.
std::string LocationUrl(CURL* handle) {
  struct Closer {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
  };
  curl_header* location = nullptr;
  if (curl_easy_header(handle, "Location", 0, CURLH_HEADER, -1, &location) != CURLHE_OK) return {};
  const std::unique_ptr<CURLU, Closer> url(curl_url());
  const std::string base = TextInfo(handle, CURLINFO_EFFECTIVE_URL);
  constexpr unsigned lenient = CURLU_URLENCODE | CURLU_ALLOW_SPACE | CURLU_PATH_AS_IS;
  if (curl_url_set(url.get(), CURLUPART_URL, base.c_str(), lenient) != CURLUE_OK) return {};
  if (curl_url_set(url.get(), CURLUPART_URL, location->value, lenient) != CURLUE_OK) return {};
  char* text = nullptr;
  if (curl_url_get(url.get(), CURLUPART_URL, &text, 0) != CURLUE_OK) return {};
  const std::string absolute = text;
  curl_free(text);
  return absolute;
}

bool IsPlain(const OutgoingRequest& request) {
  return request.url.starts_with("http:");
}

/// A proxy is asked for plain requests one by one, and some close the connection after each without a word.
/// What writes is never sent a second time, so it must not meet a connection that is about to close.
bool NeedsFreshConnection(const OutgoingRequest& request, const ConnectionWay& way) {
  if (request.method == Method::Get || !IsPlain(request)) return false;
  if (way.proxy) return !way.proxy->empty();
  return EnvironmentNamesProxy(IsPlain(request));
}

}  // namespace

std::unique_ptr<CurlHandle> CurlHandle::Make(std::shared_ptr<OriginSession> session) {
  InitialiseCurlOnce();
  OwnedHandle handle(curl_easy_init());
  if (handle == nullptr) return nullptr;
  return std::unique_ptr<CurlHandle>(new CurlHandle(std::move(session), std::move(handle)));
}

CurlHandle::CurlHandle(std::shared_ptr<OriginSession> session, OwnedHandle handle)
    : session_(std::move(session)), handle_(std::move(handle)) {
  exchange_.Attach(handle_.get());
  SetFixedOptions();
  SetTrust();
  SetIdentity();
  SetProxy();
}

CurlHandle::~CurlHandle() = default;

bool CurlHandle::Join(std::shared_ptr<OriginSession> session) {
  if (negotiated_ || session->way() != session_->way()) return false;
  curl_easy_setopt(handle_.get(), CURLOPT_SHARE, session->share()->forCurl());
  session_ = std::move(session);
  return true;
}

void CurlHandle::SetFixedOptions() {
  CURL* handle = handle_.get();
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  // What is no HTTP comes as a body without a head, which the exchange refuses once it has seen its start.
  curl_easy_setopt(handle, CURLOPT_HTTP09_ALLOWED, 1L);
  curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, curlText_.data());
  // curl takes a packed answer that ends too early for a whole one, so it is unpacked outside of curl.
  curl_easy_setopt(handle, CURLOPT_HTTP_CONTENT_DECODING, 0L);
  curl_easy_setopt(handle, CURLOPT_USERAGENT, "VtDirect/" VTDIRECT_VERSION);
  curl_easy_setopt(handle, CURLOPT_PATH_AS_IS, 1L);
  // Redirects are followed outside of curl, which knows nothing of the rules for them.
  curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L);
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 1L);
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 2L);
  curl_easy_setopt(handle, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  // Cookies live in memory: a server may keep a session by them.
  curl_easy_setopt(handle, CURLOPT_SHARE, session_->share()->forCurl());
  curl_easy_setopt(handle, CURLOPT_COOKIEFILE, "");
  curl_easy_setopt(handle, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, receiveBufferBytes);
  curl_easy_setopt(handle, CURLOPT_UPLOAD_BUFFERSIZE, uploadBufferBytes);
  // No other stays beside the one that KeptSocket shows.
  curl_easy_setopt(handle, CURLOPT_MAXCONNECTS, 1L);
}

void CurlHandle::SetTrust() {
  CURL* handle = handle_.get();
  // A file named by the host replaces the system's trust and does not add to it.
  trust_ = {session_->way().certificateAuthorityFile, ""};
  if (trust_.file.empty()) trust_ = {TextInfo(handle, CURLINFO_CAINFO), TextInfo(handle, CURLINFO_CAPATH)};
  const bool shared = trust_ != TrustSource{} && CanShareCertificates();
  curl_easy_setopt(handle, CURLOPT_CAINFO, shared ? nullptr : OrNull(trust_.file));
  curl_easy_setopt(handle, CURLOPT_CAPATH, shared ? nullptr : OrNull(trust_.directory));
  if (!session_->way().certificateAuthorityFile.empty()) {
    curl_easy_setopt(handle, CURLOPT_PROXY_CAINFO, trust_.file.c_str());
    curl_easy_setopt(handle, CURLOPT_PROXY_CAPATH, nullptr);
  }
  watchesTls_ = shared;
  if (!shared) return;
  curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, &OnTlsContext);
  curl_easy_setopt(handle, CURLOPT_SSL_CTX_DATA, this);
}

const TlsEvents* CurlHandle::WatchedTls(const OutgoingRequest& request) const {
  return watchesTls_ && request.url.starts_with("https:") ? &tlsEvents_ : nullptr;
}

// Nothing may be thrown through curl.
CURLcode CurlHandle::OnTlsContext(CURL*, void* context, void* self) {
  auto* tls = static_cast<ssl_ctx_st*>(context);
  if (BelongsToProxy(tls)) return CURLE_OK;
  auto& handle = *static_cast<CurlHandle*>(self);
  try {
    WatchTls(tls, &handle.tlsEvents_);
    return GiveCertificates(tls, handle.trust_);
  } catch (...) {
    return CURLE_OUT_OF_MEMORY;
  }
}

void CurlHandle::SetIdentity() {
  const std::shared_ptr<ClientIdentity>& identity = session_->way().identity;
  if (identity == nullptr) return;
  CURL* handle = handle_.get();
  const bool isPkcs12 = identity->IsPkcs12();
  curl_easy_setopt(handle, CURLOPT_SSLCERT, identity->certificateFile().c_str());
  curl_easy_setopt(handle, CURLOPT_SSLCERTTYPE, isPkcs12 ? "P12" : "PEM");
  if (!isPkcs12) curl_easy_setopt(handle, CURLOPT_SSLKEY, identity->keyFile().c_str());
  // Without any, OpenSSL would ask on the terminal.
  passphrase_ = identity->Passphrase();
  curl_easy_setopt(handle, CURLOPT_KEYPASSWD, passphrase_.c_str());
}

void CurlHandle::SetProxy() {
  CURL* handle = handle_.get();
  const ConnectionWay& way = session_->way();
  if (way.proxy) {
    curl_easy_setopt(handle, CURLOPT_PROXY, way.proxy->c_str());
    // Unset, it would leave the exceptions to the environment.
    curl_easy_setopt(handle, CURLOPT_NOPROXY, way.proxyExceptions.c_str());
  }
  if (!way.proxyCredentials) return;
  curl_easy_setopt(handle, CURLOPT_PROXYUSERNAME, way.proxyCredentials->user.c_str());
  curl_easy_setopt(handle, CURLOPT_PROXYPASSWORD, way.proxyCredentials->password.c_str());
}

// curl would look for a proxy at length before each request, and for exceptions to one that nobody has named.
void CurlHandle::SetEnvironmentProxy(const OutgoingRequest& request) {
  if (session_->way().proxy) return;
  const bool asks = EnvironmentNamesProxy(IsPlain(request));
  if (std::exchange(asksEnvironment_, asks) == asks) return;
  curl_easy_setopt(handle_.get(), CURLOPT_PROXY, asks ? nullptr : "");
  curl_easy_setopt(handle_.get(), CURLOPT_NOPROXY, asks ? nullptr : "");
}

void CurlHandle::SetConnectLimit(long milliseconds) {
  if (std::exchange(connectLimit_, milliseconds) == milliseconds) return;
  // The largest value that every part of curl can hold: 24 days.
  constexpr long longest = std::numeric_limits<int>::max();
  curl_easy_setopt(handle_.get(), CURLOPT_CONNECTTIMEOUT_MS, std::min(milliseconds, longest));
}

void CurlHandle::SetMethod(const OutgoingRequest& request) {
  const bool isGet = request.method == Method::Get;
  if (std::exchange(isForGet_, isGet) && isGet) return;
  CURL* handle = handle_.get();
  curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, request.method == Method::Patch ? "PATCH" : nullptr);
  if (isGet) {
    curl_easy_setopt(handle, CURLOPT_HTTPGET, 1L);
    return;
  }
  curl_easy_setopt(handle, CURLOPT_POST, 1L);
  if (request.body == nullptr) {
    curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t{0});
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, "");
    return;
  }
  const std::optional<std::uint64_t> size = exchange_.BodySize();
  curl_easy_setopt(handle, CURLOPT_POSTFIELDS, nullptr);
  curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE_LARGE,
                   size ? static_cast<curl_off_t>(*size) : curl_off_t{-1});
}

void CurlHandle::SetHeaderLines(const OutgoingRequest& request) {
  const bool isChunked = request.body != nullptr && !exchange_.BodySize();
  const BodyFraming framing = isChunked ? BodyFraming::Chunked : BodyFraming::BySize;
  if (headerList_ != nullptr && IsMadeFor(headerOrder_, request, framing)) return;
  HeaderOrder order = OrderOf(request, framing);
  std::unique_ptr<curl_slist, ListFreer> list;
  for (const std::string& line : LinesForCurl(request, framing)) {
    curl_slist* longer = curl_slist_append(list.get(), line.c_str());
    if (longer == nullptr) throw std::bad_alloc();
    static_cast<void>(list.release());
    list.reset(longer);
  }
  curl_easy_setopt(handle_.get(), CURLOPT_HTTPHEADER, list.get());
  headerList_ = std::move(list);
  headerOrder_ = std::move(order);
}

bool CurlHandle::HoldsLoginBack(const OutgoingRequest& request) const {
  return request.method != Method::Get && request.authenticationMask == CURLAUTH_DIGEST && !HasNonce();
}

void CurlHandle::SetAuthentication(const OutgoingRequest& request) {
  CURL* handle = handle_.get();
  const bool with = request.authenticationMask != CURLAUTH_NONE;
  if (!with && !hasLogin_) return;
  hasLogin_ = with;
  negotiated_ = request.authenticationMask == CURLAUTH_NEGOTIATE;
  // A login that is held back has its user all the same: without one, curl would overlook the demand that follows
  // this one's, and log in once more with the old nonce.
  curl_easy_setopt(handle, CURLOPT_HTTPAUTH,
                   HoldsLoginBack(request) ? CURLAUTH_NONE : request.authenticationMask);
  curl_easy_setopt(handle, CURLOPT_USERNAME, with ? request.user.c_str() : nullptr);
  curl_easy_setopt(handle, CURLOPT_PASSWORD, with ? request.password.c_str() : nullptr);
}

ErrorCode CurlHandle::Send(const OutgoingRequest& request, du::http::FileSink& sink,
                           const du::http::TransportSettings& settings, int* httpStatus) {
  const auto observer = FindObserver();
  if (observer == nullptr) return Perform(request, sink, settings, httpStatus);
  ExchangeRecording recording(handle_.get(), exchange_, request.body, sink, observer->bodyBytes);
  OutgoingRequest recorded = request;
  recorded.body = recording.body();
  const ErrorCode result = Perform(recorded, recording.sink(), settings, httpStatus);
  du::http::ObservedExchange exchange = recording.End(result, exchange_.Status());
  exchange.method = request.method;
  exchange.url = std::string(request.url);
  observer->report(exchange);
  return result;
}

ErrorCode CurlHandle::Perform(const OutgoingRequest& request, du::http::FileSink& sink,
                              const du::http::TransportSettings& settings, int* httpStatus) {
  if (NeedsFreshConnection(request, session_->way()) || HasUnaskedBytes(KeptSocket()))
    CutConnection(KeptSocket());
  exchange_.Start({request.body, &sink, request.method == Method::Get, request.asksForCompression,
                   request.asksForIdentity, request.demands, WatchedTls(request)},
                  {settings.stallTimeoutSeconds, settings.firstByteTimeoutSeconds,
                   settings.firstByteAfterBodyTimeoutSeconds});
  SetConnectLimit(settings.connectTimeoutMilliseconds);
  SetEnvironmentProxy(request);
  SetMethod(request);
  SetHeaderLines(request);
  SetAuthentication(request);
  address_.Give(handle_.get(), request.url);
  BeginAnew(&tlsEvents_, tlsEvents_.context);
  const ErrorCode result = exchange_.Perform(httpStatus);
  session_->share()->CookiesCame(handle_.get(), exchange_.CookieBytes());
  // For curl the handshake was over already.
  return result == ErrorCode::ProtocolFailure && CertificateWasRefused() ? ErrorCode::TlsFailure : result;
}

bool CurlHandle::CertificateWasRefused() const {
  if (exchange_.HasAnswer()) return false;
  if (RefusedCertificate(tlsEvents_)) return true;
  // The alert gets lost when our request is still on its way to a server that has closed already. What writes
  // keeps the code that leaves open whether it was carried out.
  const bool closed = exchange_.Result() == CURLE_RECV_ERROR || exchange_.Result() == CURLE_SEND_ERROR ||
                      exchange_.Result() == CURLE_GOT_NOTHING;
  return exchange_.MayRepeat() && closed && tlsEvents_.certificateAsked &&
         session_->way().identity == nullptr;
}

FailureReport CurlHandle::ExplainIdentity() const {
  const std::shared_ptr<ClientIdentity>& identity = session_->way().identity;
  if (IdentityWasUnreadable() && identity != nullptr) {
    return ReportOf(FailureDetail::ClientCertificateUnreadable,
                    {identity->certificateFile(), identity->keyFile()});
  }
  if (!CertificateWasRefused()) return {};
  if (identity == nullptr) return ReportOf(FailureDetail::ClientCertificateWanted);
  return ReportOf(FailureDetail::ClientCertificateRefused, {identity->certificateFile()});
}

ExchangeEvidence CurlHandle::EvidenceOf(const Origin& origin, ErrorCode code) const {
  CURL* handle = handle_.get();
  ExchangeEvidence evidence;
  evidence.origin = origin;
  evidence.code = code;
  evidence.status = exchange_.Status();
  evidence.isUnclear = exchange_.WasUnclear();
  evidence.isCodedContent = exchange_.WasCoded();
  evidence.notes = exchange_.Notes();
  evidence.offeredLogins = NumberInfo(handle, CURLINFO_HTTPAUTH_AVAIL);
  evidence.limitRanOut = exchange_.WaitLimitRanOut();
  evidence.wait = exchange_.LastWait();
  evidence.connectLimitMilliseconds = connectLimit_;
  evidence.result = exchange_.Result();
  evidence.curlText = curlText_.data();
  evidence.systemError = NumberInfo(handle, CURLINFO_OS_ERRNO);
  evidence.hasAddress = HasTime(handle, CURLINFO_NAMELOOKUP_TIME_T);
  evidence.hasConnected = exchange_.HadConnection();
  evidence.tunnelStatus = static_cast<int>(NumberInfo(handle, CURLINFO_HTTP_CONNECTCODE));
  evidence.waitsForTunnel = origin.scheme == "https" && watchesTls_ && !tlsEvents_.begun;
  evidence.tls = tlsEvents_;
  evidence.verification = static_cast<int>(NumberInfo(handle, CURLINFO_SSL_VERIFYRESULT));
  if (evidence.result == CURLE_SSL_CACERT_BADFILE) {
    evidence.trustFile = trust_.file;
    evidence.trustFault = FaultOfTrustFile(trust_.file);
  }
  return evidence;
}

FailureReport CurlHandle::Explain(const Origin& origin, ErrorCode code) const {
  const bool isPlainSuccess = code == ErrorCode::Done && exchange_.Status() < 300;
  if (isPlainSuccess && exchange_.Notes().unknownCoding().empty()) return {};
  FailureReport report = ExplainIdentity();
  if (report.detail == FailureDetail::Unknown) report = ExplainFailure(EvidenceOf(origin, code));
  return report;
}

std::string CurlHandle::RedirectUrl() const {
  if (exchange_.WasCut()) return LocationUrl(handle_.get());
  return TextInfo(handle_.get(), CURLINFO_REDIRECT_URL);
}

PasswordScheme CurlHandle::DemandedScheme() const {
  long offered = 0;
  curl_easy_getinfo(handle_.get(), CURLINFO_HTTPAUTH_AVAIL, &offered);
  if ((offered & CURLAUTH_DIGEST) != 0) return PasswordScheme::Digest;
  if ((offered & CURLAUTH_BASIC) != 0) return PasswordScheme::Basic;
  return PasswordScheme::Unknown;
}

curl_socket_t CurlHandle::KeptSocket() const {
  curl_socket_t socket = CURL_SOCKET_BAD;
  const CURLcode known = curl_easy_getinfo(handle_.get(), CURLINFO_ACTIVESOCKET, &socket);
  return known == CURLE_OK ? socket : CURL_SOCKET_BAD;
}

bool CurlHandle::IsConnected() const {
  return KeptSocket() != CURL_SOCKET_BAD;
}

}  // namespace vtdirect::platform
