#include "tests/e2e/platform/scripted_server.h"

#include <netinet/tcp.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>

#include "tests/e2e/platform/loopback.h"

namespace vtdirect_test {
namespace {

std::vector<std::string> Lines(const std::string& head) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  while (begin < head.size()) {
    const std::size_t end = std::min(head.find("\r\n", begin), head.size());
    lines.push_back(head.substr(begin, end - begin));
    begin = end + 2;
  }
  return lines;
}

}  // namespace

std::string WireRequest::Header(const std::string& name) const {
  for (const std::string& line : Lines(head)) {
    if (line.size() > name.size() && line[name.size()] == ':' &&
        strncasecmp(line.c_str(), name.c_str(), name.size()) == 0) {
      const std::size_t value = line.find_first_not_of(' ', name.size() + 1);
      return value == std::string::npos ? "" : line.substr(value);
    }
  }
  return "(none)";
}

std::vector<std::string> WireRequest::HeaderNames() const {
  std::vector<std::string> names;
  const std::vector<std::string> lines = Lines(head);
  for (std::size_t i = 1; i < lines.size(); ++i) names.push_back(lines[i].substr(0, lines[i].find(':')));
  return names;
}

bool Peer::ReadMore() {
  while (!closed() && !stopping_) {
    pollfd waiting{socket_, POLLIN, 0};
    if (poll(&waiting, 1, 20) <= 0) continue;
    std::array<char, 65536> piece;
    const ssize_t count = recv(socket_, piece.data(), piece.size(), 0);
    if (count <= 0) return false;
    pending_.append(piece.data(), static_cast<std::size_t>(count));
    return true;
  }
  return false;
}

bool Peer::ReadHead(WireRequest* request) {
  std::size_t end;
  while ((end = pending_.find("\r\n\r\n")) == std::string::npos) {
    if (!ReadMore()) return false;
  }
  request->head = pending_.substr(0, end + 2);
  pending_.erase(0, end + 4);
  request->connection = number_;
  unrecorded_ = request;
  request->method = request->head.substr(0, request->head.find(' '));
  const std::size_t target = request->method.size() + 1;
  request->target = request->head.substr(target, request->head.find(' ', target) - target);
  bodyRead_ =
      request->Header("Content-Length") == "(none)" && request->Header("Transfer-Encoding") == "(none)";
  return true;
}

void Peer::ReadBody(WireRequest* request) {
  bodyRead_ = true;
  const std::string length = request->Header("Content-Length");
  if (length != "(none)") {
    const std::size_t size = std::stoul(length);
    while (pending_.size() < size) {
      if (!ReadMore()) return;
    }
    request->body = pending_.substr(0, size);
    pending_.erase(0, size);
    return;
  }
  if (request->Header("Transfer-Encoding") != "chunked") return;
  while (true) {
    std::size_t line;
    while ((line = pending_.find("\r\n")) == std::string::npos) {
      if (!ReadMore()) return;
    }
    const std::size_t size = std::stoul(pending_.substr(0, line), nullptr, 16);
    while (pending_.size() < line + 2 + size + 2) {
      if (!ReadMore()) return;
    }
    request->body += pending_.substr(line + 2, size);
    pending_.erase(0, line + 2 + size + 2);
    if (size == 0) return;
  }
}

void Peer::ReadBytes(std::size_t count) {
  std::size_t seen = pending_.size();
  pending_.clear();
  while (seen < count && ReadMore()) {
    seen += pending_.size();
    pending_.clear();
  }
}

void Peer::RecordOnce() {
  if (unrecorded_ != nullptr) record_(*unrecorded_);
  unrecorded_ = nullptr;
}

void Peer::Send(const std::string& bytes) {
  // Before the first byte: a client that has its answer finds its request in the record.
  RecordOnce();
  std::size_t sent = 0;
  while (!closed() && sent < bytes.size()) {
    const ssize_t count = send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    clientIsGone_ = count <= 0;
    if (clientIsGone_) return;
    sent += static_cast<std::size_t>(count);
  }
}

void Peer::Answer(int status, const std::string& body, const std::string& extraLines) {
  Send("HTTP/1.1 " + std::to_string(status) + " Told\r\nContent-Length: " + std::to_string(body.size()) +
       "\r\n" + extraLines + "\r\n" + body);
}

void Peer::Close() {
  RecordOnce();
  if (closed()) return;
  close(socket_);
  socket_ = -1;
}

void Peer::Reset() {
  if (closed()) return;
  const linger now{1, 0};
  setsockopt(socket_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
  Close();
}

void Peer::StaySilent() {
  RecordOnce();
  while (ReadMore()) pending_.clear();
  Close();
}

bool ComesTrue(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

ScriptedServer::ScriptedServer(Script script) : script_(std::move(script)) {
  const LoopbackListener listening = ListenOnLoopback(64);
  listener_ = listening.socket;
  port_ = listening.port;
  acceptor_ = std::thread([this] { Accept(); });
}

ScriptedServer::~ScriptedServer() {
  stopping_ = true;
  acceptor_.join();
  for (std::thread& thread : threads_) thread.join();
  close(listener_);
}

std::vector<WireRequest> ScriptedServer::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void ScriptedServer::Accept() {
  while (!stopping_) {
    pollfd waiting{listener_, POLLIN, 0};
    if (poll(&waiting, 1, 20) <= 0) continue;
    const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) continue;
    const int one = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    const int number = ++connections_;
    ++open_;
    threads_.emplace_back([this, socket, number] { Serve(socket, number); });
  }
}

void ScriptedServer::Serve(int socket, int number) {
  Peer peer(socket, number, stopping_, [this](const WireRequest& request) {
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
  });
  WireRequest request;
  while (!peer.closed() && peer.ReadHead(&request)) {
    script_(peer, request);
    peer.RecordOnce();
    // After a body that nobody read, the next request could not be told from it.
    if (!peer.bodyRead_) peer.Close();
    request = {};
  }
  peer.Close();
  --open_;
}

}  // namespace vtdirect_test
