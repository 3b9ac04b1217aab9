#include "platform_default/answer_decoder.h"

#include <algorithm>
#include <array>

#include "platform_default/characters.h"

namespace vtdirect::platform {
namespace {

using du::http::ErrorCode;

/// The most that curl hands over at once is far below what zlib can count.
constexpr std::size_t largestPiece = 64 * 1024;

bool IsNamed(std::string_view value, std::string_view name) {
  const std::size_t first = value.find_first_not_of(" \t");
  if (first == std::string_view::npos) return false;
  value = value.substr(first, value.find_last_not_of(" \t\r\n") + 1 - first);
  return std::equal(value.begin(), value.end(), name.begin(), name.end(),
                    [](char left, char right) { return ToAsciiLower(left) == right; });
}

constexpr int largestWindow = 15;
constexpr int zlibOrGzip = 32;

/// What is called "deflate" is a zlib stream with two bytes in front, but some servers send the bare data.
bool BeginsAsZlib(unsigned first, unsigned second) {
  return (first & 0x0F) == Z_DEFLATED && (first * 256 + second) % 31 == 0;
}

}  // namespace

std::unique_ptr<AnswerDecoder> AnswerDecoder::For(std::string_view encoding) {
  const bool isGzip = IsNamed(encoding, "gzip") || IsNamed(encoding, "x-gzip");
  if (!isGzip && !IsNamed(encoding, "deflate")) return nullptr;
  return std::unique_ptr<AnswerDecoder>(new AnswerDecoder(!isGzip));
}

AnswerDecoder::~AnswerDecoder() {
  if (started_) inflateEnd(&stream_);
}

bool AnswerDecoder::Start() {
  const bool isBare = mayBeBare_ && !BeginsAsZlib(static_cast<unsigned char>(start_[0]),
                                                  static_cast<unsigned char>(start_[1]));
  started_ = inflateInit2(&stream_, isBare ? -largestWindow : largestWindow + zlibOrGzip) == Z_OK;
  return started_;
}

ErrorCode AnswerDecoder::Decode(const std::uint8_t* data, std::size_t count, du::http::FileSink& sink) {
  if (started_) return Inflate(data, count, sink);
  start_.append(reinterpret_cast<const char*>(data), count);
  if (start_.size() < 2) return ErrorCode::Done;
  if (!Start()) return ErrorCode::ProtocolFailure;
  const std::string first = std::move(start_);
  return Inflate(reinterpret_cast<const std::uint8_t*>(first.data()), first.size(), sink);
}

ErrorCode AnswerDecoder::Inflate(const std::uint8_t* data, std::size_t count, du::http::FileSink& sink) {
  std::array<std::uint8_t, largestPiece> piece;
  stream_.next_in = const_cast<std::uint8_t*>(data);
  stream_.avail_in = static_cast<unsigned>(count);
  do {
    // A gzip answer may be several packed pieces, one after the other.
    if (atEnd_ && (stream_.avail_in == 0 || inflateReset(&stream_) != Z_OK)) break;
    stream_.next_out = piece.data();
    stream_.avail_out = static_cast<unsigned>(piece.size());
    const int result = inflate(&stream_, Z_NO_FLUSH);
    if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) return ErrorCode::ProtocolFailure;
    atEnd_ = result == Z_STREAM_END;
    const std::size_t unpacked = piece.size() - stream_.avail_out;
    const ErrorCode written = unpacked == 0 ? ErrorCode::Done : sink.Write(piece.data(), unpacked);
    if (written != ErrorCode::Done) return written;
  } while (stream_.avail_in > 0 || stream_.avail_out == 0);
  return ErrorCode::Done;
}

}  // namespace vtdirect::platform
