#pragma once

#include <cstddef>

namespace lxservices::cms_interface::vantry {

/// RapidJSON takes memory without a check, and a process with a memory limit would crash. This asks from time to
/// time whether there is enough.
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
