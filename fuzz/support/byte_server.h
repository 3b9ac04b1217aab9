#pragma once

#include <cstddef>
#include <mutex>
#include <string_view>
#include <vector>

#include "connection/server_context.h"
#include "tests/support/scripted_transport.h"

namespace vtdirect_fuzz {

/// What parts one answer from the next one in the bytes of a target.
inline constexpr char answerEnd = '\x1e';

/// The answers that bytes hold. The first byte of each tells its kind, and is left out of the body:
///
///   '0' 200     '1' 201     '2' 204     '3' 302     '4' 404     '5' 500
///   '6' 401, after a demand for authentication      '7' broken off behind the body
///   '8' no connection       '9' a limit of time ran out
///   '*' 200 with the rest repeated to half a megabyte and more, which no longer stays in memory
///
/// An answer that begins with any other byte is a 200 and has that byte too, so that plain JSON is an answer.
[[nodiscard]] std::vector<vtdirect_test::Answer> AnswersOf(std::string_view bytes);

/// A server in the place of the HTTP transport. It gives the answers of its bytes in order, whoever asks for
/// what, on any number of threads; when they are spent, no connection is to be had, so that every list ends.
class ByteServer {
 public:
  explicit ByteServer(std::string_view bytes);
  ByteServer(const ByteServer&) = delete;
  ByteServer& operator=(const ByteServer&) = delete;

 private:
  [[nodiscard]] vtdirect_test::Answer Next();

  std::mutex mutex_;  ///< guards the two below
  std::vector<vtdirect_test::Answer> answers_;
  std::size_t next_ = 0;
  vtdirect_test::ScriptedTransport transport_;
};

/// An operation on a new connection to the server that stands.
/// @param services  a server of the newest generation has all of them, the oldest has none
[[nodiscard]] lxservices::cms_interface::vantry::ServerContext NewOperation(bool services);

}  // namespace vtdirect_fuzz
