#include "connection/rest_stream.h"

#include <utility>

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
  du::http::DiskFileSource body(request.bodyFile);
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
  errorCode_ = request.connection->SendWithProgress(exchange, &status_, std::move(uploadProgress),
                                                    std::move(downloadProgress));
  if (errorCode_ != du::http::ErrorCode::Done) status_ = -1;
  OpenBody(success);
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
  return ParseJson([&response] { return response.NextPiece(); }, document);
}

}  // namespace lxservices::cms_interface::vantry
