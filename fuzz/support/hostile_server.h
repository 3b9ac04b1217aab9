#pragma once

#include <cstddef>
#include <mutex>
#include <string_view>
#include <vector>

#include "tests/support/scripted_transport.h"
#include "tests/wire/requests/sample_server.h"

namespace vtdirect_fuzz {

/// A whole server that answers as a good one does, but for what its bytes say: each of them tells of one
/// answer, in the order of the requests. Answers any number of threads.
///
///   "="         the right answer
///   "-" AT      the right answer, cut at AT, a byte that counts in 256ths of it
///   "~" AT TEXT the right answer with a text put over it there
///   else        the answer itself, see AnswersOf
///
/// Behind the last of them all answers are right, up to a number that no call needs: so every list ends.
class HostileServer {
 public:
  HostileServer(vtdirect_test::Generation generation, std::string_view bytes);
  HostileServer(const HostileServer&) = delete;
  HostileServer& operator=(const HostileServer&) = delete;

  /// From now on no connection is to be had.
  void GoAway();

 private:
  static constexpr std::size_t mostAnswers = 500;

  [[nodiscard]] vtdirect_test::Answer AnswerTo(const vtdirect_test::SentRequest& request);

  vtdirect_test::SampleServer good_;
  const std::vector<std::string_view> changes_;
  std::mutex mutex_;  ///< guards the next one
  std::size_t next_ = 0;
  vtdirect_test::ScriptedTransport transport_;
};

}  // namespace vtdirect_fuzz
