#pragma once

#include <httplib.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace vantry_sim {

/// One client's connection, for as long as it stands: what the HTTP library reads from and writes to. It
/// keeps bytes that were read ahead from one request to the next, and counts what was really sent. Owned by
/// the connection's thread; Abort, ShutdownReading and ShutdownBoth may come from any other.
class ConnectionStream final : public httplib::Stream {
 public:
  /// Takes over the socket and closes it at the end.
  explicit ConnectionStream(int socket);
  ConnectionStream(const ConnectionStream&) = delete;
  ConnectionStream& operator=(const ConnectionStream&) = delete;
  ~ConnectionStream() override;

  /// Waits for the first byte of a request. @return false when the client has closed, or stays silent for
  /// `milliseconds`, or the connection was shut down
  bool WaitForRequest(int milliseconds);

  /// Starts the counts of a new exchange.
  void BeginExchange();
  /// The head of the request has been read: what comes now is its body, which may be long.
  void EndOfHead() { in_head_ = false; }
  /// The status that was sent in this exchange, 0 for none yet.
  [[nodiscard]] int status() const { return status_; }
  /// Bytes sent behind the header block in this exchange.
  [[nodiscard]] std::uint64_t body_bytes() const { return body_bytes_; }
  /// Whether the client sent more of a head than is read.
  [[nodiscard]] bool head_too_long() const { return head_bytes_ > kMostHeadBytes; }
  /// Whether any byte of the exchange's request was read.
  [[nodiscard]] bool read_any() const { return read_any_; }

  /// From here on nothing is sent, and every read and write fails.
  void Abort() { aborted_ = true; }
  [[nodiscard]] bool aborted() const { return aborted_; }
  void ShutdownReading();
  void ShutdownBoth();

  /// Waits until the client closes, or the connection is shut down.
  void WaitForClose();

  /// Tells the client that no more comes and gives it a moment to read what did, so that closing with unread
  /// bytes of a refused request doesn't take the answer away from it.
  void LingerBeforeClose();

  bool is_readable() const override;
  bool is_writable() const override;
  ssize_t read(char* data, std::size_t size) override;
  ssize_t write(const char* data, std::size_t size) override;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  socket_t socket() const override { return socket_; }

 private:
  /// Room for a request line and a header block; a client that sends more without an end is not heard any
  /// longer.
  static constexpr std::size_t kMostHeadBytes = 256 * 1024;

  bool Fill();
  bool WaitFor(short events, int milliseconds) const;
  void Account(const char* data, std::size_t size);

  int socket_;
  std::array<char, 16384> buffer_{};
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  std::size_t head_bytes_ = 0;
  bool in_head_ = true;
  bool read_any_ = false;
  bool head_sent_ = false;
  int status_ = 0;
  std::uint64_t body_bytes_ = 0;
  std::atomic<bool> aborted_ = false;
};

}  // namespace vantry_sim
