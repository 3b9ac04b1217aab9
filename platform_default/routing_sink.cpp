#include "platform_default/routing_sink.h"

#include <unistd.h>

#include <utility>
#include <vector>

namespace vtdirect::platform {

using du::http::ErrorCode;

namespace {

constexpr std::size_t heldInMemory = 64 * 1024;

/// Removes a file at the end of a scope.
struct FileRemover {
  explicit FileRemover(const std::string& file) : path(file) {}
  ~FileRemover() { ::unlink(path.c_str()); }
  FileRemover(const FileRemover&) = delete;
  FileRemover& operator=(const FileRemover&) = delete;
  const std::string& path;
};

}  // namespace

RoutingSink::RoutingSink(du::http::FileSink* target, HoldBack holdBack)
    : target_(target), holdBack_(std::move(holdBack)) {}

RoutingSink::~RoutingSink() = default;

ErrorCode RoutingSink::Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) {
  if (holdBack_(httpStatus)) {
    httpStatus_ = httpStatus;
    expectedLength_ = expectedLength;
    return held_.emplace(heldInMemory).Begin(httpStatus, expectedLength);
  }
  return target_ == nullptr ? ErrorCode::Done : target_->Begin(httpStatus, expectedLength);
}

ErrorCode RoutingSink::Write(const std::uint8_t* data, std::size_t count) {
  if (held_) return held_->Write(data, count);
  return target_ == nullptr ? ErrorCode::Done : target_->Write(data, count);
}

ErrorCode RoutingSink::Finish() {
  if (held_) return held_->Finish();
  return target_ == nullptr ? ErrorCode::Done : target_->Finish();
}

ErrorCode RoutingSink::Deliver() {
  if (!held_ || target_ == nullptr) return ErrorCode::Done;
  const ErrorCode begun = target_->Begin(httpStatus_, expectedLength_);
  if (begun != ErrorCode::Done) return begun;
  if (const std::string path = held_->GetFilePath(); !path.empty()) {
    const FileRemover remover(path);
    du::http::DiskFileSource source(path.c_str());
    return DeliverFrom(source);
  }
  const std::vector<std::uint8_t> body = held_->AdoptBuffer();
  du::http::BufferFileSource source(body.data(), body.size());
  return DeliverFrom(source);
}

ErrorCode RoutingSink::DeliverFrom(du::http::FileSource& source) {
  std::vector<std::uint8_t> piece(16 * 1024);
  while (true) {
    std::size_t count = 0;
    const ErrorCode read = source.Read(piece.data(), piece.size(), &count);
    if (read != ErrorCode::Done) return read;
    if (count == 0) return target_->Finish();
    const ErrorCode written = target_->Write(piece.data(), count);
    if (written != ErrorCode::Done) return written;
  }
}

}  // namespace vtdirect::platform
