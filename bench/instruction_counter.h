#pragma once

#include <linux/perf_event.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#include <string>

namespace vtdirect_bench {

/// Counts the instructions of this process outside of the kernel, with those of threads and processes that it
/// starts later, by the processor's own counter. Many virtual machines have none.
class InstructionCounter {
 public:
  InstructionCounter() {
    perf_event_attr wanted{};
    wanted.type = PERF_TYPE_HARDWARE;
    wanted.size = sizeof wanted;
    wanted.config = PERF_COUNT_HW_INSTRUCTIONS;
    wanted.exclude_kernel = 1;
    wanted.exclude_hv = 1;
    wanted.inherit = 1;
    constexpr int thisProcess = 0;
    constexpr int anyProcessor = -1;
    constexpr int noGroup = -1;
    descriptor_ = static_cast<int>(
        syscall(SYS_perf_event_open, &wanted, thisProcess, anyProcessor, noGroup, PERF_FLAG_FD_CLOEXEC));
  }
  ~InstructionCounter() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  InstructionCounter(const InstructionCounter&) = delete;
  InstructionCounter& operator=(const InstructionCounter&) = delete;

  /// Those up to now; "-" when there is no counter.
  [[nodiscard]] std::string Count() const {
    std::uint64_t count = 0;
    if (descriptor_ < 0 || read(descriptor_, &count, sizeof count) != sizeof count) return "-";
    return std::to_string(count);
  }

 private:
  int descriptor_ = -1;
};

}  // namespace vtdirect_bench
