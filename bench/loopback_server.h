#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

/// A server on 127.0.0.1 that does as little as can be, so that the clients are measured and not the server.
namespace vtdirect_bench {

/// Answers one request, given the request line; false closes the connection.
using Answerer = std::function<bool(int socket, std::string_view target)>;
/// Serves one connection to its end; the server closes it.
using Conversation = std::function<void(int socket)>;

class LoopbackServer {
 public:
  LoopbackServer() = default;
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  /// Takes a free port. False leaves the reason in errno.
  [[nodiscard]] bool Listen();
  /// "http://127.0.0.1:PORT/".
  [[nodiscard]] std::string Url() const;
  /// Connections taken since the start.
  [[nodiscard]] std::uint64_t connections() const { return connections_; }
  /// Prints where it listens and serves for ever, each connection on a thread of its own. For requests
  /// without a body.
  [[noreturn]] void Run(const char* program, const Answerer& answer);
  /// The same for a server that reads what its clients send by itself.
  [[noreturn]] void RunConversations(const char* program, const Conversation& converse);

 private:
  int listener_ = -1;
  int port_ = 0;
  std::atomic<std::uint64_t> connections_{0};
};

/// Sends all bytes; false when the client is gone.
[[nodiscard]] bool SendAll(int socket, std::string_view bytes);
/// Sends `count` bytes of a file from `offset` on; false when the client is gone or the file is shorter.
[[nodiscard]] bool SendFile(int socket, int file, std::uint64_t offset, std::uint64_t count);
/// The head of an answer with 200 or 404.
[[nodiscard]] std::string Head(int status, std::uint64_t length, const char* type);
/// A whole answer.
[[nodiscard]] bool SendText(int socket, int status, const char* type, std::string_view body);
/// A file in memory with these bytes; -1 on failure.
[[nodiscard]] int MakeMemoryFile(std::string_view bytes);

}  // namespace vtdirect_bench
