#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>

#include "simulator/store/database.h"
#include "simulator/wire/answer_memory.h"
#include "simulator/wire/messages.h"

namespace vantry_sim {

/// Answers to reads, for as long as nothing was written since they were made. A list of ten thousand rows
/// takes the database many times as long as the wire. Not for several threads at once.
class AnswerCache {
 public:
  /// The answer to the same question of the same user. @param version of the database as it is now; answers
  /// of any other are forgotten
  std::optional<Response> Find(const Request& request, const DatabaseVersion& version);

  /// Keeps an answer, unless it is no 200, is not to be kept, or is too large. A long body is shared from
  /// then on; where there is no room for it, the answer becomes a 503.
  void Keep(const Request& request, Response& response);

  /// Forgets all.
  void Clear();

 private:
  bool Share(const Request& request, Response& response);

  AnswerMemory memory_;
  DatabaseVersion version_;
  std::unordered_map<std::string, Response> answers_;
  std::size_t size_ = 0;  ///< bytes of bodies and keys
};

}  // namespace vantry_sim
