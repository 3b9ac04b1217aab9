#include "bench/loopback_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <thread>

namespace vtdirect_bench {
namespace {

constexpr std::size_t largestHead = 64 * 1024;

void Serve(int socket, const Answerer& answer) {
  std::string input;
  char buffer[8192];
  while (input.size() < largestHead) {
    const std::size_t end = input.find("\r\n\r\n");
    if (end != std::string::npos) {
      if (!answer(socket, std::string_view(input).substr(0, input.find("\r\n")))) break;
      input.erase(0, end + 4);
      continue;
    }
    const ssize_t count = recv(socket, buffer, sizeof buffer, 0);
    if (count <= 0) break;
    input.append(buffer, static_cast<std::size_t>(count));
  }
}

}  // namespace

LoopbackServer::~LoopbackServer() {
  if (listener_ >= 0) close(listener_);
}

bool LoopbackServer::Listen() {
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (listener_ < 0 || bind(listener_, generic, length) != 0 || listen(listener_, 64) != 0) return false;
  if (getsockname(listener_, generic, &length) != 0) return false;
  port_ = ntohs(address.sin_port);
  return true;
}

std::string LoopbackServer::Url() const {
  return "http://127.0.0.1:" + std::to_string(port_) + "/";
}

void LoopbackServer::Run(const char* program, const Answerer& answer) {
  RunConversations(program, [&answer](int socket) { Serve(socket, answer); });
}

void LoopbackServer::RunConversations(const char* program, const Conversation& converse) {
  std::printf("%s listening on %s\n", program, Url().c_str());
  std::fflush(stdout);
  for (;;) {
    const int socket = accept(listener_, nullptr, nullptr);
    if (socket < 0) continue;
    ++connections_;
    std::thread([socket, &converse] {
      const int on = 1;
      setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
      converse(socket);
      close(socket);
    }).detach();
  }
}

bool SendAll(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

bool SendFile(int socket, int file, std::uint64_t offset, std::uint64_t count) {
  auto position = static_cast<off_t>(offset);
  while (count > 0) {
    const ssize_t sent = sendfile(socket, file, &position, count);
    if (sent <= 0) return false;
    count -= static_cast<std::uint64_t>(sent);
  }
  return true;
}

std::string Head(int status, std::uint64_t length, const char* type) {
  return "HTTP/1.1 " + std::to_string(status) + (status == 200 ? " OK" : " Not Found") +
         "\r\nContent-Type: " + type + "\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n";
}

bool SendText(int socket, int status, const char* type, std::string_view body) {
  return SendAll(socket, Head(status, body.size(), type).append(body));
}

int MakeMemoryFile(std::string_view bytes) {
  const int file = memfd_create("answer", 0);
  while (file >= 0 && !bytes.empty()) {
    const ssize_t count = write(file, bytes.data(), bytes.size());
    if (count <= 0) {
      close(file);
      return -1;
    }
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return file;
}

}  // namespace vtdirect_bench
