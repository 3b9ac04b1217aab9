#pragma once

#include <gtest/gtest.h>

#include <chrono>

#include "tests/support/resident_memory.h"

namespace vtdirect_test {

/// What a part of a test takes of memory and of time. Time is told and never judged.
class Measurement {
 public:
  /// Writes both into the report of the test, as "mebibytes" and "milliseconds".
  /// @return the most memory that was resident above what was there at the beginning, in bytes
  std::size_t Record() const {
    const auto took = std::chrono::steady_clock::now() - begin_;
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(took).count();
    testing::Test::RecordProperty("milliseconds", static_cast<int>(milliseconds));
    testing::Test::RecordProperty("mebibytes", static_cast<int>(growth_.Most() / mebibyte));
    return growth_.Most();
  }

 private:
  ResidentGrowth growth_;
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

}  // namespace vtdirect_test
