#include "raw_client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace vantry_sim {

RawClient::RawClient(int port, const std::string& from, const std::string& to, int ownPort)
    : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  sockaddr_in own = address;
  inet_pton(AF_INET, from.c_str(), &own.sin_addr);
  own.sin_port = htons(static_cast<std::uint16_t>(ownPort));
  const int on = 1;
  // Two connections may come from one port where they go to different addresses, and both allow it. A port
  // that the system picks is one of its own.
  if (ownPort != 0) setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (bind(socket_, reinterpret_cast<sockaddr*>(&own), sizeof own) != 0)
    throw std::runtime_error("cannot bind");
  setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  inet_pton(AF_INET, to.c_str(), &address.sin_addr);
  if (connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("cannot connect");
  }
  setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

RawClient::~RawClient() {
  close(socket_);
}

int RawClient::OwnPort() const {
  sockaddr_in own{};
  socklen_t length = sizeof own;
  getsockname(socket_, reinterpret_cast<sockaddr*>(&own), &length);
  return ntohs(own.sin_port);
}

bool RawClient::WasReset() const {
  pollfd entry{socket_, 0, 0};
  return poll(&entry, 1, 0) > 0 && (entry.revents & (POLLERR | POLLHUP)) != 0;
}

void RawClient::ReceiveLittle() {
  const int bytes = 4096;
  setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
}

void RawClient::Send(const std::string& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t count = send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) return;  // the server has closed; what it said is still to be read
    sent += static_cast<std::size_t>(count);
  }
}

RawAnswer RawClient::Get(const std::string& target, const std::string& headerLines) {
  Send("GET " + target + " HTTP/1.1\r\nHost: sim.example\r\n" + headerLines + "\r\n");
  return Read();
}

RawAnswer RawClient::Post(const std::string& target, const std::string& headerLines,
                          const std::string& body) {
  Send("POST " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\n" + headerLines +
       "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
  return Read();
}

RawAnswer RawClient::Read(int milliseconds, bool headOnly) {
  RawAnswer answer;
  const auto first = Line(milliseconds);
  if (!first || first->size() < 12) return answer;
  answer.status = std::atoi(first->c_str() + 9);
  for (;;) {
    const auto line = Line(milliseconds);
    if (!line) return answer;
    if (line->empty()) break;
    const auto colon = line->find(':');
    std::string name = line->substr(0, colon);
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    answer.headers[name] = line->substr(std::min(colon + 2, line->size()));
  }
  if (headOnly || answer.status == 204) {
    answer.complete = true;
  } else if (answer.headers.count("transfer-encoding") != 0) {
    for (;;) {
      const auto sizeLine = Line(milliseconds);
      if (!sizeLine) return answer;
      const auto size = std::strtoul(sizeLine->c_str(), nullptr, 16);
      std::string chunk;
      const bool whole = Take(size, milliseconds, chunk);
      answer.body += chunk;
      if (!whole || !Line(milliseconds)) return answer;
      if (size == 0) break;
    }
    answer.complete = true;
  } else {
    const auto size = std::strtoul(answer.headers["content-length"].c_str(), nullptr, 10);
    answer.complete = Take(size, milliseconds, answer.body);
  }
  return answer;
}

bool RawClient::ClosedByServer(int milliseconds) {
  pollfd entry{socket_, POLLIN, 0};
  if (poll(&entry, 1, milliseconds) <= 0) return false;
  char byte = 0;
  return recv(socket_, &byte, 1, MSG_PEEK) <= 0;
}

bool RawClient::Fill(int milliseconds) {
  pollfd entry{socket_, POLLIN, 0};
  if (poll(&entry, 1, milliseconds) <= 0) return false;
  char block[65536];
  const ssize_t count = recv(socket_, block, sizeof block, 0);
  if (count <= 0) return false;
  pending_.append(block, static_cast<std::size_t>(count));
  return true;
}

std::optional<std::string> RawClient::Line(int milliseconds) {
  for (;;) {
    const auto end = pending_.find("\r\n");
    if (end != std::string::npos) {
      std::string line = pending_.substr(0, end);
      pending_.erase(0, end + 2);
      return line;
    }
    if (!Fill(milliseconds)) return std::nullopt;
  }
}

bool RawClient::Take(std::size_t count, int milliseconds, std::string& out) {
  while (pending_.size() < count) {
    if (!Fill(milliseconds)) break;
  }
  const std::size_t there = std::min(count, pending_.size());
  out.append(pending_, 0, there);
  pending_.erase(0, there);
  return there == count;
}

}  // namespace vantry_sim
