#include "platform_default/curl_exchange.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string_view>
#include <utility>

#include "platform_default/characters.h"
#include "platform_default/curl_errors.h"
#include "platform_default/header_lines.h"

namespace vtdirect::platform {
namespace {

using du::http::ErrorCode;

/// All header lines of one exchange. A server that never ends its header would otherwise never be stalled.
constexpr std::size_t largestResponseHeader = 256 * 1024;
constexpr int badRequest = 400;
constexpr int unauthorized = 401;
constexpr int payloadTooLarge = 413;

/// The status of "HTTP/1.1 413 ..."; 0 for anything else.
int StatusOf(std::string_view line) {
  if (line.substr(0, 5) != "HTTP/") return 0;
  const std::size_t blank = line.find(' ');
  if (blank == std::string_view::npos || line.size() < blank + 4) return 0;
  int status = 0;
  for (const char digit : line.substr(blank + 1, 3)) {
    if (!IsAsciiDigit(digit)) return 0;
    status = status * 10 + (digit - '0');
  }
  return status;
}

/// A demand for authentication, of the server or of a proxy. Nothing was done of what the request asks for.
bool IsDemand(int status) {
  return status == unauthorized || status == 407;
}

bool IsConnected(int socket) {
  sockaddr_storage peer{};
  socklen_t length = sizeof peer;
  return ::getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &length) == 0;
}

TransferClock::Time Now() {
  return std::chrono::steady_clock::now();
}

}  // namespace

void CurlExchange::Attach(CURL* handle) {
  handle_ = handle;
  foldedStart_.Attach(handle);
  curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &OnHeader);
  curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &OnBody);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(handle, CURLOPT_READFUNCTION, &OnRead);
  curl_easy_setopt(handle, CURLOPT_READDATA, this);
  curl_easy_setopt(handle, CURLOPT_SEEKFUNCTION, &OnSeek);
  curl_easy_setopt(handle, CURLOPT_SEEKDATA, this);
  curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, &OnProgress);
  curl_easy_setopt(handle, CURLOPT_XFERINFODATA, this);
  curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(handle, CURLOPT_PREREQFUNCTION, &OnRequestStarts);
  curl_easy_setopt(handle, CURLOPT_PREREQDATA, this);
  curl_easy_setopt(handle, CURLOPT_SOCKOPTFUNCTION, &OnNewSocket);
  curl_easy_setopt(handle, CURLOPT_SOCKOPTDATA, this);
  curl_easy_setopt(handle, CURLOPT_CLOSESOCKETFUNCTION, &OnCloseSocket);
  curl_easy_setopt(handle, CURLOPT_CLOSESOCKETDATA, this);
}

void CurlExchange::Start(const ExchangeParts& parts, const TimeLimits& limits) {
  body_ = parts.body;
  sink_ = parts.sink;
  mayRepeat_ = parts.mayRepeat;
  decodes_ = parts.decodes;
  refusesCoded_ = parts.refusesCoded;
  mostDemands_ = parts.demands;
  tls_ = parts.tls;
  demands_ = 0;
  cut_ = false;
  unclear_ = false;
  codedContent_ = false;
  framing_ = {};
  refusal_.reset();
  decoder_.reset();
  bodySize_ = body_ == nullptr ? std::nullopt : body_->Size();
  bodySent_ = 0;
  status_ = 0;
  headerEnded_ = false;
  foldedStart_.Start();
  sentBeforeStart_.reset();
  demandSeen_ = false;
  connectLimitRanOut_ = false;
  waitLimitRanOut_ = false;
  hadConnection_ = false;
  notes_.NewAnswer();
  result_ = CURLE_OK;
  headerBytes_ = 0;
  cookieBytes_ = 0;
  begun_ = false;
  failure_ = ErrorCode::Done;
  thrown_ = nullptr;
  clock_.Reset(limits);
}

ErrorCode CurlExchange::Perform(int* httpStatus) {
  const BorrowedEnd borrowedEnd{*this};
  const CURLcode result = curl_easy_perform(handle_);
  // No other limit is curl's: all the rest end the exchange from the progress function.
  connectLimitRanOut_ = result == CURLE_OPERATION_TIMEDOUT;
  result_ = result;
  if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
  const ErrorCode code = Conclude(result);
  if (code == ErrorCode::Done || code == ErrorCode::TooLarge) *httpStatus = status_;
  return code;
}

