#pragma once

#include <cstddef>
#include <memory>

namespace vantry_sim {

/// How a try to move bytes ended. None of them waits.
enum class Moved {
  Done,          ///< bytes were moved
  WaitReadable,  ///< try again when the socket has something to read
  WaitWritable,  ///< try again when the socket takes something
  End,           ///< the other side has closed, or the connection is broken
};

/// What carries the bytes of one connection: the bare socket, or TLS over it. For one thread at a time.
class Transport {
 public:
  virtual ~Transport() = default;

  /// Makes the connection ready for bytes, step by step. Done when it is.
  virtual Moved Prepare() = 0;

  /// @param[out] count bytes that were moved, for Done
  virtual Moved Receive(char* data, std::size_t size, std::size_t& count) = 0;
  virtual Moved Send(const char* data, std::size_t size, std::size_t& count) = 0;

  /// Whether bytes lie ready that the socket no longer shows.
  [[nodiscard]] virtual bool HasBuffered() const = 0;

  /// Tells the other side that nothing more comes. Doesn't wait.
  virtual void EndSending() = 0;

  /// The socket, which lives as long as the transport.
  [[nodiscard]] virtual int socket() const = 0;
};

/// Bytes as they are. @param socket taken over, and closed at the end
std::unique_ptr<Transport> MakePlainTransport(int socket);

}  // namespace vantry_sim
