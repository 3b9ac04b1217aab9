#include "connection/rest_stream.h"

#include <utility>

#include "base/failure_log.h"
#include "base/failure_step.h"
#include "connection/exchange_watch.h"
#include "connection/json_parsing.h"
#include "platform/files.h"

namespace lxservices::cms_interface::vantry {

RestStream::RestStream(const RestRequest& request, du::http::ProgressFunction progress) {
  Exchange(request, std::move(progress));
}

RestStream::~RestStream() {
  if (file_ != nullptr) std::fclose(file_);
}

void RestStream::Exchange(const RestRequest& request, du::http::ProgressFunction progress) {
  const std::string uri = request.connection->basePath() + (request.path != nullptr ? request.path : "");
  du::http::BufferFileSource headers(reinterpret_cast<const std::uint8_t*>(request.headers.data()),
                                     request.headers.size());
  du::http::DiskFileSource bodyFile(request.bodyFile);
  WatchedSource body(bodyFile);
  du::http::FailoverFileSink success(memoryLimit);
  du::http::StringFileSink failure(errorText_, errorLimit);
  du::http::HttpSuccessFileSink sink(&success, &failure);

  du::http::Request exchange;
  exchange.method = request.method;
  exchange.uri = uri.c_str();
  exchange.headers = &headers;
  if (request.bodyFile != nullptr && *request.bodyFile != '\0') exchange.body = &body;
  exchange.sink = &sink;

  du::http::ProgressFunction uploadProgress;
  du::http::ProgressFunction downloadProgress;
  (exchange.body != nullptr ? uploadProgress : downloadProgress) = std::move(progress);
  EndedExchange ended;
  errorCode_ = request.connection->SendWithProgress(exchange, &status_, std::move(uploadProgress),
                                                    std::move(downloadProgress), &ended.found);
  if (FailuresAreCollected()) {
    ended.uri = uri;
    ended.wasSentWhole = exchange.body == nullptr || body.wasReadWhole();
    Keep(request, ended);
  }
  if (errorCode_ != du::http::ErrorCode::Done) status_ = -1;
  OpenBody(success);
}

// Reports a failed exchange, and keeps what there is to say of a success whose body turns out to be broken.
void RestStream::Keep(const RestRequest& request, const EndedExchange& exchange) {
  EndedExchange ended = exchange;
  ended.method = request.method;
  ended.server = request.connection->uri();
  ended.isOwnAddress = request.connection->reach() != Reach::Given;
  ended.headers = request.headers;
  ended.error = errorCode_;
  ended.status = status_;
  ended.text = errorText_;
  Failure failure = DescribeFailure(ended);
  if (errorCode_ == du::http::ErrorCode::Done && succeeded()) {
    ifBroken_ = std::move(failure);
  } else {
    ReportFailure(std::move(failure));
  }
}

void RestStream::ReportBroken() const {
  if (ifBroken_) {
    ReportFailure(*ifBroken_);
  } else if (succeeded()) {
    ReportReason({FailureKind::AnswerBroken});  // kept from before somebody collected
  }
}

void RestStream::OpenBody(du::http::FailoverFileSink& sink) {
  // The file is taken over even after a failure, since nobody else would remove it.
  const std::string path = sink.GetFilePath();
  if (!path.empty()) tempFile_ = std::make_unique<ScopedTempPath>(path);
  if (!succeeded()) return;
  if (path.empty()) {
    body_ = sink.AdoptBuffer();
  } else {
    file_ = du::FileSystem::lxfopen(path.c_str(), "rb");
  }
  Rewind();
}

void RestStream::Rewind() {
  if (file_ != nullptr) std::rewind(file_);
  unread_ = {reinterpret_cast<const char*>(body_.data()), body_.size()};
}

// A file that cannot be read to its end reads as one that ends there, and what is left is no whole value.
std::string_view RestStream::NextPiece() {
  if (file_ == nullptr) return std::exchange(unread_, {});
  return {readBuffer_.data(), std::fread(readBuffer_.data(), 1, readBuffer_.size(), file_)};
}

bool ParseJsonResponse(RestStream& response, rapidjson::Document& document) {
  if (ParseJson([&response] { return response.NextPiece(); }, document)) return true;
  response.ReportBroken();
  return false;
}

bool ParseArrayResponse(RestStream& response, rapidjson::Document& document) {
  if (!ParseJsonResponse(response, document)) return false;
  if (!document.IsArray()) response.ReportBroken();
  return document.IsArray();
}

}  // namespace lxservices::cms_interface::vantry
