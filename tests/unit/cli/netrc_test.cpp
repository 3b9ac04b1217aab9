#include "hosts/cli/servers/netrc.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include "hosts/cli/files/local_text_file.h"
#include "tests/support/temporary_directory.h"

namespace vtdirect_cli {

TEST(Netrc, FindsAMachineOnOneLineAndOnSeveral) {
  const auto entries =
      ReadNetrc("machine a.example login joe password p1\nmachine\tb.example\n  login ann\n  password p2");
  ASSERT_TRUE(FindInNetrc(entries, "a.example", ""));
  EXPECT_EQ(FindInNetrc(entries, "a.example", "")->login, "joe");
  EXPECT_EQ(FindInNetrc(entries, "B.Example", "")->password, "p2");
  EXPECT_FALSE(FindInNetrc(entries, "c.example", ""));
}

TEST(Netrc, TakesTheDefaultBehindEveryMachine) {
  const auto entries = ReadNetrc("default login any password d machine a login joe password p");
  EXPECT_EQ(FindInNetrc(entries, "a", "")->password, "p");
  EXPECT_EQ(FindInNetrc(entries, "b", "")->password, "d");
}

TEST(Netrc, LooksForTheUserThatIsAskedFor) {
  const auto entries = ReadNetrc("machine a login joe password 1 machine a login ann password 2");
  EXPECT_EQ(FindInNetrc(entries, "a", "ann")->password, "2");
  EXPECT_FALSE(FindInNetrc(entries, "a", "eve"));
}

TEST(Netrc, ReadsQuotedWords) {
  const auto entries = ReadNetrc("machine a login \"joe b\" password \"x \\\"y\\\\\"");
  EXPECT_EQ(FindInNetrc(entries, "a", "")->login, "joe b");
  EXPECT_EQ(FindInNetrc(entries, "a", "")->password, "x \"y\\");
}

TEST(Netrc, PassesOverCommentsMacrosAccountsAndUnknownWords) {
  const auto entries = ReadNetrc(
      "# machine a login x password x\nmachine a account password login joe\n bogus password p#1\n"
      "macdef init\nmachine b login x password x\n\nmachine c login eve password q\n");
  ASSERT_TRUE(FindInNetrc(entries, "a", ""));
  EXPECT_EQ(FindInNetrc(entries, "a", "")->login, "joe");
  EXPECT_EQ(FindInNetrc(entries, "a", "")->password, "p#1");
  EXPECT_FALSE(FindInNetrc(entries, "b", ""));
  EXPECT_TRUE(FindInNetrc(entries, "c", ""));
}

TEST(Netrc, LivesThroughTextsThatBreakOff) {
  for (const char* text : {"machine", "machine a login", "password x", "machine a password \"x", "macdef",
                           "\"", "#", "machine a login joe"}) {
    EXPECT_FALSE(FindInNetrc(ReadNetrc(text), "a", "")) << text;
  }
}

TEST(PrivateFile, IsRefusedWhenOthersMayReadIt) {
  const vtdirect_test::TemporaryDirectory directory;
  const std::string path = directory.File("netrc");
  vtdirect_test::WriteFile(path, "x");
  for (const mode_t mode : {0640, 0604, 0620, 0610}) {
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
    const LocalText read = ReadPrivateTextFile(path);
    EXPECT_EQ(read.error, EPERM) << std::oct << mode;
    EXPECT_EQ(read.text, "");
  }
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  const LocalText read = ReadPrivateTextFile(path);
  EXPECT_EQ(read.error, 0);
  EXPECT_EQ(read.text, "x");
}

TEST(PrivateFile, IsRefusedAboveOneMebibyte) {
  const vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::WriteFile(directory.File("large"), std::string((1U << 20U) + 1, 'x'));
  EXPECT_EQ(ReadLocalTextFile(directory.File("large")).error, EFBIG);
}

}  // namespace vtdirect_cli
