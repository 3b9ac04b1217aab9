#include "platform_default/kept_socket.h"

#include <sys/socket.h>

#include <array>

namespace vtdirect::platform {

bool HasUnaskedBytes(curl_socket_t socket) {
  if (socket == CURL_SOCKET_BAD) return false;
  char byte = 0;
  return ::recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
}

void CutConnection(curl_socket_t socket) {
  if (socket == CURL_SOCKET_BAD) return;
  ::shutdown(socket, SHUT_RDWR);
  // curl looks for the end of a connection behind what waits on it.
  std::array<char, 4096> unasked;
  while (::recv(socket, unasked.data(), unasked.size(), MSG_DONTWAIT) > 0) {
  }
}

}  // namespace vtdirect::platform
