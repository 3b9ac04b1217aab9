#pragma once

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace vtdirect_test {

/// What answers on a port and may be no server of HTTP at all: says its bytes to whoever connects, after it
/// was sent anything or at once, and closes.
class RawServer {
 public:
  enum class When { Asked, Connected };
  explicit RawServer(std::string bytes, When when = When::Asked);
  ~RawServer();
  RawServer(const RawServer&) = delete;
  RawServer& operator=(const RawServer&) = delete;

  [[nodiscard]] int port() const { return port_; }
  /// Host and port.
  [[nodiscard]] std::string Authority() const { return "127.0.0.1:" + std::to_string(port_); }

 private:
  void Accept();
  void Serve(int socket) const;

  const std::string bytes_;
  const When when_;
  int port_ = 0;
  int listener_ = -1;
  std::atomic<bool> stopping_{false};
  std::thread acceptor_;
};

/// A port of 127.0.0.1 that takes no connection: the system drops whoever comes. Or, with room for them, one
/// that takes some and never reads or says a byte.
class FullPort {
 public:
  explicit FullPort(int room = 0);
  ~FullPort();
  FullPort(const FullPort&) = delete;
  FullPort& operator=(const FullPort&) = delete;

  [[nodiscard]] int port() const { return port_; }

 private:
  int port_ = 0;
  int listener_ = -1;
  std::vector<int> waiting_;
};

}  // namespace vtdirect_test
