#include "simulator/wire/byte_range.h"

#include <gtest/gtest.h>

namespace vantry_sim {
namespace {

using Kind = RangeWish::Kind;

struct Case {
  const char* value;
  std::uint64_t size;
  Kind kind;
  std::uint64_t first;
  std::uint64_t count;
};

/// RFC 9110, 14.1.2 and 14.2: what cannot be read is as if it weren't there.
constexpr Case cases[] = {
    {"bytes=0-0", 10, Kind::Part, 0, 1},
    {"bytes=2-5", 10, Kind::Part, 2, 4},
    {"bytes=9-", 10, Kind::Part, 9, 1},
    {"bytes=5-99", 10, Kind::Part, 5, 5},
    {"bytes=0-18446744073709551615", 10, Kind::Part, 0, 10},
    {"bytes=-3", 10, Kind::Part, 7, 3},
    {"bytes=-99", 10, Kind::Part, 0, 10},
    {"bytes=10-", 10, Kind::Unsatisfiable, 0, 0},
    {"bytes=-0", 10, Kind::Unsatisfiable, 0, 0},
    {"bytes=0-", 0, Kind::Unsatisfiable, 0, 0},
    {"bytes=-1", 0, Kind::Unsatisfiable, 0, 0},
    {"", 10, Kind::Whole, 0, 0},
    {"bytes=", 10, Kind::Whole, 0, 0},
    {"bytes=-", 10, Kind::Whole, 0, 0},
    {"bytes=5-2", 10, Kind::Whole, 0, 0},
    {"bytes=0-1,4-5", 10, Kind::Whole, 0, 0},
    {"bytes=a-b", 10, Kind::Whole, 0, 0},
    {"bytes=99999999999999999999-", 10, Kind::Whole, 0, 0},
    {"items=0-1", 10, Kind::Whole, 0, 0},
};

TEST(ByteRange, IsReadAsHttpHasIt) {
  for (const Case& c : cases) {
    const RangeWish wish = ReadRange(c.value, c.size);
    EXPECT_EQ(wish.kind, c.kind) << c.value;
    EXPECT_EQ(wish.part.first, c.first) << c.value;
    EXPECT_EQ(wish.part.size, c.count) << c.value;
  }
}

}  // namespace
}  // namespace vantry_sim
