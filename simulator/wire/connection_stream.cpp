#include "simulator/wire/connection_stream.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>

namespace vantry_sim {
namespace {

/// Room for a request line and a header block; a client that sends more without an end is not heard any
/// longer.
constexpr std::size_t kMostHeadBytes = 256 * 1024;
/// How long a client may pause in the middle of a request, and while it takes an answer.
constexpr int kReadMilliseconds = 60'000;
constexpr int kWriteMilliseconds = 600'000;
constexpr int kLingerMilliseconds = 500;

void AddressOf(const sockaddr_storage& address, socklen_t length, std::string& ip, int& port) {
  char host[NI_MAXHOST];
  char service[NI_MAXSERV];
  const auto* generic = reinterpret_cast<const sockaddr*>(&address);
  if (getnameinfo(generic, length, host, sizeof host, service, sizeof service,
                  NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
    return;
  }
  ip = host;
  const std::string_view digits = service;
  std::from_chars(digits.data(), digits.data() + digits.size(), port);
}

}  // namespace

ConnectionStream::ConnectionStream(int socket) : socket_(socket) {
  // An answer goes out in two writes, head and body; without this the second waits for the client's
  // acknowledgement of the first.
  const int on = 1;
  setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

ConnectionStream::~ConnectionStream() {
  close(socket_);
}

bool ConnectionStream::WaitForRequest(int milliseconds) {
  if (begin_ < end_) return true;
  return WaitFor(POLLIN, milliseconds) && Fill();
}

void ConnectionStream::BeginExchange() {
  head_bytes_ = 0;
  in_head_ = true;
  read_any_ = false;
  head_sent_ = false;
  status_ = 0;
  body_bytes_ = 0;
}

void ConnectionStream::ShutdownReading() {
  shutdown(socket_, SHUT_RD);
}

void ConnectionStream::ShutdownBoth() {
  shutdown(socket_, SHUT_RDWR);
}

void ConnectionStream::WaitForClose() {
  // What the client still sends is read away, since its end shows only behind it.
  while (!aborted_ && WaitFor(POLLIN | POLLRDHUP, -1)) {
    char dropped[4096];
    const ssize_t count = recv(socket_, dropped, sizeof dropped, 0);
    if (count == 0 || (count < 0 && errno != EINTR)) return;
  }
}

void ConnectionStream::LingerBeforeClose() {
  shutdown(socket_, SHUT_WR);
  char dropped[4096];
  while (WaitFor(POLLIN, kLingerMilliseconds)) {
    if (recv(socket_, dropped, sizeof dropped, 0) <= 0) return;
  }
}

bool ConnectionStream::is_readable() const {
  return begin_ < end_ || WaitFor(POLLIN, kReadMilliseconds);
}

bool ConnectionStream::is_writable() const {
  return !aborted_ && WaitFor(POLLOUT, kWriteMilliseconds);
}

ssize_t ConnectionStream::read(char* data, std::size_t size) {
  if (aborted_) return -1;
  if (begin_ == end_ && (!WaitFor(POLLIN, kReadMilliseconds) || !Fill())) return end_ == 0 ? 0 : -1;
  const std::size_t count = std::min(size, end_ - begin_);
  if (in_head_) {
    head_bytes_ += count;
    if (head_bytes_ > kMostHeadBytes) return -1;
  }
  std::memcpy(data, buffer_.data() + begin_, count);
  begin_ += count;
  read_any_ = true;
  return static_cast<ssize_t>(count);
}

ssize_t ConnectionStream::write(const char* data, std::size_t size) {
  std::size_t sent = 0;
  while (sent < size) {
    if (aborted_) return -1;
    const ssize_t count = send(socket_, data + sent, size - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count > 0) {
      sent += static_cast<std::size_t>(count);
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      if (!WaitFor(POLLOUT, kWriteMilliseconds)) return -1;
    } else if (errno != EINTR) {
      Account(data, sent);
      return -1;
    }
  }
  Account(data, size);
  return static_cast<ssize_t>(size);
}

void ConnectionStream::get_remote_ip_and_port(std::string& ip, int& port) const {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  if (getpeername(socket_, reinterpret_cast<sockaddr*>(&address), &length) == 0)
    AddressOf(address, length, ip, port);
}

void ConnectionStream::get_local_ip_and_port(std::string& ip, int& port) const {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  if (getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &length) == 0)
    AddressOf(address, length, ip, port);
}

/// Reads ahead; false at the end of the connection, with an empty buffer.
bool ConnectionStream::Fill() {
  for (;;) {
    const ssize_t count = recv(socket_, buffer_.data(), buffer_.size(), 0);
    if (count < 0 && errno == EINTR) continue;
    begin_ = 0;
    end_ = count > 0 ? static_cast<std::size_t>(count) : 0;
    return count > 0;
  }
}

bool ConnectionStream::WaitFor(short events, int milliseconds) const {
  pollfd entry{socket_, events, 0};
  for (;;) {
    const int count = poll(&entry, 1, milliseconds);
    if (count < 0 && errno == EINTR) continue;
    return count > 0;
  }
}

/// The HTTP library sends each header block in one write. "100 Continue" is one too, and the answer is still
/// to come behind it.
void ConnectionStream::Account(const char* data, std::size_t size) {
  if (head_sent_) {
    body_bytes_ += size;
    return;
  }
  const std::string_view text(data, size);
  if (!text.starts_with("HTTP/1.1 ") || size < 12) return;
  std::from_chars(data + 9, data + 12, status_);
  head_sent_ = status_ >= 200;
}

}  // namespace vantry_sim
