#include "connection/http_connection.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "base/failure_log.h"
#include "base/server_key.h"
#include "base/text.h"
#include "connection/bounded_sink.h"
#include "connection/exchange_failure.h"
#include "platform/uri.h"

namespace lxservices::cms_interface::vantry {
namespace {

// Marks this client to the server.
constexpr const char* clientMark = "X-Zvk-Connected: 1";

// The beginning of a refusal's body, which lands in the local file.
std::string ReadRefusal(const char* filePath) {
  constexpr std::size_t longest = 1024;
  std::error_code error;
  if (!std::filesystem::is_regular_file(TextOrEmpty(filePath), error)) return {};
  std::string text(longest, '\0');
  std::ifstream file(filePath, std::ios::binary);
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(file.gcount()));
  return text;
}

/// How a program answers that does not know an address at all.
bool IsMiss(int status) {
  return status == 404 || status == 405 || status == 410 || status == 501;
}

// Of a download that failed: what is known of it, without what the connection and the file tell.
void ReportDownload(const HttpConnection& connection, EndedExchange exchange, const char* filePath) {
  exchange.server = connection.uri();
  exchange.isOwnAddress = connection.reach() != Reach::Given;
  std::string text;
  if (exchange.error == du::http::ErrorCode::Done && exchange.status > 299) text = ReadRefusal(filePath);
  exchange.text = text;
  ReportFailure(DescribeFailure(exchange));
}

}  // namespace

HttpConnection::HttpConnection(const std::string& uri, AuthFunction auth, Reach reach)
    : uri_(uri),
      basePath_(WithTrailingSlash(du::GetURIPart(uri, du::URIPart::Path))),
      auth_(std::make_shared<const std::function<bool()>>(
          [uri, auth = std::move(auth)] { return auth(uri.c_str()); })),
      reach_(reach) {
  (void)Connect();
}

// The platform connection, or null when there is none to be had. It is made without the lock, since the
// platform may be the host's own; of two threads that make one the later finds the other's and drops its own.
du::http::Connection* HttpConnection::Connect() {
  if (reach_ == Reach::Nowhere) return nullptr;
  {
    const std::lock_guard lock(mutex_);
    if (connection_ != nullptr) return connection_.get();
  }
  auto made = du::http::ConnectURI(uri_.c_str(), nullptr, nullptr);
  const std::lock_guard lock(mutex_);
  if (connection_ == nullptr) connection_.swap(made);
  return connection_.get();
}

du::http::CommonAuth HttpConnection::MakeCommonAuth() const {
  return {clientMark, [auth = auth_] { return (*auth)(); }};
}

du::http::ErrorCode HttpConnection::SendRequest(const du::http::Request& request, int* httpStatus,
                                                du::http::FailureReport* found) {
  du::http::Connection* connection = Connect();
  if (connection == nullptr) return du::http::ErrorCode::NoConnection;
  du::http::CommonAuth auth = MakeCommonAuth();
  if (found != nullptr) auth.explain = [found](const du::http::FailureReport& report) { *found = report; };
  return du::http::DoRequestWithCommonAuth(*connection, auth, request, httpStatus);
}

du::http::ErrorCode HttpConnection::SendWithProgress(const du::http::Request& request, int* httpStatus,
                                                     du::http::ProgressFunction uploadProgress,
                                                     du::http::ProgressFunction downloadProgress,
                                                     du::http::FailureReport* found) {
  du::http::Request observed = request;
  std::unique_ptr<du::http::ProgressSource> body;
  std::unique_ptr<du::http::ProgressSink> sink;
  if (uploadProgress && request.body != nullptr) {
    body = std::make_unique<du::http::ProgressSource>(*request.body, std::move(uploadProgress));
    observed.body = body.get();
  }
  if (downloadProgress) {
    sink = std::make_unique<du::http::ProgressSink>(std::move(downloadProgress), request.sink);
    observed.sink = sink.get();
  }
  return SendRequest(observed, httpStatus, found);
}

std::uint16_t HttpConnection::DownloadToFile(const char* path, const char* headers, const char* filePath,
                                             du::http::ProgressFunction downloadProgress,
                                             const du::http::FailureReport& ifMissed) {
  du::http::DiskFileSink sink(filePath);
  return Download({path, headers, filePath, sink, ifMissed}, std::move(downloadProgress));
}

std::uint16_t HttpConnection::DownloadDocumentTo(const char* filePath, const char* path,
                                                 std::uint64_t longest,
                                                 const du::http::FailureReport& ifMissed) {
  du::http::DiskFileSink file(filePath);
  BoundedSink sink(file, longest, filePath);
  return Download({path, "", filePath, sink, ifMissed}, {});
}

std::optional<std::uint16_t> HttpConnection::DownloadContentTo(const char* filePath, const char* path,
                                                               std::uint64_t longest,
                                                               du::http::ProgressFunction downloadProgress) {
  du::http::DiskFileSink file(filePath);
  BoundedSink sink(file, longest, {});
  const std::uint16_t status = Download({path, "", filePath, sink, {}}, std::move(downloadProgress));
  if (sink.WasExceeded()) return std::nullopt;
  return status;
}

std::uint16_t HttpConnection::Download(const DownloadParts& parts, du::http::ProgressFunction progress) {
  const std::string uri = basePath_ + parts.path;
  const char* headerText = parts.headers != nullptr ? parts.headers : "";
  du::http::BufferFileSource headerSource(reinterpret_cast<const std::uint8_t*>(headerText),
                                          std::strlen(headerText));
  du::http::Request request;
  request.method = du::http::Method::Get;
  request.uri = uri.c_str();
  request.headers = &headerSource;
  request.sink = &parts.sink;
  int status = 0;
  du::http::FailureReport found;
  const auto error = SendWithProgress(request, &status, {}, std::move(progress), &found);
  const bool isDelivered = error == du::http::ErrorCode::Done;
  if (FailuresAreCollected() && (!isDelivered || status != 200)) {
    if (isDelivered && IsMiss(status)) found = parts.ifMissed;
    EndedExchange exchange;
    exchange.uri = uri;
    exchange.error = error;
    exchange.status = status;
    exchange.found = std::move(found);
    ReportDownload(*this, std::move(exchange), parts.filePath);
  }
  return static_cast<std::uint16_t>(error == du::http::ErrorCode::Done ? status : -1);
}

}  // namespace lxservices::cms_interface::vantry
