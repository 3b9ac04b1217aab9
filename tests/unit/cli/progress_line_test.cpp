#include "hosts/cli/texts/progress_line.h"

#include <gtest/gtest.h>

#include <sstream>

namespace vtdirect_cli {

using std::chrono::milliseconds;

TEST(ProgressText, GivesBytesAndShare) {
  EXPECT_EQ(ProgressText("f", 512, 0), "f  512 B");
  EXPECT_EQ(ProgressText("f", 1536, 0), "f  1.5 KiB");
  EXPECT_EQ(ProgressText("f", 16U << 20U, 64U << 20U), "f  16.0 MiB of 64.0 MiB  25%");
  EXPECT_EQ(ProgressText("f", 0, 10), "f  0 B of 10 B  0%");
}

TEST(ProgressLine, IsRewrittenTenTimesASecondAtMostAndTakenAway) {
  std::ostringstream terminal;
  const ProgressLine::Clock::time_point start{};
  {
    ProgressLine line(&terminal, "f", 80);
    line.Show(1, 0, start);
    line.Show(2, 0, start + milliseconds(99));
    line.Show(3, 0, start + milliseconds(100));
  }
  EXPECT_EQ(terminal.str(), "\r\033[Kf  1 B\r\033[Kf  3 B\r\033[K");
}

TEST(ProgressLine, ThatWasNeverShownWritesNothing) {
  std::ostringstream terminal;
  { ProgressLine line(&terminal, "f", 80); }
  EXPECT_EQ(terminal.str(), "");
  ProgressLine nowhere(nullptr, "f", 80);
  nowhere.Show(1, 2, {});
}

TEST(ProgressLine, CutsALongNameAndNeverWithinACharacter) {
  std::ostringstream terminal;
  ProgressLine line(&terminal, "abcd\u00E4\u00E4\u00E4\u00E4\u00E4\u00E4\u00E4\u00E4\u00E4\u00E4", 20);
  line.Show(1, 0, {});
  // Twenty columns, less "  1 B" and one free: fourteen bytes are left, four letters and five umlauts.
  EXPECT_EQ(terminal.str(), "\r\033[Kabcd\u00E4\u00E4\u00E4\u00E4\u00E4  1 B");
}

TEST(ProgressLine, ShowsNoControlBytesOfAName) {
  std::ostringstream terminal;
  ProgressLine line(&terminal, "a\x1B[2J", 80);
  line.Show(1, 0, {});
  EXPECT_EQ(terminal.str(), "\r\033[Ka\\x1B[2J  1 B");
}

}  // namespace vtdirect_cli
