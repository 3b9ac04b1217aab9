#include "base/short_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using lxservices::cms_interface::IsAlike;

constexpr std::size_t longest = 40;

std::string Letters(std::size_t length) {
  std::string text;
  for (std::size_t index = 0; index < length; ++index) text += static_cast<char>('A' + index);
  return text;
}

TEST(ShortText, IsAlikeWhenEachByteIs) {
  for (std::size_t length = 0; length <= longest; ++length) {
    const std::string name = Letters(length);
    EXPECT_TRUE(IsAlike(name.data(), name)) << length;
    EXPECT_TRUE(IsAlike((name + "!").data(), name)) << length;
  }
}

TEST(ShortText, IsNotAlikeWhenOneByteIsNot) {
  for (std::size_t length = 1; length <= longest; ++length) {
    const std::string name = Letters(length);
    for (std::size_t place = 0; place < length; ++place) {
      std::string other = name;
      other[place] = '!';
      EXPECT_FALSE(IsAlike(other.data(), name)) << length << ", " << place;
    }
  }
}

}  // namespace
