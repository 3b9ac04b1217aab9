#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vtdirect_test {

/// The head of a request as it came off the wire.
struct WireRequest {
  std::string head;  ///< request line and header lines, each with its CR LF, without the closing empty line
  std::string method;
  std::string target;
  std::string body;    ///< filled by Peer::ReadBody
  int connection = 0;  ///< the connection that it came over: 1 for the first that was accepted

  /// The value of the first line with this name (any case), or "(none)".
  [[nodiscard]] std::string Header(const std::string& name) const;
  /// Names of all lines in their order.
  [[nodiscard]] std::vector<std::string> HeaderNames() const;
};

/// One accepted connection, as a script plays on it.
class Peer {
 public:
  using Recorder = std::function<void(const WireRequest&)>;
  Peer(int socket, int number, const std::atomic<bool>& stopping, Recorder record)
      : socket_(socket), number_(number), stopping_(stopping), record_(std::move(record)) {}

  /// Reads the body that the head announces, by length or in chunks.
  void ReadBody(WireRequest* request);
  /// Reads and drops up to `count` bytes of what the client sends.
  void ReadBytes(std::size_t count);
  void Send(const std::string& bytes);
  /// A complete answer with a Content-Length; the connection stays.
  void Answer(int status, const std::string& body, const std::string& extraLines = "");
  /// Closes orderly.
  void Close();
  /// Closes with a reset, as a server does that leaves unread data behind.
  void Reset();
  /// Says nothing until the client goes or the test is over.
  void StaySilent();

  [[nodiscard]] bool closed() const { return socket_ < 0; }
  /// True once the client took no more of what was sent.
  [[nodiscard]] bool clientIsGone() const { return clientIsGone_; }

 private:
  friend class ScriptedServer;
  [[nodiscard]] bool ReadMore();
  [[nodiscard]] bool ReadHead(WireRequest* request);
  void RecordOnce();
  int socket_;
  const int number_;
  const std::atomic<bool>& stopping_;
  Recorder record_;
  const WireRequest* unrecorded_ = nullptr;
  std::string pending_;
  bool bodyRead_ = true;
  bool clientIsGone_ = false;
};

/// Waits until something that other threads do comes true, for ten seconds at most; false when it doesn't.
[[nodiscard]] bool ComesTrue(const std::function<bool()>& condition);

/// A server on 127.0.0.1 that does what its script says, right or wrong.
class ScriptedServer {
 public:
  /// Called for each request, on a thread of the connection.
  using Script = std::function<void(Peer&, WireRequest&)>;

  explicit ScriptedServer(Script script);
  ~ScriptedServer();
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  [[nodiscard]] int port() const { return port_; }
  [[nodiscard]] std::string Url() const { return "http://127.0.0.1:" + std::to_string(port_); }
  /// TCP connections that were accepted.
  [[nodiscard]] int connections() const { return connections_; }
  /// Of these, the ones that are not closed yet.
  [[nodiscard]] int openConnections() const { return open_; }
  /// Copies of all requests so far, each as it stood when its script first answered or ended.
  [[nodiscard]] std::vector<WireRequest> requests() const;

 private:
  void Accept();
  void Serve(int socket, int number);
  Script script_;
  int port_ = 0;
  int listener_ = -1;
  std::atomic<bool> stopping_{false};
  std::atomic<int> connections_{0};
  std::atomic<int> open_{0};
  mutable std::mutex mutex_;
  std::vector<WireRequest> requests_;
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

}  // namespace vtdirect_test
