#include "tests/e2e/platform/raw_server.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "tests/e2e/platform/loopback.h"

namespace vtdirect_test {
RawServer::RawServer(std::string bytes, When when) : bytes_(std::move(bytes)), when_(when) {
  const LoopbackListener listening = ListenOnLoopback(16);
  listener_ = listening.socket;
  port_ = listening.port;
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
  const LoopbackListener listening = ListenOnLoopback(room);
  listener_ = listening.socket;
  port_ = listening.port;
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
