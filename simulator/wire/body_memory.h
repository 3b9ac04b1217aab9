#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace vantry_sim {

/// How much memory the bodies of requests may take together, so that many clients that send long ones cannot
/// take all that the machine has. One client gets three quarters at most. Any thread.
class BodyMemory {
 public:
  explicit BodyMemory(std::uint64_t bytes = 256ULL * 1024 * 1024) : most_(bytes) {}

  /// What one body has taken. Given back at its end.
  class Share {
   public:
    /// @param memory outlives the share; null: there is no bound
    Share(BodyMemory* memory, std::string client) : memory_(memory), client_(std::move(client)) {}
    Share(const Share&) = delete;
    Share& operator=(const Share&) = delete;
    ~Share();

    /// Takes so many bytes more. @return false when there are not as many left
    [[nodiscard]] bool Grow(std::uint64_t bytes);

   private:
    BodyMemory* memory_;
    std::string client_;
    std::uint64_t taken_ = 0;
  };

 private:
  std::mutex mutex_;
  std::uint64_t most_;
  std::uint64_t taken_ = 0;
  std::map<std::string, std::uint64_t> ofClients_;
};

}  // namespace vantry_sim
