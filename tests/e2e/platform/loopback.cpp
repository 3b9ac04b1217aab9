#include "tests/e2e/platform/loopback.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <stdexcept>

namespace vtdirect_test {

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  return address;
}

LoopbackListener ListenOnLoopback(int backlog) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = Loopback(0);
  socklen_t length = sizeof address;
  if (listener < 0 || bind(listener, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
      listen(listener, backlog) != 0 ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    throw std::runtime_error("no port on 127.0.0.1");
  }
  return {listener, ntohs(address.sin_port)};
}

}  // namespace vtdirect_test