ErrorCode CurlExchange::Conclude(CURLcode result) {
  if (failure_ != ErrorCode::Done) return failure_;
  // The refusal of a body counts as soon as its status is known: a server that refuses while we still send
  // closes the connection, and sending or the rest of its answer then fails.
  if (body_ != nullptr && status_ == payloadTooLarge) {
    if (result == CURLE_OK && BeginSink()) static_cast<void>(FinishSink());
    return ErrorCode::TooLarge;
  }
  if (cut_) return BeginSink() ? AnswerSink().Finish() : failure_;
  if (result != CURLE_OK) return ProxyRefusedTunnel() ? ErrorCode::NoConnection : ErrorCodeOf(result);
  // curl is content with a connection that closes in the middle of a header.
  if (status_ < 200 || !headerEnded_) return ErrorCode::ProtocolFailure;
  if (WasCutOff()) return ErrorCode::ProtocolFailure;
  if (!BeginSink()) return failure_;
  return FinishSink();
}

ErrorCode CurlExchange::FinishSink() {
  if (decoder_ != nullptr && !decoder_->IsComplete()) return ErrorCode::ProtocolFailure;
  return AnswerSink().Finish();
}

du::http::FileSink& CurlExchange::AnswerSink() {
  return refusal_ ? *refusal_ : *sink_;
}

bool CurlExchange::ProxyRefusedTunnel() const {
  long answer = 0;
  curl_easy_getinfo(handle_, CURLINFO_HTTP_CONNECTCODE, &answer);
  return status_ == 0 && answer >= 300;
}

std::size_t CurlExchange::OnHeader(char* data, std::size_t, std::size_t count, void* self) {
  auto& exchange = *static_cast<CurlExchange*>(self);
  try {
    return exchange.TakeHeaderLine(data, count) ? count : 0;
  } catch (...) {
    exchange.thrown_ = std::current_exception();
    exchange.failure_ = ErrorCode::ProtocolFailure;
    return 0;
  }
}

bool CurlExchange::TakeHeaderLine(char* data, std::size_t count) {
  foldedStart_.LineArrives(data, count);
  headerBytes_ += count;
  if (headerBytes_ > largestResponseHeader || foldedStart_.Met()) {
    failure_ = ErrorCode::ProtocolFailure;
    return false;
  }
  clock_.AnswerArrives(Now());
  return ReadHeaderLine({data, count});
}

bool CurlExchange::ReadHeaderLine(std::string_view line) {
  // Header lines after a body (trailers) must not change the status any more.
  if (begun_) return true;
  if (line == "\r\n" || line == "\n") return EndHeader();
  if (const int status = StatusOf(line); status != 0) {
    BeginAnswer(status);
    return true;
  }
  notes_.HeaderLine(line);
  if (status_ == unauthorized) hasNonce_ = TellsNonce(line).value_or(hasNonce_);
  if (HasHeaderName(line, "Set-Cookie")) cookieBytes_ += line.size();
  if (decodes_ && HasHeaderName(line, "Content-Encoding")) {
    decoder_ = AnswerDecoder::For(line.substr(line.find(':') + 1));
  }
  unclear_ = !framing_.Take(line);
  if (unclear_) failure_ = ErrorCode::ProtocolFailure;
  return !unclear_;
}

void CurlExchange::BeginAnswer(int status) {
  status_ = status;
  headerEnded_ = false;
  if (IsDemand(status)) {
    demandSeen_ = true;
    ++demands_;
  }
  decoder_.reset();
  framing_ = {};
  notes_.NewAnswer();
}

bool CurlExchange::EndHeader() {
  headerEnded_ = true;
  if (status_ < 200) clock_.AnswerWasInterim();
  codedContent_ = refusesCoded_ && framing_.IsCoded() && IsSuccess(status_);
  if (codedContent_) failure_ = ErrorCode::ProtocolFailure;
  // curl answers a demand by itself as long as it finds a way to.
  cut_ = IsDemand(status_) && demands_ > mostDemands_;
  return failure_ == ErrorCode::Done && !cut_;
}

