#include "fuzz/support/loopback_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "fuzz/support/input.h"

namespace vtdirect_fuzz {
namespace {

/// Nobody is waited for longer: a client that wants to go on in another way closes.
constexpr timeval patience{1, 0};

/// The bytes of a request with its body, as far as its head tells.
std::size_t RequestSize(const std::string& received) {
  const std::size_t head = received.find("\r\n\r\n");
  if (head == std::string::npos) return std::string::npos;
  const std::size_t length = received.find("Content-Length: ");
  const std::size_t body = length < head ? std::strtoull(received.c_str() + length + 16, nullptr, 10) : 0;
  return head + 4 + body;
}

void ReceiveRequest(int connection) {
  std::string received;
  char buffer[4096];
  while (received.size() < RequestSize(received)) {
    const ssize_t count = ::recv(connection, buffer, sizeof buffer, 0);
    if (count <= 0) return;
    received.append(buffer, static_cast<std::size_t>(count));
  }
}

void SendAnswer(int connection, std::string_view answer) {
  while (!answer.empty()) {
    const ssize_t count = ::send(connection, answer.data(), answer.size(), MSG_NOSIGNAL);
    if (count <= 0) return;
    answer.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace

LoopbackServer::LoopbackServer() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  Require(::bind(listener_, any, length) == 0 && ::listen(listener_, 64) == 0);
  Require(::getsockname(listener_, any, &length) == 0);
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { Run(); });
}

LoopbackServer::~LoopbackServer() {
  ::shutdown(listener_, SHUT_RDWR);
  thread_.join();
  ::close(listener_);
}

void LoopbackServer::Answer(std::vector<std::string> answers) {
  const std::lock_guard lock(mutex_);
  answers_ = std::move(answers);
  next_ = 0;
}

std::string LoopbackServer::Next() {
  const std::lock_guard lock(mutex_);
  return next_ < answers_.size() ? answers_[next_++] : std::string();
}

void LoopbackServer::Run() {
  for (;;) {
    const int connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) return;
    (void)::setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    (void)::setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    ReceiveRequest(connection);
    SendAnswer(connection, Next());
    ::close(connection);
  }
}

}  // namespace vtdirect_fuzz
