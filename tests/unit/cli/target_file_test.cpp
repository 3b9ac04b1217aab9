#include "hosts/cli/files/target_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tests/support/temporary_directory.h"

using testing::ElementsAre;
using testing::IsEmpty;
using vtdirect_test::ReadFile;
using vtdirect_test::WriteFile;

namespace vtdirect_cli {
namespace {

class TargetFile : public testing::Test {
 protected:
  [[nodiscard]] std::string File(const std::string& name) const { return directory_.File(name); }
  vtdirect_test::TemporaryDirectory directory_;
};

Target Settled(const std::string& option, const std::string& name = "n", bool noClobber = false) {
  const auto target = SettleTarget(option, name, noClobber);
  EXPECT_TRUE(target);
  return target ? *target : Target{};
}

}  // namespace

TEST(SafeFileName, KeepsAnEscapedNameAsItIs) {
  EXPECT_EQ(SafeFileName("Gabel \"vorn\" 50%25 ä.lxz"), "Gabel \"vorn\" 50%25 ä.lxz");
  EXPECT_EQ(SafeFileName(""), "");
  EXPECT_EQ(SafeFileName("a..b."), "a..b.");
}

TEST(SafeFileName, LeadsOutOfNoDirectoryAndHidesNowhere) {
  EXPECT_EQ(SafeFileName(".."), "%2e.");
  EXPECT_EQ(SafeFileName("."), "%2e");
  EXPECT_EQ(SafeFileName(".bashrc"), "%2ebashrc");
  EXPECT_EQ(SafeFileName("../../etc/passwd"), "%2e.%2f..%2fetc%2fpasswd");
  EXPECT_EQ(SafeFileName("/etc"), "%2fetc");
}

TEST(SafeFileName, HoldsNoControlBytes) {
  EXPECT_EQ(SafeFileName("a\nb\x7F\x1B"), "a%0ab%7f%1b");
  EXPECT_EQ(SafeFileName(std::string("a\0b", 3)), "a%00b");
}

TEST(SafeFileName, HoldsNothingThatMakesItLookLikeAnother) {
  EXPECT_EQ(SafeFileName("fork\u202Ezxl.exe"), "fork%e2%80%aezxl.exe");
  EXPECT_EQ(SafeFileName("\u2066a\u2069\u200F\u061C"), "%e2%81%a6a%e2%81%a9%e2%80%8f%d8%9c");
  EXPECT_EQ(SafeFileName("a\u2028b\u2029"), "a%e2%80%a8b%e2%80%a9");
  EXPECT_EQ(SafeFileName("a\xC2\x9Bm\xC2\x85"), "a%c2%9bm%c2%85") << "controls of a terminal in two bytes";
  EXPECT_EQ(SafeFileName("a\x9Bm"), "a%9bm") << "and in one";
}

TEST(SafeFileName, KeepsLettersOfEveryLanguageAndOfOlderServers) {
  for (const char* name :
       {"Gäbel \u05D0\u05D1.lxz", "\u0641\u0648\u0631\u0643", "フォーク", "\U0001F6B2", "\xE4.lxz"}) {
    EXPECT_EQ(SafeFileName(name), name);
  }
}

TEST_F(TargetFile, IsTheNameInTheCurrentDirectoryWithoutAnOption) {
  EXPECT_TRUE(NeedsFileName(""));
  EXPECT_EQ(Settled("", "surely-not-there.lxz").path, "surely-not-there.lxz");
}

TEST_F(TargetFile, IsStandardOutputForADash) {
  EXPECT_FALSE(NeedsFileName("-"));
  EXPECT_EQ(Settled("-").kind, Target::Kind::StandardOutput);
}

TEST_F(TargetFile, StandsInADirectoryThatIsNamed) {
  ASSERT_EQ(mkdir(File("d").c_str(), 0700), 0);
  EXPECT_TRUE(NeedsFileName(File("d")));
  EXPECT_TRUE(NeedsFileName(File("none/")));
  EXPECT_FALSE(NeedsFileName(File("none")));
  EXPECT_EQ(Settled(File("d"), "n").path, File("d/n"));
  EXPECT_EQ(Settled(File("d/"), "n").path, File("d/n"));
}

TEST_F(TargetFile, RefusesADirectoryInItsPlace) {
  ASSERT_EQ(mkdir(File("d").c_str(), 0700), 0);
  ASSERT_EQ(mkdir(File("d/n").c_str(), 0700), 0);
  const auto target = SettleTarget(File("d"), "n", false);
  ASSERT_FALSE(target);
  EXPECT_EQ(target.failure().code, ExitCode::LocalFile);
}

TEST_F(TargetFile, IsAWrittenDeviceAndNotAReplacedOne) {
  EXPECT_EQ(Settled("/dev/null").kind, Target::Kind::Device);
  ASSERT_EQ(mkfifo(File("p").c_str(), 0600), 0);
  EXPECT_EQ(Settled(File("p"), "", true).kind, Target::Kind::Device);
}

TEST_F(TargetFile, RefusesAnExistingFileOnlyWhenAskedTo) {
  WriteFile(File("f"), "x");
  EXPECT_EQ(Settled(File("f")).path, File("f"));
  EXPECT_FALSE(SettleTarget(File("f"), "", true));
}

TEST_F(TargetFile, IsTheFileBehindALink) {
  WriteFile(File("real"), "x");
  ASSERT_EQ(symlink("real", File("link").c_str()), 0);
  EXPECT_EQ(Settled(File("link")).path, File("real"));
}

TEST_F(TargetFile, IsProbedWithoutBeingChanged) {
  WriteFile(File("f"), "abc");
  EXPECT_EQ(ProbeWritable(File("f")), 0);
  EXPECT_EQ(ReadFile(File("f")), "abc");
  EXPECT_EQ(ProbeWritable(File("none")), ENOENT);
  EXPECT_EQ(ProbeWritable("/dev/full"), ENOSPC);
}

TEST_F(TargetFile, ThatMayNotGrowIsFoundOut) {
  WriteFile(File("f"), std::string(1000, 'x'));
  signal(SIGXFSZ, SIG_IGN);
  const rlimit limit{1024, RLIM_INFINITY};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  EXPECT_EQ(ProbeWritable(File("f")), EFBIG);
}

TEST_F(TargetFile, IsCopiedWhole) {
  const std::string content(200'000, 'y');
  WriteFile(File("f"), content);
  const int out = open(File("g").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_GE(out, 0);
  EXPECT_EQ(CopyToDescriptor(File("f"), out), 0);
  close(out);
  EXPECT_EQ(ReadFile(File("g")), content);
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  EXPECT_EQ(CopyToDescriptor(File("f"), full), ENOSPC);
  close(full);
}

}  // namespace vtdirect_cli
