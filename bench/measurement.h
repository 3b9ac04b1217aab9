#pragma once

#include <sys/resource.h>

#include <chrono>
#include <fstream>
#include <string>

#include "bench/instruction_counter.h"

namespace vtdirect_bench {

/// The "VmHWM" line of the kernel's account of this process, in KiB; -1 when there is none.
inline long PeakResidentKilobytes() {
  std::ifstream account("/proc/self/status");
  std::string word;
  while (account >> word) {
    long kilobytes = -1;
    if (word == "VmHWM:" && account >> kilobytes) return kilobytes;
  }
  return -1;
}

/// Seconds of processor time that this process has used, in itself and in the kernel.
inline double ProcessorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Runs from its construction on.
class Stopwatch {
 public:
  /// "SECONDS PROCESSOR-SECONDS PEAK-KIB INSTRUCTIONS" up to now.
  [[nodiscard]] std::string Report() const {
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began_;
    return std::to_string(took.count()) + " " + std::to_string(ProcessorSeconds() - processor_) + " " +
           std::to_string(PeakResidentKilobytes()) + " " + instructions_.Count();
  }

 private:
  InstructionCounter instructions_;
  std::chrono::steady_clock::time_point began_ = std::chrono::steady_clock::now();
  double processor_ = ProcessorSeconds();
};

}  // namespace vtdirect_bench