bool CurlExchange::BeginSink() {
  if (begun_) return true;
  curl_off_t length = -1;
  curl_easy_getinfo(handle_, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  std::optional<std::uint64_t> expected;
  // What is announced is the length on the line, and a sink gets what is decoded.
  if (length >= 0 && decoder_ == nullptr) expected = static_cast<std::uint64_t>(length);
  begun_ = true;
  if (!IsSuccess(status_)) refusal_.emplace(*sink_);
  failure_ = AnswerSink().Begin(status_, expected);
  return failure_ == ErrorCode::Done;
}

bool CurlExchange::IsBodyOfAnAnswer(std::string_view bytes) {
  const bool hasHead = status_ >= 200 && headerEnded_;
  // What is no HTTP at all tells by its first bytes what it is, and a refusal of a bad request by its words.
  if (!hasHead || status_ == badRequest) notes_.Body(bytes);
  if (!hasHead) failure_ = ErrorCode::ProtocolFailure;
  return hasHead;
}

std::size_t CurlExchange::OnBody(char* data, std::size_t, std::size_t count, void* self) {
  auto& exchange = *static_cast<CurlExchange*>(self);
  try {
    if (!exchange.IsBodyOfAnAnswer({data, count}) || !exchange.BeginSink()) return 0;
    exchange.TakeBody(reinterpret_cast<const std::uint8_t*>(data), count);
  } catch (...) {
    exchange.thrown_ = std::current_exception();
    exchange.failure_ = ErrorCode::LocalFileFailure;
  }
  return exchange.failure_ == ErrorCode::Done && !exchange.cut_ ? count : 0;
}

void CurlExchange::TakeBody(const std::uint8_t* data, std::size_t count) {
  du::http::FileSink& sink = AnswerSink();
  failure_ = decoder_ == nullptr ? sink.Write(data, count) : decoder_->Decode(data, count, sink);
  cut_ = failure_ == ErrorCode::Cancelled && refusal_ && refusal_->IsFull();
  if (cut_) failure_ = ErrorCode::Done;
}

std::size_t CurlExchange::OnRead(char* buffer, std::size_t size, std::size_t count, void* self) {
  auto& exchange = *static_cast<CurlExchange*>(self);
  try {
    return exchange.ReadBody(reinterpret_cast<std::uint8_t*>(buffer), size * count);
  } catch (...) {
    exchange.thrown_ = std::current_exception();
    exchange.failure_ = ErrorCode::LocalFileFailure;
    return CURL_READFUNC_ABORT;
  }
}

std::size_t CurlExchange::ReadBody(std::uint8_t* buffer, std::size_t capacity) {
  if (body_ == nullptr) return 0;
  if (bodySize_)
    capacity = static_cast<std::size_t>(std::min<std::uint64_t>(capacity, *bodySize_ - bodySent_));
  if (capacity == 0) return 0;
  clock_.BodyBegins();
  std::size_t count = 0;
  failure_ = body_->Read(buffer, capacity, &count);
  // A source that ends before the length it announced leaves the server waiting for the rest.
  const bool broken = count > capacity || (count == 0 && bodySize_);
  if (failure_ == ErrorCode::Done && broken) failure_ = ErrorCode::LocalFileFailure;
  if (failure_ != ErrorCode::Done) return CURL_READFUNC_ABORT;
  bodySent_ += count;
  // How much of a body of unknown length is still on its way can't be told from outside.
  if (count == 0) clock_.BodyIsOut();
  return count;
}

int CurlExchange::OnSeek(void* self, curl_off_t offset, int origin) {
  auto& exchange = *static_cast<CurlExchange*>(self);
  // curl asks for a second time when a kept connection dies under a request as well. The server may have
  // acted on what it got by then, and a document must not be created twice: only a demand for authentication
  // allows it.
  if (offset != 0 || origin != SEEK_SET || exchange.body_ == nullptr || !exchange.demandSeen_) {
    return CURL_SEEKFUNC_FAIL;
  }
  try {
    if (!exchange.body_->Rewind()) {
      exchange.failure_ = ErrorCode::LocalFileFailure;
      return CURL_SEEKFUNC_FAIL;
    }
  } catch (...) {
    exchange.thrown_ = std::current_exception();
    exchange.failure_ = ErrorCode::LocalFileFailure;
    return CURL_SEEKFUNC_FAIL;
  }
  exchange.bodySent_ = 0;
  return CURL_SEEKFUNC_OK;
}

int CurlExchange::OnProgress(void* self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent) {
  auto& exchange = *static_cast<CurlExchange*>(self);
  if (exchange.BodyIsOut(sent)) exchange.clock_.BodyIsOut();
  if (exchange.IsDrowned(received)) {
    exchange.failure_ = ErrorCode::ProtocolFailure;
    return 1;
  }
  if (!exchange.clock_.HasRunOut(Now(), received, sent)) return 0;
  exchange.failure_ = ErrorCode::TimedOut;
  exchange.waitLimitRanOut_ = true;
  return 1;
}

// Whoever cuts a line can end a connection, but not the TLS on it. curl takes both for the end of the body.
bool CurlExchange::WasCutOff() const {
  const bool mayHaveBody = status_ != 204 && status_ != 304;
  return tls_ != nullptr && mayHaveBody && framing_.EndsWithConnection() && !tls_->closed;
}

// curl reads the body of a demand that it is going to answer by itself, and shows nothing of it.
bool CurlExchange::IsDrowned(curl_off_t received) const {
  return demandSeen_ && !begun_ && IsDemand(status_) &&
         received > static_cast<curl_off_t>(keptOfRefusal + skippedOfRefusal);
}

bool CurlExchange::BodyIsOut(curl_off_t sent) const {
  const std::uint64_t size = bodySize_.value_or(0);
  return size > 0 && bodySent_ >= size && static_cast<std::uint64_t>(sent) >= size;
}

int CurlExchange::OnRequestStarts(void* self, char*, char*, int, int) {
  auto& exchange = *static_cast<CurlExchange*>(self);
  const long sent = exchange.RequestBytesSent();
  // curl starts a request again when the kept connection under it turns out to be dead. For one that writes,
  // that is right only while not a byte of it has gone out.
  const bool isFirst = !exchange.sentBeforeStart_;
  const bool mayStart = isFirst || exchange.mayRepeat_ || exchange.demandSeen_;
  if (!mayStart && sent != *exchange.sentBeforeStart_) {
    exchange.failure_ = ErrorCode::ProtocolFailure;
    return CURL_PREREQFUNC_ABORT;
  }
  if (!isFirst && !exchange.demandSeen_) ++exchange.revivals_;
  exchange.sentBeforeStart_ = sent;
  exchange.demandSeen_ = false;  // one demand allows one more try
  exchange.clock_.RequestStarts(Now());
  exchange.foldedStart_.RequestStarts();
  return CURL_PREREQFUNC_OK;
}

long CurlExchange::RequestBytesSent() const {
  long bytes = 0;
  curl_easy_getinfo(handle_, CURLINFO_REQUEST_SIZE, &bytes);
  return bytes;
}

int CurlExchange::OnNewSocket(void* self, curl_socket_t, curlsocktype) {
  auto& exchange = *static_cast<CurlExchange*>(self);
  exchange.foldedStart_.ConnectionBegins();
  // What was closed before was the connection of an earlier exchange.
  exchange.hadConnection_ = false;
  return CURL_SOCKOPT_OK;
}

int CurlExchange::OnCloseSocket(void* self, curl_socket_t socket) {
  auto& exchange = *static_cast<CurlExchange*>(self);
  exchange.hadConnection_ = exchange.hadConnection_ || IsConnected(socket);
  const bool unanswered = exchange.status_ < 200 || IsDemand(exchange.status_);
  if (exchange.body_ != nullptr && unanswered && !exchange.begun_) {
    // Sending failed before an answer was read. What the server said before it closed the connection still
    // waits in the socket; over TLS it cannot be read any more.
    std::array<char, 64> waiting;
    const ssize_t count = ::recv(socket, waiting.data(), waiting.size(), MSG_DONTWAIT);
    if (count > 0 && StatusOf({waiting.data(), static_cast<std::size_t>(count)}) == payloadTooLarge) {
      exchange.status_ = payloadTooLarge;
    }
  }
  return ::close(socket);
}

}  // namespace vtdirect::platform
