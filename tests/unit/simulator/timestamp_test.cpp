#include "simulator/wire/timestamp.h"

#include <gtest/gtest.h>

#include "simulator/store/server_clock.h"

namespace vantry_sim {
namespace {

TEST(Timestamp, IsWrittenInUtc) {
  EXPECT_EQ(Timestamp(0), "1970-01-01T00:00:00.000Z");
  EXPECT_EQ(Timestamp(1'700'000'000'123), "2023-11-14T22:13:20.123Z");
  EXPECT_EQ(TimestampOfSecond(1'700'000'000'999), "2023-11-14T22:13:20Z");
  EXPECT_EQ(Timestamp(1'709'164'800'000), "2024-02-29T00:00:00.000Z");
}

TEST(Timestamp, IsReadWithAndWithoutAFraction) {
  EXPECT_EQ(ReadTimestamp("1970-01-01T00:00:00Z"), 0);
  EXPECT_EQ(ReadTimestamp("2023-11-14T22:13:20.123Z"), 1'700'000'000'123);
  EXPECT_EQ(ReadTimestamp("2023-11-14T22:13:20.1Z"), 1'700'000'000'100);
  EXPECT_EQ(ReadTimestamp("2023-11-14T22:13:20.12Z"), 1'700'000'000'120);
  EXPECT_EQ(ReadTimestamp("2024-02-29T00:00:00Z"), 1'709'164'800'000);
  EXPECT_EQ(ReadTimestamp("9999-12-31T23:59:59Z"), 253'402'300'799'000);
  for (const char* wrong :
       {"", "2023", "2023-02-29T00:00:00Z", "2023-13-01T00:00:00Z", "2023-11-14T24:00:00Z",
        "2023-11-14T22:60:00Z", "2023-11-14T22:13:60Z", "2023-11-14T22:13:20", "2023-11-14T22:13:20+01:00",
        "2023-11-14 22:13:20Z", "2023-11-14T22:13:20.Z", "2023-11-14T22:13:20.1234Z", "1969-12-31T23:59:59Z",
        "-123-11-14T22:13:20Z", "2023-11-14T22:13:-1Z", "2023-11-14T22:13:20Zx"}) {
    EXPECT_EQ(ReadTimestamp(wrong), std::nullopt) << wrong;
  }
}

TEST(ServerClock, StandsStillWhenItIsFrozenAndGoesOnOtherwise) {
  ServerClock clock;
  clock.Set(5000, true);
  EXPECT_EQ(clock.Now(), 5000);
  clock.Advance(250);
  EXPECT_EQ(clock.Now(), 5250);
  EXPECT_TRUE(clock.frozen());
  clock.Set(1'000'000, false);
  EXPECT_GE(clock.Now(), 1'000'000);
  EXPECT_LT(clock.Now(), 61'000'000);
  clock.Reset();
  EXPECT_GT(clock.Now(), 1'700'000'000'000);
}

}  // namespace
}  // namespace vantry_sim
