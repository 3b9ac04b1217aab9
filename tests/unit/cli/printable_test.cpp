#include "hosts/cli/texts/printable.h"

#include <gtest/gtest.h>

using vtdirect_cli::ByteCount;
using vtdirect_cli::Printable;
using vtdirect_cli::ValidUtf8;

TEST(Printable, LeavesAnOrdinaryNameWithUmlautsAsItIs) {
  EXPECT_EQ(Printable("Größe \"A\" ツ 😀.lxz"), "Größe \"A\" ツ 😀.lxz");
}

TEST(Printable, WritesControlBytesAsHexadecimalDigits) {
  EXPECT_EQ(Printable("a\x1B[31mb\n\r\t\x7F"), "a\\x1B[31mb\\x0A\\x0D\\x09\\x7F");
  EXPECT_EQ(Printable(std::string_view("\0", 1)), "\\x00");
}

TEST(Printable, WritesTheSecondControlRangeByItsBytes) {
  // U+009B begins a control sequence on some terminals.
  EXPECT_EQ(Printable("\xC2\x9B"), "\\xC2\\x9B");
  EXPECT_EQ(Printable("\xC2\xA0"), "\xC2\xA0");
}

TEST(Printable, WritesCharactersThatTurnTheDirectionOfWriting) {
  EXPECT_EQ(Printable("gpj\u202Eexe"), "gpj\\xE2\\x80\\xAEexe");
  EXPECT_EQ(Printable("\u2066"), "\\xE2\\x81\\xA6");
}

TEST(Printable, WritesBytesThatAreNoUtf8) {
  EXPECT_EQ(Printable("\xFF"), "\\xFF");
  EXPECT_EQ(Printable("\xC3"), "\\xC3");                             // cut short
  EXPECT_EQ(Printable("\xC0\x8A"), "\\xC0\\x8A");                    // a line feed in an overlong form
  EXPECT_EQ(Printable("\xED\xA0\x80"), "\\xED\\xA0\\x80");           // half of a surrogate pair
  EXPECT_EQ(Printable("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80");  // above U+10FFFF
}

TEST(ValidUtf8, ReplacesEachByteThatIsNoUtf8) {
  EXPECT_EQ(ValidUtf8("a\xFF\xC3z"), "a\uFFFD\uFFFDz");
  EXPECT_EQ(ValidUtf8("Größe\n"), "Größe\n");
}

TEST(ByteCount, SaysOneByteAndSeveralBytes) {
  EXPECT_EQ(ByteCount(0), "0 bytes");
  EXPECT_EQ(ByteCount(1), "1 byte");
  EXPECT_EQ(ByteCount(2), "2 bytes");
  EXPECT_EQ(ByteCount(18446744073709551615U), "18446744073709551615 bytes");
}
