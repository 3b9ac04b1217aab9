#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "platform/http_settings.h"
#include "public/vt_direct_manager.h"
#include "tests/e2e/cli/simulator.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/together.h"

// A host with threads, the library with its own transport and a server: what neither half shows alone.
namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

class ManyThreads : public testing::Test {
 protected:
  ManyThreads() {
    du::http::SetTransportSettings({});
    UpdateServerList({{"plm", server_.url()}});
  }
  ~ManyThreads() override {
    RegisterTaskRunner(nullptr);
    UpdateServerList({});
  }

  TemporaryDirectory home_;
  TemporaryDirectory copies_;
  Simulator server_{home_.path(), {"--large", "4096"}};
  const std::string uid_ = server_.Uid("D1003");
};

TEST_F(ManyThreads, AllFindADocumentOnOneServer) {
  std::atomic<int> found = 0;
  const auto ask = [&] {
    for (int number = 0; number < 100; ++number) found += FileExists(uid_.c_str()) ? 1 : 0;
  };
  Together({ask, ask, ask, ask, ask, ask, ask, ask});
  EXPECT_EQ(found, 800);
}

TEST_F(ManyThreads, OfASessionWriteNoServerOffThatAnswers) {
  const auto session = StartSession();
  std::atomic<int> known = 0;
  const auto ask = [&] {
    for (int number = 0; number < 30; ++number) {
      std::string current;
      std::string latest;
      known += GetStatus(uid_.c_str(), current, latest, nullptr) >= 0 ? 1 : 0;
    }
  };
  Together({ask, ask, ask, ask});
  EXPECT_EQ(known, 120);
  EXPECT_FALSE(GetServerURL(uid_.c_str()).empty());
}

TEST_F(ManyThreads, OfARunnerDownloadWhatTheyAreGiven) {
  constexpr int downloads = 60;
  static std::vector<std::function<void()>> tasks;
  RegisterTaskRunner([](std::function<void()> task) {
    tasks.push_back(std::move(task));
    return true;
  });
  std::atomic<int> succeeded = 0;
  const auto status = [&](StatusCode code, const char*) { succeeded += code == StatusOk ? 1 : 0; };
  for (int number = 0; number < downloads; ++number) {
    const std::string copy = copies_.File(std::to_string(number));
    EXPECT_TRUE(GetFileAsync(uid_.c_str(), copy.c_str(), status, {}));
  }
  std::atomic<std::size_t> next = 0;
  const auto run = [&] {
    for (std::size_t task = next++; task < tasks.size(); task = next++) tasks[task]();
  };
  Together({run, run, run});
  tasks.clear();
  EXPECT_EQ(succeeded, downloads);
  for (int number = 1; number < downloads; ++number) {
    EXPECT_EQ(ReadFile(copies_.File(std::to_string(number))), ReadFile(copies_.File("0"))) << number;
  }
}

TEST_F(ManyThreads, AskTheServerInsideTheirCallbacks) {
  // More transfers than there are places, and each one's callback needs one more.
  du::http::TransportSettings settings;
  settings.exchangesAtOnce = 2;
  du::http::SetTransportSettings(settings);
  std::atomic<int> asked = 0;
  std::atomic<int> answered = 0;
  std::atomic<int> copies = 0;
  const auto download = [&] {
    std::string uid;
    const auto progress = [&](std::size_t, std::size_t) {
      ++asked;
      answered += FileExists(uid_.c_str()) ? 1 : 0;
      return true;
    };
    const std::string copy = copies_.File(std::to_string(copies++));
    EXPECT_TRUE(GetFile(uid_.c_str(), copy.c_str(), uid, {}, progress));
  };
  Together({download, download, download, download, download, download});
  EXPECT_GE(asked, 6);
  EXPECT_EQ(answered, asked);
}

}  // namespace
}  // namespace vtdirect_test
