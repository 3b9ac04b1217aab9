#include "hosts/cli/program/interruption.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "hosts/cli/files/work_directory.h"
#include "tests/support/temporary_directory.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace vtdirect_cli {
namespace {

// Runs in a process of its own: signals that a shell has set to be ignored are taken as usual.
void StartWatch() {
  signal(SIGINT, SIG_DFL);
  signal(SIGTERM, SIG_DFL);
  WatchForInterruption();
}

[[noreturn]] void SleepForEver() {
  for (;;) pause();
}

}  // namespace

TEST(CleanUp, RunsOnceWhenItGoes) {
  int runs = 0;
  {
    const CleanUp cleanUp([&runs] { ++runs; });
  }
  EXPECT_EQ(runs, 1);
}

TEST(CleanUp, DoesNotRunWhenItWasDismissed) {
  int runs = 0;
  {
    CleanUp cleanUp([&runs] { ++runs; });
    cleanUp.Dismiss();
    cleanUp.Dismiss();
  }
  EXPECT_EQ(runs, 0);
}

TEST(InterruptionDeathTest, EndsACallThatNeverReturnsAndUndoesInReverseOrder) {
  EXPECT_EXIT(
      {
        StartWatch();
        const CleanUp first([] { static_cast<void>(!write(STDERR_FILENO, "first", 5)); });
        const CleanUp second([] { static_cast<void>(!write(STDERR_FILENO, "second ", 7)); });
        kill(getpid(), SIGINT);
        SleepForEver();
      },
      testing::ExitedWithCode(130), "second first");
}

TEST(InterruptionDeathTest, GivesEachSignalItsStatus) {
  EXPECT_EXIT(
      {
        StartWatch();
        kill(getpid(), SIGTERM);
        SleepForEver();
      },
      testing::ExitedWithCode(143), "");
}

TEST(InterruptionDeathTest, LetsTheProgramEndByItself) {
  EXPECT_EXIT(
      {
        StartWatch();
        kill(getpid(), SIGINT);
        while (!Interrupted()) usleep(1000);
        _exit(InterruptionStatus() + 1);
      },
      testing::ExitedWithCode(131), "");
}

TEST(InterruptionDeathTest, WaitsForAStepThatMustBeDoneWhole) {
  EXPECT_EXIT(
      {
        StartWatch();
        {
          const InterruptionHold hold;
          const InterruptionHold nested;
          kill(getpid(), SIGINT);
          usleep(600'000);
          static_cast<void>(!write(STDERR_FILENO, "done", 4));
        }
        SleepForEver();
      },
      testing::ExitedWithCode(130), "done");
}

TEST(InterruptionDeathTest, LeavesASignalIgnoredThatTheCallerIgnores) {
  EXPECT_EXIT(
      {
        signal(SIGHUP, SIG_IGN);
        StartWatch();
        kill(getpid(), SIGHUP);
        usleep(500'000);
        _exit(Interrupted() ? 1 : 0);
      },
      testing::ExitedWithCode(0), "");
}

TEST(WorkDirectory, HoldsTemporaryFilesAndTakesThemAway) {
  const vtdirect_test::TemporaryDirectory directory;
  {
    const auto work = WorkDirectory::Create();
    ASSERT_TRUE(work);
    EXPECT_EQ(std::string(getenv("TMPDIR")), (*work)->path());
    vtdirect_test::WriteFile((*work)->path() + "/left", "x");
    EXPECT_EQ(directory.Entries().size(), 1U);
  }
  EXPECT_THAT(directory.Entries(), IsEmpty());
}

TEST(WorkDirectory, SaysWhyNoneCanBeMade) {
  setenv("TMPDIR", "/nowhere/at/all", 1);
  const auto work = WorkDirectory::Create();
  ASSERT_FALSE(work);
  EXPECT_EQ(work.failure().code, ExitCode::LocalFile);
  EXPECT_EQ(
      work.failure().Text(),
      "cannot create a directory for temporary files in /nowhere/at/all: No such file or directory; set "
      "TMPDIR to one where that can be done");
}

}  // namespace vtdirect_cli
