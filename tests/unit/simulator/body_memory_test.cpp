#include "simulator/wire/body_memory.h"

#include <gtest/gtest.h>

#include <optional>

namespace vantry_sim {
namespace {

TEST(BodyMemory, OneClientGetsThreeQuartersAndOthersTheRest) {
  BodyMemory memory(100);
  BodyMemory::Share first(&memory, "a"), second(&memory, "a"), other(&memory, "b");
  EXPECT_TRUE(first.Grow(50));
  EXPECT_TRUE(second.Grow(25));
  EXPECT_FALSE(second.Grow(1));
  EXPECT_TRUE(other.Grow(25));
  EXPECT_FALSE(other.Grow(1));
}

TEST(BodyMemory, WhatABodyTookIsGivenBackAtItsEnd) {
  BodyMemory memory(100);
  for (int i = 0; i < 1000; ++i) {
    BodyMemory::Share share(&memory, "a");
    EXPECT_TRUE(share.Grow(40));
    EXPECT_TRUE(share.Grow(35));
    EXPECT_FALSE(share.Grow(1));
  }
}

TEST(BodyMemory, WithoutABoundEverythingFits) {
  BodyMemory::Share share(nullptr, "a");
  EXPECT_TRUE(share.Grow(1ULL << 60));
}

}  // namespace
}  // namespace vantry_sim
