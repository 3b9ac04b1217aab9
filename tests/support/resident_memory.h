#pragma once

#include <malloc.h>

#include <cstddef>
#include <fstream>
#include <string>

namespace vtdirect_test {

/// Whether the numbers below mean anything: what watches memory takes much of it itself.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool memoryIsMeasured = false;
#else
inline constexpr bool memoryIsMeasured = true;
#endif

/// A value of /proc/self/status in bytes: "VmRSS" for the resident memory, "VmHWM" for the most there was.
[[nodiscard]] inline std::size_t MemoryOfProcess(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word != name + ":") continue;
    std::size_t kibibytes = 0;
    status >> kibibytes;
    return kibibytes * 1024;
  }
  return 0;
}

/// How much more memory was resident at one time than at the beginning.
class ResidentGrowth {
 public:
  ResidentGrowth() {
    malloc_trim(0);  // what is free already would be taken again without a trace
    std::ofstream("/proc/self/clear_refs") << "5";  // the most there was begins again
    before_ = MemoryOfProcess("VmRSS");
  }
  /// In bytes; 0 where memory is not measured.
  [[nodiscard]] std::size_t Most() const {
    const std::size_t most = MemoryOfProcess("VmHWM");
    return !memoryIsMeasured || most < before_ ? 0 : most - before_;
  }

 private:
  std::size_t before_ = 0;
};

inline constexpr std::size_t mebibyte = 1024 * 1024;

}  // namespace vtdirect_test
