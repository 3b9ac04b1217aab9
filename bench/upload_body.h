#pragma once

#include <cstdint>
#include <string>

namespace vtdirect_bench {

/// The body of a request, as it comes in on a socket.
class IncomingBody {
 public:
  /// @param early  what of the body came in with the head; not more than `length` bytes
  IncomingBody(int socket, std::uint64_t length, std::string early);

  [[nodiscard]] std::uint64_t remaining() const { return remaining_; }
  /// Reads up to `capacity` bytes; 0 at the end of the body and when the client is gone.
  [[nodiscard]] std::size_t Read(char* buffer, std::size_t capacity);
  /// Takes the rest without a copy out of the kernel; false when the client is gone.
  [[nodiscard]] bool Swallow();

 private:
  int socket_;
  std::uint64_t remaining_;
  std::string early_;
};

/// Reads a whole multipart body and tells whether its file part, which must be the last one, holds the very
/// bytes of the file at `path`.
[[nodiscard]] bool HoldsFile(IncomingBody& body, const std::string& path);

}  // namespace vtdirect_bench
