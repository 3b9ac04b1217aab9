// Asks a server for one address again and again, over so many connections that are kept, each of which asks
// again as soon as it has its answer: bench-sim PORT PATH CONNECTIONS REQUESTS. Prints "SECONDS
// BYTES-OF-A-BODY".
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "bench-sim: %s\n", what);
  std::exit(1);
}

long NumberOf(std::string_view text) {
  long number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

// One kept connection, and what is left of the answer that is on its way.
struct Connection {
  int socket = -1;
  std::string head;
  bool inBody = false;
  long left = 0;
};

int Connect(int port) {
  const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(made, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) Fail("cannot connect");
  const int on = 1;
  setsockopt(made, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return made;
}

void Ask(const Connection& connection, const std::string& request) {
  if (send(connection.socket, request.data(), request.size(), MSG_NOSIGNAL) !=
      static_cast<ssize_t>(request.size()))
    Fail("cannot send");
}

// Reads the head once it is whole. Gives false as long as it isn't.
bool BeginBody(Connection& connection, long& length) {
  const auto end = connection.head.find("\r\n\r\n");
  if (end == std::string::npos) return false;
  if (!std::string_view(connection.head).starts_with("HTTP/1.1 200")) Fail("an answer was no 200");
  const auto field = connection.head.find("Content-Length: ");
  if (field == std::string::npos || field > end) Fail("an answer told no length");
  length = NumberOf(std::string_view(connection.head).substr(field + 16));
  connection.left = length - static_cast<long>(connection.head.size() - end - 4);
  connection.head.clear();
  connection.inBody = true;
  return true;
}

// Takes what has arrived. Gives true when it was the end of an answer.
bool Take(Connection& connection, std::vector<char>& block, long& length) {
  const ssize_t count = recv(connection.socket, block.data(), block.size(), 0);
  if (count <= 0) Fail("the server has closed");
  if (connection.inBody) {
    connection.left -= count;
  } else {
    connection.head.append(block.data(), static_cast<std::size_t>(count));
    if (!BeginBody(connection, length)) return false;
  }
  if (connection.left > 0) return false;
  if (connection.left < 0) Fail("an answer is longer than it said");
  connection.inBody = false;
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 5) Fail("usage: bench-sim PORT PATH CONNECTIONS REQUESTS");
  const int port = std::atoi(arguments[1]);
  const std::string request =
      std::string("GET ") + arguments[2] + " HTTP/1.1\r\nHost: 127.0.0.1\r\nAccept: application/json\r\n\r\n";
  std::vector<Connection> connections(static_cast<std::size_t>(std::atoi(arguments[3])));
  const long wanted = std::atol(arguments[4]);
  const int poll = epoll_create1(EPOLL_CLOEXEC);
  for (std::size_t i = 0; i < connections.size(); ++i) {
    connections[i].socket = Connect(port);
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.u64 = i;
    epoll_ctl(poll, EPOLL_CTL_ADD, connections[i].socket, &event);
  }

  const auto began = std::chrono::steady_clock::now();
  long asked = 0, answered = 0, length = 0;
  for (Connection& connection : connections) {
    if (asked++ < wanted) Ask(connection, request);
  }
  std::vector<char> block(256 * 1024);
  std::array<epoll_event, 64> events{};
  while (answered < wanted) {
    const int ready = epoll_wait(poll, events.data(), static_cast<int>(events.size()), 30'000);
    if (ready <= 0) Fail("no answer for half a minute");
    for (int i = 0; i < ready; ++i) {
      Connection& connection = connections[events[static_cast<std::size_t>(i)].data.u64];
      if (!Take(connection, block, length)) continue;
      ++answered;
      if (asked++ < wanted) Ask(connection, request);
    }
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
  std::printf("%.6f %ld\n", took.count(), length);
  for (const Connection& connection : connections) close(connection.socket);
  close(poll);
  return 0;
}
