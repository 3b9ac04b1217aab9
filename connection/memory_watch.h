#pragma once

#include <cstddef>

namespace lxservices::cms_interface::vantry {

/// Sees to it that what grows with an answer is refused as long as there still is memory. Most of what takes
/// memory here takes it without a look, and a process with a limit on its memory would crash. So from time to
/// time this asks for more than may be needed until it asks again.
class MemoryWatch {
 public:
  /// Counts bytes that are about to be taken.
  /// @return false when the memory for them, and for some more, can't be had
  [[nodiscard]] bool HasRoomFor(std::size_t bytes) {
    taken_ += bytes;
    return taken_ < nextLook_ || Look();
  }

 private:
  [[nodiscard]] bool Look();

  std::size_t taken_ = 0;  ///< at most, by what was counted
  std::size_t nextLook_ = std::size_t{4} << 20;
};

}  // namespace lxservices::cms_interface::vantry
