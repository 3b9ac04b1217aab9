#include "simulator/wire/listening_socket.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace vantry_sim {
namespace {

/// Connections that wait until they are taken, of which a burst may bring many.
constexpr int backlog = 4096;

int PortOf(int socket) {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  if (getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) != 0) return 0;
  if (address.ss_family == AF_INET6) return ntohs(reinterpret_cast<sockaddr_in6*>(&address)->sin6_port);
  return ntohs(reinterpret_cast<sockaddr_in*>(&address)->sin_port);
}

int TryToListen(const addrinfo& candidate) {
  const int socket =
      ::socket(candidate.ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, candidate.ai_protocol);
  if (socket < 0) return -1;
  // A port that was in use a moment ago can be taken again, but never one that another server has.
  const int on = 1;
  setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (bind(socket, candidate.ai_addr, candidate.ai_addrlen) == 0 && listen(socket, backlog) == 0)
    return socket;
  close(socket);
  return -1;
}

}  // namespace

ListeningSocket ListenOn(const std::string& address, int port) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
  addrinfo* found = nullptr;
  if (getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) return {};
  int socket = -1;
  for (const addrinfo* candidate = found; candidate != nullptr && socket < 0; candidate = candidate->ai_next)
    socket = TryToListen(*candidate);
  freeaddrinfo(found);
  return socket < 0 ? ListeningSocket{} : ListeningSocket{socket, PortOf(socket)};
}

}  // namespace vantry_sim
