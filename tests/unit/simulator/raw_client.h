#pragma once

#include <map>
#include <optional>
#include <string>

namespace vantry_sim {

/// What a client saw of one answer.
struct RawAnswer {
  int status = 0;                              ///< 0: the connection ended before a status line
  std::map<std::string, std::string> headers;  ///< names in lower case
  std::string body;
  bool complete = false;  ///< the announced length, or the last chunk, was reached
};

/// How long a silence is waited for before an answer counts as missing: far longer than any answer takes, on a
/// busy machine and under a sanitizer too, because it is there for a server that hangs.
inline constexpr int hungMilliseconds = 60'000;

/// A client of bare sockets, so that answers are judged by the bytes on the wire. One connection.
class RawClient {
 public:
  /// @param from the address of this machine that it comes from, all of 127.0.0.0/8
  /// @param to the same, that it connects to. @param ownPort that it comes from; 0: any
  explicit RawClient(int port, const std::string& from = "127.0.0.1", const std::string& to = "127.0.0.1",
                     int ownPort = 0);
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;
  ~RawClient();

  /// The port that it comes from.
  int OwnPort() const;

  /// Lets the system hold no more than a few kilobytes of what was not read yet.
  void ReceiveLittle();

  void Send(const std::string& bytes);
  /// Sends a GET with a Host header, and the header lines given (each with CR LF), and reads the answer.
  RawAnswer Get(const std::string& target, const std::string& headerLines = {});
  /// Sends a POST with a Host header, the header lines given (each with CR LF) and a body, and reads the
  /// answer.
  RawAnswer Post(const std::string& target, const std::string& headerLines, const std::string& body);
  /// Reads one answer. A silence of `milliseconds` ends it as incomplete.
  RawAnswer Read(int milliseconds = hungMilliseconds, bool headOnly = false);
  /// Whether what was sent came to a socket that the server has closed for both ways.
  bool WasReset() const;
  /// Whether the server has closed, waiting for it up to `milliseconds`.
  bool ClosedByServer(int milliseconds = hungMilliseconds);

 private:
  bool Fill(int milliseconds);
  std::optional<std::string> Line(int milliseconds);
  bool Take(std::size_t count, int milliseconds, std::string& out);

  int socket_;
  std::string pending_;
};

}  // namespace vantry_sim
