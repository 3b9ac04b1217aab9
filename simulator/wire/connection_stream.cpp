#include "simulator/wire/connection_stream.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

namespace vantry_sim {
namespace {

/// Room for a request line and a header block; a client that sends more without an end is not heard any
/// longer.
constexpr std::size_t mostHeadBytes = 256 * 1024;
/// How much is read ahead at once.
constexpr std::size_t block = 16 * 1024;
/// How long a client may pause in the middle of a body.
constexpr int readMilliseconds = 60'000;
/// What gives a client another second to take its answer. Far more than of a body, since the system takes some of
/// it in the client's place.
constexpr std::uint64_t answerBytesInASecond = 64 * 1024;
/// How long a closed connection is read for: until it has been silent for so long, and in all.
constexpr int lingerMilliseconds = 500;
constexpr auto longestLinger = std::chrono::seconds(2);

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

short EventsOf(Moved wait) {
  return wait == Moved::WaitWritable ? POLLOUT : POLLIN;
}

int StatusOf(std::string_view text) {
  int status = 0;
  if (text.starts_with("HTTP/1.1 ") && text.size() >= 12)
    std::from_chars(text.data() + 9, text.data() + 12, status);
  return status;
}

/// Whether this is the head of the answer itself, and not a "100 Continue" before it.
bool IsFinalHead(std::string_view text) {
  return StatusOf(text) >= 200;
}

/// The HTTP library would answer a part of a content with the status of a whole one. Without this line it
/// doesn't know of the wish, which the content's answer reads from the head instead.
void TakeRangeAway(std::string& buffer, std::size_t begin, std::size_t& headSize) {
  std::size_t line = begin;
  while (line < begin + headSize) {
    const auto end = buffer.find('\n', line);
    if (end == std::string::npos || end >= begin + headSize) return;
    const auto colon = buffer.find(':', line);
    if (colon < end && SameHeaderName(std::string_view(buffer).substr(line, colon - line), "Range")) {
      buffer.erase(line, end + 1 - line);
      headSize -= end + 1 - line;
    } else {
      line = end + 1;
    }
  }
}

}  // namespace

ConnectionStream::ConnectionStream(std::unique_ptr<Transport> transport, std::uint64_t number,
                                   std::chrono::milliseconds bodyTime, std::chrono::milliseconds answerTime)
    : transport_(std::move(transport)), number_(number), bodyTime_(bodyTime), answerTime_(answerTime) {
  // An answer goes out in two writes, head and body; without this the second waits for the client's
  // acknowledgement of the first.
  const int on = 1;
  setsockopt(socket(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  if (getpeername(socket(), reinterpret_cast<sockaddr*>(&address), &length) == 0)
    AddressOf(address, length, remoteAddress_, remotePort_);
  length = sizeof address;
  if (getsockname(socket(), reinterpret_cast<sockaddr*>(&address), &length) == 0)
    AddressOf(address, length, localAddress_, localPort_);
}

ConnectionStream::~ConnectionStream() = default;

ConnectionStream::Arrival ConnectionStream::Collect(Moved& wait) {
  wait = Moved::WaitReadable;
  for (;;) {
    const std::string_view pending = Pending();
    if (const HeadEnd end = FindHeadEnd(pending, lookedThrough_); end.known) {
      headLeft_ = end.size;
      return Arrival::Head;
    }
    lookedThrough_ = pending.size();
    if (pending.size() > mostHeadBytes) return Arrival::TooLong;
    const Moved moved = ReadAhead();
    if (moved == Moved::Done) continue;
    wait = moved;
    if (moved != Moved::End) return pending.empty() ? Arrival::Nothing : Arrival::Part;
    // A head that was cut off is judged by the HTTP library.
    headLeft_ = Pending().size();
    return headLeft_ == 0 || aborted_ ? Arrival::Closed : Arrival::Head;
  }
}

bool ConnectionStream::WaitForBytes(int milliseconds) const {
  return begin_ < buffer_.size() || transport_->HasBuffered() || WaitFor(POLLIN, milliseconds);
}

RequestHead ConnectionStream::BeginExchange() {
  RequestHead head = ReadRequestHead(Pending().substr(0, headLeft_));
  TakeRangeAway(buffer_, begin_, headLeft_);
  lookedThrough_ = 0;
  inHead_ = true;
  readAny_ = false;
  headSent_ = false;
  held_.clear();
  status_ = 0;
  bodyBytes_ = 0;
  taken_ = 0;
  waited_ = {};
  return head;
}

void ConnectionStream::EndOfHead() {
  inHead_ = false;
  bodyBegin_ = std::chrono::steady_clock::now();
  bodyRead_ = 0;
}

void ConnectionStream::ReleaseMemory() {
  if (begin_ < buffer_.size()) return;
  begin_ = 0;
  std::string().swap(buffer_);
}

void ConnectionStream::ShutdownReading() {
  shutdown(socket(), SHUT_RD);
}

void ConnectionStream::ShutdownBoth() {
  shutdown(socket(), SHUT_RDWR);
}

void ConnectionStream::WaitForClose() {
  // What the client still sends is read away, since its end shows only after it.
  if (!Flush()) return;
  char dropped[4096];
  while (!aborted_) {
    std::size_t count = 0;
    const Moved moved = transport_->Receive(dropped, sizeof dropped, count);
    if (moved == Moved::End) return;
    if (moved != Moved::Done) WaitFor(static_cast<short>(EventsOf(moved) | POLLRDHUP), -1);
  }
}

void ConnectionStream::LingerBeforeClose() {
  transport_->EndSending();
  char dropped[4096];
  const auto end = std::chrono::steady_clock::now() + longestLinger;
  while (std::chrono::steady_clock::now() < end && WaitFor(POLLIN, lingerMilliseconds)) {
    if (recv(socket(), dropped, sizeof dropped, MSG_DONTWAIT) <= 0) return;
  }
}

void ConnectionStream::SendWithoutWaiting(std::string_view bytes) {
  std::size_t count = 0;
  static_cast<void>(transport_->Send(bytes.data(), bytes.size(), count));
  Account(bytes.data(), count);
}

bool ConnectionStream::is_readable() const {
  return WaitForBytes(inHead_ ? readMilliseconds : MillisecondsForBody());
}

bool ConnectionStream::is_writable() const {
  // Whoever writes waits for the client, within the time that this one has.
  return !aborted_;
}

ssize_t ConnectionStream::read(char* data, std::size_t size) {
  if (aborted_) return -1;
  if (inHead_ && headLeft_ == 0) return 0;
  if (begin_ == buffer_.size() && !FillWaiting()) return aborted_ ? -1 : 0;
  std::size_t count = std::min(size, buffer_.size() - begin_);
  if (inHead_) {
    count = std::min(count, headLeft_);
    headLeft_ -= count;
  }
  std::memcpy(data, buffer_.data() + begin_, count);
  begin_ += count;
  if (!inHead_) bodyRead_ += count;
  readAny_ = true;
  return static_cast<ssize_t>(count);
}

ssize_t ConnectionStream::write(const char* data, std::size_t size) {
  if (aborted_) return -1;
  if (!headSent_ && held_.empty() && IsFinalHead({data, size})) {
    held_.assign(data, size);
    return static_cast<ssize_t>(size);
  }
  if (held_.empty()) return SendAll(data, size) ? static_cast<ssize_t>(size) : -1;
  const std::size_t head = held_.size();
  const std::size_t withIt = std::min(size, block);
  held_.append(data, withIt);
  const bool sent = SendHeld(head) && SendAll(data + withIt, size - withIt);
  return sent ? static_cast<ssize_t>(size) : -1;
}

bool ConnectionStream::Flush() {
  return held_.empty() || SendHeld(held_.size());
}

/// @param head how much of what is held is the head; the rest is of the body
bool ConnectionStream::SendHeld(std::size_t head) {
  const std::string bytes = std::exchange(held_, {});
  const std::size_t sent = SendSome(bytes.data(), bytes.size());
  Account(bytes.data(), std::min(sent, head));
  if (sent > head) Account(bytes.data() + head, sent - head);
  return sent == bytes.size();
}

bool ConnectionStream::SendAll(const char* data, std::size_t size) {
  const std::size_t sent = SendSome(data, size);
  Account(data, sent);
  return sent == size;
}

/// @return how much could be sent
std::size_t ConnectionStream::SendSome(const char* data, std::size_t size) {
  std::size_t sent = 0;
  while (sent < size && !aborted_) {
    std::size_t count = 0;
    const Moved moved = transport_->Send(data + sent, size - sent, count);
    if (moved == Moved::Done) {
      sent += count;
      if (waited_.count() > 0) taken_ += count;
    } else if (moved == Moved::End || !WaitForClient(EventsOf(moved))) {
      break;
    }
  }
  return sent;
}

void ConnectionStream::get_remote_ip_and_port(std::string& ip, int& port) const {
  ip = remoteAddress_;
  port = remotePort_;
}

void ConnectionStream::get_local_ip_and_port(std::string& ip, int& port) const {
  ip = localAddress_;
  port = localPort_;
}

/// Takes one block of what has arrived.
Moved ConnectionStream::ReadAhead() {
  if (begin_ > 0) {
    buffer_.erase(0, begin_);
    begin_ = 0;
  }
  const std::size_t size = buffer_.size();
  buffer_.resize(size + block);
  std::size_t count = 0;
  const Moved moved = transport_->Receive(buffer_.data() + size, block, count);
  buffer_.resize(size + (moved == Moved::Done ? count : 0));
  return moved;
}

/// How long a client may still take for the next bytes of a body. One that sends next to nothing would keep a
/// thread for days.
int ConnectionStream::MillisecondsForBody() const {
  const auto passed = std::chrono::steady_clock::now() - bodyBegin_;
  const auto granted = bodyTime_ + std::chrono::milliseconds(bodyRead_ * 1000 / 1024);
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(granted - passed).count();
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, readMilliseconds));
}

/// Waits for a block of a body. @return false at the end of the connection, and for a slow client
bool ConnectionStream::FillWaiting() {
  for (;;) {
    const Moved moved = ReadAhead();
    if (moved == Moved::Done) return true;
    if (moved == Moved::End || aborted_ || !WaitFor(EventsOf(moved), MillisecondsForBody())) return false;
  }
}

/// Waits until a client takes more of its answer. The waits are counted together: one that takes a few bytes now and
/// then would keep a thread for days. What the server itself takes its time for doesn't count.
bool ConnectionStream::WaitForClient(short events) {
  const auto granted = answerTime_ + std::chrono::milliseconds(taken_ * 1000 / answerBytesInASecond);
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(granted - waited_).count();
  if (left <= 0) return false;
  const auto begin = std::chrono::steady_clock::now();
  const bool ready =
      WaitFor(events, static_cast<int>(std::min<std::int64_t>(left, std::numeric_limits<int>::max())));
  waited_ += std::chrono::steady_clock::now() - begin;
  return ready;
}

bool ConnectionStream::WaitFor(short events, int milliseconds) const {
  pollfd entry{socket(), events, 0};
  for (;;) {
    const int count = poll(&entry, 1, milliseconds);
    if (count < 0 && errno == EINTR) continue;
    return count > 0;
  }
}

/// The HTTP library sends each header block in one write. "100 Continue" is one too, and the answer is still
/// to come after it.
void ConnectionStream::Account(const char* data, std::size_t size) {
  if (headSent_) {
    bodyBytes_ += size;
    return;
  }
  const int status = StatusOf({data, size});
  if (status == 0) return;
  status_ = status;
  headSent_ = status_ >= 200;
}

}  // namespace vantry_sim
