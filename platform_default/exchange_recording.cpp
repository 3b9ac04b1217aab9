#include "platform_default/exchange_recording.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <new>
#include <utility>

namespace vtdirect::platform {
namespace {

using du::http::ErrorCode;

/// As much of a head as is kept. The exchange itself ends at an answer with more.
constexpr std::size_t longestHead = 256 * 1024;

struct ObserverSlot {
  std::mutex mutex;
  std::shared_ptr<const ObserverInForce> observer;
};

ObserverSlot& Slot() {
  static ObserverSlot& slot = *new ObserverSlot;
  return slot;
}

void Append(std::string& text, std::string_view piece, std::size_t most) {
  if (text.size() < most) text.append(piece.substr(0, most - text.size()));
}

std::string_view WithoutEnd(std::string_view text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.remove_suffix(1);
  return text;
}

std::int64_t TimeInfo(CURL* handle, CURLINFO info) {
  curl_off_t microseconds = 0;
  return curl_easy_getinfo(handle, info, &microseconds) == CURLE_OK ? microseconds : 0;
}

/// curl counts every time from the start, and leaves out stages that there were not.
du::http::ObservedTimes TimesOf(CURL* handle) {
  std::int64_t last = 0;
  const auto since = [handle, &last](CURLINFO info) {
    const std::int64_t now = std::max(TimeInfo(handle, info), last);
    return now - std::exchange(last, now);
  };
  du::http::ObservedTimes times;
  times.name = since(CURLINFO_NAMELOOKUP_TIME_T);
  times.connect = since(CURLINFO_CONNECT_TIME_T);
  times.tls = since(CURLINFO_APPCONNECT_TIME_T);
  times.wait = since(CURLINFO_STARTTRANSFER_TIME_T);
  times.receive = since(CURLINFO_TOTAL_TIME_T);
  return times;
}

/// "Subject:CN = plm.example" and the like.
du::http::ObservedCertificate CertificateOf(const curl_slist* fields) {
  du::http::ObservedCertificate certificate;
  const std::array<std::pair<std::string_view, std::string*>, 4> wanted{
      {{"Subject:", &certificate.subject},
       {"Issuer:", &certificate.issuer},
       {"Start date:", &certificate.notBefore},
       {"Expire date:", &certificate.notAfter}}};
  for (; fields != nullptr; fields = fields->next) {
    const std::string_view text = fields->data;
    for (const auto& [name, value] : wanted) {
      if (text.starts_with(name)) *value = text.substr(name.size());
    }
  }
  return certificate;
}

std::vector<du::http::ObservedCertificate> CertificatesOf(CURL* handle) {
  std::vector<du::http::ObservedCertificate> certificates;
  curl_certinfo* shown = nullptr;
  if (curl_easy_getinfo(handle, CURLINFO_CERTINFO, &shown) != CURLE_OK || shown == nullptr) return {};
  for (int i = 0; i < shown->num_of_certs; ++i) certificates.push_back(CertificateOf(shown->certinfo[i]));
  return certificates;
}

}  // namespace

class ExchangeRecording::RecordingSource final : public du::http::FileSource {
 public:
  RecordingSource(du::http::FileSource& inner, du::http::ObservedExchange& exchange, std::size_t most)
      : inner_(inner), exchange_(exchange), most_(most) {}

  std::optional<std::uint64_t> Size() override { return inner_.Size(); }

  ErrorCode Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) override {
    const ErrorCode code = inner_.Read(buffer, capacity, count);
    if (code != ErrorCode::Done) return code;
    exchange_.requestBodyBytes += *count;
    Append(exchange_.requestBody, {reinterpret_cast<const char*>(buffer), *count}, most_);
    return code;
  }

  bool Rewind() override {
    exchange_.requestBody.clear();
    exchange_.requestBodyBytes = 0;
    return inner_.Rewind();
  }

 private:
  du::http::FileSource& inner_;
  du::http::ObservedExchange& exchange_;
  std::size_t most_;
};

class ExchangeRecording::RecordingSink final : public du::http::FileSink {
 public:
  RecordingSink(du::http::FileSink& inner, du::http::ObservedExchange& exchange, std::size_t most)
      : inner_(inner), exchange_(exchange), most_(most) {}

