#pragma once

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "simulator/wire/request_head.h"
#include "simulator/wire/transport.h"

namespace vantry_sim {

/// One client's connection, for as long as it is open: what the HTTP library reads from and writes to. It
/// collects the head of a request without waiting, keeps bytes that were read ahead from one request to the
/// next, and counts what was really sent. For one thread at a time; Abort, ShutdownReading and ShutdownBoth
/// may come from any other.
class ConnectionStream final : public httplib::Stream {
 public:
  /// @param number that no other connection has
  /// @param bodyTime that a body has, beside a second for each KiB that came of it
  /// @param answerTime that a client keeps an answer waiting, beside a second for each 64 KiB of it
  ConnectionStream(std::unique_ptr<Transport> transport, std::uint64_t number,
                   std::chrono::milliseconds bodyTime, std::chrono::milliseconds answerTime);
  ConnectionStream(const ConnectionStream&) = delete;
  ConnectionStream& operator=(const ConnectionStream&) = delete;
  ~ConnectionStream() override;

  /// How far a connection is on its way to the next request.
  enum class Arrival {
    Nothing,  ///< no byte of it is there yet
    Part,     ///< its head has begun and has no end yet
    Head,     ///< its head is there
    TooLong,  ///< more of a head was sent than is read
    Closed,   ///< the client has closed, or the connection was shut down
  };

  /// Takes what has arrived of the next request's head, without waiting. @param[out] wait what to wait for
  /// before the next call, for Nothing and Part
  Arrival Collect(Moved& wait);

  /// Waits for bytes of the next request. @return false when none came within the time
  bool WaitForBytes(int milliseconds) const;

  /// Starts the counts of a new exchange. The head has been collected. @return the head
  RequestHead BeginExchange();
  /// The head of the request has been read: what comes now is its body, which may be long.
  void EndOfHead();
  /// The status that was sent in this exchange, 0 for none yet.
  [[nodiscard]] int status() const { return status_; }
  /// Bytes sent after the header block in this exchange.
  [[nodiscard]] std::uint64_t bodyBytes() const { return bodyBytes_; }
  /// Whether any byte of the exchange's request was read.
  [[nodiscard]] bool readAny() const { return readAny_; }
  /// Gives memory back while nothing is on its way.
  void ReleaseMemory();

  /// Sends what is held back: the head of an answer waits for the first bytes of its body, so that both are
  /// one write. To be called before anything else is waited for. @return false when it cannot be sent
  bool Flush();

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

  /// Sends what the socket takes at once, for a refusal that nobody may be held up by.
  void SendWithoutWaiting(std::string_view bytes);

  /// A number that no other connection of its gate has.
  [[nodiscard]] std::uint64_t number() const { return number_; }
  [[nodiscard]] const std::string& remoteAddress() const { return remoteAddress_; }
  [[nodiscard]] int remotePort() const { return remotePort_; }
  /// Of this machine's addresses the one that the client has connected to.
  [[nodiscard]] const std::string& localAddress() const { return localAddress_; }
  [[nodiscard]] Transport& transport() { return *transport_; }

  bool is_readable() const override;
  bool is_writable() const override;
  ssize_t read(char* data, std::size_t size) override;
  ssize_t write(const char* data, std::size_t size) override;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  socket_t socket() const override { return transport_->socket(); }

 private:
  Moved ReadAhead();
  bool FillWaiting();
  [[nodiscard]] int MillisecondsForBody() const;
  bool WaitFor(short events, int milliseconds) const;
  bool WaitForClient(short events);
  bool SendHeld(std::size_t head);
  bool SendAll(const char* data, std::size_t size);
  std::size_t SendSome(const char* data, std::size_t size);
  void Account(const char* data, std::size_t size);
  [[nodiscard]] std::string_view Pending() const { return std::string_view(buffer_).substr(begin_); }

  std::unique_ptr<Transport> transport_;
  std::uint64_t number_;
  std::chrono::milliseconds bodyTime_;
  std::chrono::milliseconds answerTime_;
  std::chrono::steady_clock::time_point bodyBegin_;
  std::uint64_t bodyRead_ = 0;  ///< bytes of the request's body
  std::string remoteAddress_;
  int remotePort_ = 0;
  std::string localAddress_;
  int localPort_ = 0;
  std::string buffer_;  ///< read ahead; what lies before `begin_` was handed on
  std::size_t begin_ = 0;
  std::size_t lookedThrough_ = 0;  ///< bytes of the next head that have no end in them
  std::size_t headLeft_ = 0;       ///< bytes of the head that were not handed on yet
  bool inHead_ = true;
  bool readAny_ = false;
  bool headSent_ = false;
  std::string held_;  ///< head of an answer that was not sent yet
  int status_ = 0;
  std::uint64_t bodyBytes_ = 0;
  std::chrono::steady_clock::duration waited_{};  ///< for the client to take the exchange's answer
  std::uint64_t taken_ = 0;  ///< bytes that went out after a first wait: before it the system takes them
  std::atomic<bool> aborted_ = false;
};

}  // namespace vantry_sim
