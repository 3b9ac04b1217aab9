#include "tests/e2e/platform/raw_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace vtdirect_test {
namespace {

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  return address;
}

/// Listens on a free port and tells which.
int Listen(int backlog, int* port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = Loopback(0);
  socklen_t length = sizeof address;
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), length) != 0 || listen(listener, backlog) != 0 ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    throw std::runtime_error("no port on 127.0.0.1");
  }
  *port = ntohs(address.sin_port);
  return listener;
}

}  // namespace

RawServer::RawServer(std::string bytes, When when) : bytes_(std::move(bytes)), when_(when) {
  listener_ = Listen(16, &port_);
  acceptor_ = std::thread([this] { Accept(); });
}

RawServer::~RawServer() {
  stopping_ = true;
  acceptor_.join();
  close(listener_);
}

void RawServer::Accept() {
  while (!stopping_) {
    pollfd waiting{listener_, POLLIN, 0};
    if (poll(&waiting, 1, 20) <= 0) continue;
    const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) continue;
    Serve(socket);
    close(socket);
  }
}

void RawServer::Serve(int socket) const {
  std::array<char, 64 * 1024> asked;
  if (when_ == When::Asked) static_cast<void>(recv(socket, asked.data(), asked.size(), 0));
  static_cast<void>(send(socket, bytes_.data(), bytes_.size(), MSG_NOSIGNAL));
  // What is closed with unread bytes is reset, and the other side may lose what was said.
  shutdown(socket, SHUT_WR);
  pollfd waiting{socket, POLLIN, 0};
  while (!stopping_ && poll(&waiting, 1, 500) > 0 && recv(socket, asked.data(), asked.size(), 0) > 0) {
  }
}

FullPort::FullPort(int room) : waiting_(room == 0 ? 8 : 0) {
  listener_ = Listen(room, &port_);
  // One of them fills the queue; the others wait as everybody does who comes after them.
  for (int& one : waiting_) {
    one = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const sockaddr_in address = Loopback(port_);
    static_cast<void>(connect(one, reinterpret_cast<const sockaddr*>(&address), sizeof address));
  }
}

FullPort::~FullPort() {
  for (const int one : waiting_) close(one);
  close(listener_);
}

}  // namespace vtdirect_test
