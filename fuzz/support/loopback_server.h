#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vtdirect_fuzz {

/// A server on 127.0.0.1 that sends raw bytes: to each connection, once the head and the announced body of a
/// request came, the next of its answers, whatever was asked, and then nothing more. Has a thread of its own.
class LoopbackServer {
 public:
  /// Ends the program when there is no port to be had.
  LoopbackServer();
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  /// "http://127.0.0.1:PORT".
  [[nodiscard]] std::string Url() const { return "http://127.0.0.1:" + std::to_string(port_); }

  /// What the next connections get. One more than there are gets nothing.
  void Answer(std::vector<std::string> answers);

 private:
  void Run();
  [[nodiscard]] std::string Next();

  int listener_ = -1;
  std::uint16_t port_ = 0;
  std::mutex mutex_;  ///< guards the two below
  std::vector<std::string> answers_;
  std::size_t next_ = 0;
  std::thread thread_;
};

}  // namespace vtdirect_fuzz
