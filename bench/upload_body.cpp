#include "bench/upload_body.h"

#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

namespace vtdirect_bench {
namespace {

constexpr std::size_t pieceBytes = 1024 * 1024;
constexpr std::size_t largestPartHeads = 64 * 1024;

/// Reads up to the first byte of the file part. Gives what was read after it as well.
bool ReadToFile(IncomingBody& body, std::string* begun) {
  std::string text;
  char buffer[4096];
  while (text.size() < largestPartHeads) {
    const std::size_t name = text.find("; filename=\"");
    const std::size_t end = name == std::string::npos ? name : text.find("\r\n\r\n", name);
    if (end != std::string::npos) {
      *begun = text.substr(end + 4);
      return true;
    }
    const std::size_t count = body.Read(buffer, sizeof buffer);
    if (count == 0) return false;
    text.append(buffer, count);
  }
  return false;
}

/// The end of a multipart body; some clients end their last line and some do not.
bool IsClosing(std::string_view text) {
  if (text.ends_with("\r\n")) text.remove_suffix(2);
  return text.starts_with("\r\n--") && text.ends_with("--") && text.find("\r\n", 2) == std::string_view::npos;
}

}  // namespace

IncomingBody::IncomingBody(int socket, std::uint64_t length, std::string early)
    : socket_(socket), remaining_(length), early_(std::move(early)) {}

std::size_t IncomingBody::Read(char* buffer, std::size_t capacity) {
  capacity = static_cast<std::size_t>(std::min<std::uint64_t>(capacity, remaining_));
  if (capacity == 0) return 0;
  std::size_t count = std::min(capacity, early_.size());
  if (count > 0) {
    std::memcpy(buffer, early_.data(), count);
    early_.erase(0, count);
  } else {
    const ssize_t received = recv(socket_, buffer, capacity, 0);
    if (received <= 0) return 0;
    count = static_cast<std::size_t>(received);
  }
  remaining_ -= count;
  return count;
}

bool IncomingBody::Swallow() {
  remaining_ -= early_.size();
  early_.clear();
  while (remaining_ > 0) {
    const ssize_t count =
        recv(socket_, nullptr, static_cast<std::size_t>(std::min<std::uint64_t>(remaining_, pieceBytes)),
             MSG_TRUNC);
    if (count <= 0) return false;
    remaining_ -= static_cast<std::uint64_t>(count);
  }
  return true;
}

bool HoldsFile(IncomingBody& body, const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string sent;
  if (!file || !ReadToFile(body, &sent)) return false;
  std::vector<char> expected(pieceBytes);
  std::vector<char> received(pieceBytes);
  while (file.read(expected.data(), pieceBytes) || file.gcount() > 0) {
    const auto wanted = static_cast<std::size_t>(file.gcount());
    while (sent.size() < wanted) {
      const std::size_t count = body.Read(received.data(), wanted - sent.size());
      if (count == 0) return false;
      sent.append(received.data(), count);
    }
    if (std::memcmp(sent.data(), expected.data(), wanted) != 0) return false;
    sent.erase(0, wanted);
  }
  while (sent.size() < largestPartHeads) {
    const std::size_t count = body.Read(received.data(), pieceBytes);
    if (count == 0) return body.remaining() == 0 && IsClosing(sent);
    sent.append(received.data(), count);
  }
  return false;
}

}  // namespace vtdirect_bench
