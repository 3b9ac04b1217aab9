#pragma once

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>

namespace vtdirect_test {

/// Takes a name among all processes of this machine for as long as this one lives.
[[nodiscard]] inline bool TakeName(const char* name) {
  // Such an address, which begins with a zero byte, is no file, and goes with its socket.
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::snprintf(address.sun_path + 1, sizeof address.sun_path - 1, "%s", name);
  const int holder = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bind(holder, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return true;
  close(holder);
  return false;
}

/// Whether a server could listen on this port of 127.0.0.1.
[[nodiscard]] inline bool IsFreePort(int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool isFree = bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  close(descriptor);
  return isFree;
}

/// A TCP port of 127.0.0.1 on which nobody listens, and on which nobody will but this process and what it
/// starts: it is of those that the system gives to nobody who asks for any, and no other test takes it. A
/// port that was free a moment ago would do no good, since other tests and their connections take and leave
/// those all the while.
[[nodiscard]] inline int UnusedPort() {
  constexpr int first = 10'000;
  constexpr int count = 20'000;
  static int used = 0;
  for (;;) {
    const int port = first + (static_cast<int>(getpid()) * 64 + used++) % count;
    char name[64];
    std::snprintf(name, sizeof name, "vtdirect-test-port-%d", port);
    if (TakeName(name) && IsFreePort(port)) return port;
  }
}

}  // namespace vtdirect_test
