#include "hosts/cli/many/many_progress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <thread>

using testing::EndsWith;
using testing::HasSubstr;

namespace vtdirect_cli {

using std::chrono::milliseconds;

TEST(ManyText, TellsFilesBytesRateTimeLeftAndWhatIsUnderWay) {
  // A quarter of the files in 10 s: three times as long is left, and it is not told as less.
  const ManyState state{25, 100, 10 * 1024, milliseconds(10'000), {"fork.lxz", "frame.lxz"}};
  EXPECT_EQ(ManyText(state, 200), "25 of 100 files  10.0 KiB  1.0 KiB/s  31 s left  fork.lxz, frame.lxz");
}

TEST(ManyText, TellsNoTimeAndNoRateThatNobodyKnowsYet) {
  EXPECT_EQ(ManyText({0, 3, 0, milliseconds(50), {}}, 200), "0 of 3 files  0 B");
  EXPECT_EQ(ManyText({3, 3, 2048, milliseconds(2000), {}}, 200), "3 of 3 files  2.0 KiB  1.0 KiB/s");
}

TEST(ManyText, TellsALongTimeInMinutes) {
  EXPECT_EQ(ManyText({1, 61, 0, milliseconds(10'000), {}}, 200), "1 of 61 files  0 B  0 B/s  11 min left");
}

TEST(ManyText, FitsTheTerminalAndHarmsItWithNoName) {
  const ManyState state{0, 2, 0, milliseconds(0), {"a\x1B[2J", "b"}};
  EXPECT_EQ(ManyText(state, 200), "0 of 2 files  0 B  a\\x1B[2J, b");
  EXPECT_EQ(ManyText(state, 12), "0 of 2 files");
}

TEST(ManyProgress, NamesTheFileAndIsGoneWhenItIsCleared) {
  std::ostringstream terminal;
  ManyProgress progress(&terminal, 80, 1);
  progress.Begin(0, "Frame/fork.lxz");
  EXPECT_THAT(terminal.str(), EndsWith("0 of 1 files  0 B  fork.lxz"));
  progress.Clear();
  EXPECT_THAT(terminal.str(), EndsWith("\r\033[K"));
}

TEST(ManyProgress, CountsAFileThatIsBegunAgainOnce) {
  std::ostringstream terminal;
  ManyProgress progress(&terminal, 80, 2);
  progress.End(0);
  progress.Clear();
  progress.End(0);
  EXPECT_THAT(terminal.str(), HasSubstr("1 of 2 files"));
  EXPECT_THAT(terminal.str(), testing::Not(HasSubstr("2 of 2 files")));
}

TEST(ManyProgress, ShowsNothingWithoutATerminal) {
  ManyProgress progress(nullptr, 80, 1);
  progress.Begin(0, "a");
  progress.Advance(0, 10);
  progress.End(0);
  progress.Clear();
}

// What each of many threads tells; ThreadSanitizer looks on.
TEST(ManyProgress, TakesNewsOfManyThreads) {
  std::ostringstream terminal;
  {
    ManyProgress progress(&terminal, 80, 400);
    std::vector<std::jthread> threads;
    for (std::size_t thread = 0; thread < 4; ++thread) {
      threads.emplace_back([&progress, thread] {
        for (std::size_t number = thread * 100; number < thread * 100 + 100; ++number) {
          progress.Begin(number, "file");
          progress.Advance(number, 5);
          progress.End(number);
          if (number % 10 == 0) progress.Clear();
        }
      });
    }
  }
  EXPECT_THAT(terminal.str(), HasSubstr(" of 400 files"));
}

}  // namespace vtdirect_cli
