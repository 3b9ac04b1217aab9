#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vantry_sim {

/// How much memory long answers may take together while clients read them, so that many who ask for long
/// lists and read slowly cannot take all that the machine has. One client gets three quarters at most. An
/// answer that several clients share counts once, for the client that asked first. Not for several threads at once,
/// but answers may go on any thread.
class AnswerMemory {
 public:
  explicit AnswerMemory(std::uint64_t bytes = 256ULL * 1024 * 1024) : most_(bytes) {}

  /// Takes a body over, to be shared. The first one is taken whatever its length.
  /// @param client its address. @return null, with the body left alone, when there is no room
  std::shared_ptr<const std::string> Hold(std::string& body, std::string_view client);

 private:
  struct Held {
    std::weak_ptr<const std::string> body;
    std::string client;
    std::uint64_t size = 0;
  };
  std::uint64_t most_;
  std::vector<Held> held_;
};

}  // namespace vantry_sim
