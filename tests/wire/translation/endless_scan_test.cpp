#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <thread>

#include "tests/wire/translation/xliff_fixture.h"
#include "translation/xliff_folder.h"

// The count of a folder path's levels does not end unless a switch says so. It runs in a process of its own,
// which is ended from outside.
namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

// Time of the processor: on a busy machine a bound of the clock would say nothing.
constexpr double secondsOfWork = 1.0;
constexpr auto longestWait = std::chrono::seconds(90);

/// A process that runs a function and tells what it is at by letters. It is ended with the object.
class Child {
 public:
  using Report = std::function<void(char)>;

  explicit Child(const std::function<void(const Report&)>& run) {
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0) return;
    process_ = fork();
    if (process_ == 0) {
      close(ends[0]);
      run([&](char letter) { (void)!write(ends[1], &letter, 1); });
      _exit(0);
    }
    close(ends[1]);
    reports_ = ends[0];
    fcntl(reports_, F_SETFL, O_NONBLOCK);
  }
  ~Child() {
    if (process_ > 0) {
      kill(process_, SIGKILL);
      waitpid(process_, nullptr, 0);
    }
    close(reports_);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  /// Waits until the process has ended or has worked for a while, and gives what it told so far.
  std::string ReportsAfterWork() {
    const auto end = std::chrono::steady_clock::now() + longestWait;
    while (std::chrono::steady_clock::now() < end && !HasEnded() && SecondsOfProcessor() < secondsOfWork) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return ReadReports();
  }
  [[nodiscard]] bool HasEnded() {
    if (process_ > 0 && waitpid(process_, nullptr, WNOHANG) == process_) process_ = 0;
    return process_ <= 0;
  }
  /// How long the process has been at work; waiting does not count.
  [[nodiscard]] double SecondsOfProcessor() const {
    clockid_t clock = 0;
    timespec time{};
    if (clock_getcpuclockid(process_, &clock) != 0 || clock_gettime(clock, &time) != 0) return 0;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
  }

 private:
  std::string ReadReports() {
    char letter = 0;
    while (read(reports_, &letter, 1) == 1) all_ += letter;
    return all_;
  }

  pid_t process_ = 0;
  int reports_ = -1;
  std::string all_;
};

class EndlessScan : public XliffTest {
 protected:
  EndlessScan() { unsetenv("FENLOOM_XLIFF_BOUNDED_FOLDER_SCAN"); }

  /// Scripts an answer that is reported by its letter.
  void ThenTelling(const Child::Report& report, char letter, const std::string& body) {
    transport.Then({.status = 200, .body = body, .afterwards = [report, letter] { report(letter); }});
  }
};

class EndlessScanOf : public EndlessScan, public testing::WithParamInterface<const char*> {};

TEST_P(EndlessScanOf, DoesNotEndAndSendsNothing) {
  Child child([&](const Child::Report& report) {
    ThenTelling(report, 'f', Rows({}));
    report('s');
    (void)FindFolderByPath(Begin(connection), "Gadget", "Product", GetParam());
    report('e');
  });
  EXPECT_EQ(child.ReportsAfterWork(), "s");
  EXPECT_FALSE(child.HasEnded());
  EXPECT_GE(child.SecondsOfProcessor(), secondsOfWork) << "it waits and does not scan";
}

INSTANTIATE_TEST_SUITE_P(Paths, EndlessScanOf, testing::Values("/A/B", "A/B", "/A/B/C", "A/", "//"));

TEST_F(EndlessScan, EndsByTheSwitch) {
  setenv("FENLOOM_XLIFF_BOUNDED_FOLDER_SCAN", "1", 1);
  Child child([&](const Child::Report& report) {
    ThenTelling(report, 'f', Rows({}));
    report('s');
    (void)FindFolderByPath(Begin(connection), "Gadget", "Product", "/A/B");
    report('e');
  });
  EXPECT_EQ(child.ReportsAfterWork(), "sfe");
  EXPECT_TRUE(child.HasEnded());
}

TEST_F(EndlessScan, DoesNotEndByAnEmptySwitch) {
  setenv("FENLOOM_XLIFF_BOUNDED_FOLDER_SCAN", "", 1);
  Child child([&](const Child::Report& report) {
    report('s');
    (void)FindFolderByPath(Begin(connection), "Gadget", "Product", "/A/B");
    report('e');
  });
  EXPECT_EQ(child.ReportsAfterWork(), "s");
  EXPECT_FALSE(child.HasEnded());
}

TEST_F(EndlessScan, IsNotReachedByAPathWithoutAnInnerSlash) {
  Child child([&](const Child::Report& report) {
    for (const char* path : {"", "/", "A", "/A"}) {
      (void)FindFolderByPath(Begin(connection), "Gadget", "Product", path);
      report('e');
    }
  });
  EXPECT_EQ(child.ReportsAfterWork(), "eeee");
  EXPECT_TRUE(child.HasEnded());
}

TEST_F(EndlessScan, HoldsAnUploadByPathBehindItsContexts) {
  const std::string file = MakeLocal("main.xlf", "MAIN");
  Child child([&](const Child::Report& report) {
    ThenTelling(report, 'p', Preferences(PathPreferences()));
    ThenTelling(report, 'c', R"({"items":[]})");
    ThenTelling(report, 'f', Rows({}));
    FileInfo info;
    (void)server.UploadSource("D1", file.c_str(), "en", info, {});
    report('e');
  });
  EXPECT_EQ(child.ReportsAfterWork(), "pc");
  EXPECT_FALSE(child.HasEnded());
  EXPECT_GE(child.SecondsOfProcessor(), secondsOfWork);
}

TEST_F(EndlessScan, DoesNotHoldAnUploadByCabinet) {
  const std::string file = MakeLocal("main.xlf", "MAIN");
  auto preferences = CabinetPreferences();
  preferences["SUB_FOLDER_PATH"] = "/Trans/Sub";
  Child child([&](const Child::Report& report) {
    ThenTelling(report, 'p', Preferences(preferences));
    ThenTelling(report, 'k', Rows({}));
    FileInfo info;
    (void)server.UploadSource("D1", file.c_str(), "en", info, {});
    report('e');
  });
  EXPECT_EQ(child.ReportsAfterWork(), "pke");
  EXPECT_TRUE(child.HasEnded());
}

}  // namespace
}  // namespace vtdirect_test
