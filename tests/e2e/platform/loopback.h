#pragma once

#include <netinet/in.h>

namespace vtdirect_test {

/// A port of 127.0.0.1; 0 stands for any free one.
[[nodiscard]] sockaddr_in Loopback(int port);

/// A socket that listens on 127.0.0.1.
struct LoopbackListener {
  int socket = -1;  ///< the caller's to close
  int port = 0;     ///< a free one that the system has picked
};

/// Throws std::runtime_error when there is no port.
[[nodiscard]] LoopbackListener ListenOnLoopback(int backlog);

}  // namespace vtdirect_test
