#pragma once

#include <cstdint>

#include "base/failure.h"

namespace lxservices::cms_interface {

class FailureListener;

/// What the reporting of failures keeps for each thread.
struct FailureThread {
  FailureListener* innermost = nullptr;  ///< null while nobody collects
  const char* step = nullptr;            ///< of base/failure_step.h; null outside every step
  int asides = 0;                        ///< how many FailureAside objects there are
  std::uint64_t reports = 0;             ///< how many entries this thread has reported, asides apart
  FailureKind lastKind = FailureKind::Refused;
};

/// That of the calling thread.
[[nodiscard]] FailureThread& ThisFailureThread() noexcept;

}  // namespace lxservices::cms_interface