  ErrorCode Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) override {
    return inner_.Begin(httpStatus, expectedLength);
  }

  ErrorCode Write(const std::uint8_t* data, std::size_t count) override {
    exchange_.answerBodyBytes += count;
    Append(exchange_.answerBody, {reinterpret_cast<const char*>(data), count}, most_);
    return inner_.Write(data, count);
  }

  ErrorCode Finish() override { return inner_.Finish(); }

 private:
  du::http::FileSink& inner_;
  du::http::ObservedExchange& exchange_;
  std::size_t most_;
};

std::shared_ptr<const ObserverInForce> FindObserver() {
  const std::lock_guard lock(Slot().mutex);
  return Slot().observer;
}

ExchangeRecording::ExchangeRecording(CURL* handle, CurlExchange& exchange, du::http::FileSource* body,
                                     du::http::FileSink& sink, std::size_t bodyBytes)
    : handle_(handle),
      onHandle_(exchange),
      sink_(std::make_unique<RecordingSink>(sink, exchange_, bodyBytes)) {
  if (body != nullptr) source_ = std::make_unique<RecordingSource>(*body, exchange_, bodyBytes);
  exchange_.started = std::chrono::system_clock::now();
  curl_easy_setopt(handle, CURLOPT_CERTINFO, 1L);
  onHandle_.ShowWireTo(this);
}

// The handle lives on.
ExchangeRecording::~ExchangeRecording() {
  onHandle_.ShowWireTo(nullptr);
  curl_easy_setopt(handle_, CURLOPT_CERTINFO, 0L);
}

du::http::FileSource* ExchangeRecording::body() {
  return source_.get();
}

du::http::FileSink& ExchangeRecording::sink() {
  return *sink_;
}

du::http::ObservedExchange ExchangeRecording::End(ErrorCode result, int status) {
  exchange_.result = result;
  exchange_.status = status;
  exchange_.times = TimesOf(handle_);
  exchange_.certificates = CertificatesOf(handle_);
  long made = 0;
  curl_easy_getinfo(handle_, CURLINFO_NUM_CONNECTS, &made);
  exchange_.newConnection = made > 0;
  const char* peer = nullptr;
  if (curl_easy_getinfo(handle_, CURLINFO_PRIMARY_IP, &peer) == CURLE_OK && peer != nullptr)
    exchange_.peer = peer;
  for (du::http::ObservedTurn& turn : exchange_.turns) turn.answerHead = WithoutEnd(turn.answerHead);
  return exchange_;
}

// Nothing may be thrown through curl. What there is no memory for is not shown.
void ExchangeRecording::WireShows(curl_infotype type, std::string_view bytes) {
  try {
    if (type == CURLINFO_HEADER_OUT) RequestHead(bytes);
    if (type == CURLINFO_HEADER_IN) AnswerLine(bytes);
  } catch (const std::bad_alloc&) {
    exchange_.turns.clear();
  }
}

void ExchangeRecording::RequestHead(std::string_view text) {
  exchange_.turns.emplace_back();
  Append(exchange_.turns.back().requestHead, WithoutEnd(text), longestHead);
}

// Lines come one by one. Those of an interim answer give way to those of the next.
void ExchangeRecording::AnswerLine(std::string_view line) {
  if (exchange_.turns.empty()) return;
  std::string& head = exchange_.turns.back().answerHead;
  if (line.starts_with("HTTP/")) head.clear();
  Append(head, line, longestHead);
}

}  // namespace vtdirect::platform

namespace du::http {

void SetExchangeObserver(ExchangeObserver observer, std::size_t bodyBytes) {
  std::shared_ptr<const vtdirect::platform::ObserverInForce> next;
  if (observer) {
    next = std::make_shared<const vtdirect::platform::ObserverInForce>(
        vtdirect::platform::ObserverInForce{std::move(observer), bodyBytes});
  }
  const std::lock_guard lock(vtdirect::platform::Slot().mutex);
  vtdirect::platform::Slot().observer.swap(next);
}

}  // namespace du::http
