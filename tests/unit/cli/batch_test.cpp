#include "hosts/cli/many/batch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vtdirect/vt_direct_manager.h>

#include <atomic>
#include <sstream>

#include "hosts/cli/failures/reasons.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace vtdirect_cli {
namespace {

/// Tasks on two servers, none of which is ever asked.
class BatchTest : public testing::Test {
 protected:
  BatchTest() {
    VtDirectManager::UpdateServerList({{"one", "http://127.0.0.1:1/"}, {"two", "http://127.0.0.1:2/"}});
    output_.Configure("info", false, false);
  }
  ~BatchTest() override { VtDirectManager::UpdateServerList({}); }

  void Add(const std::string& address, std::function<ExitCode(Host&)> run) {
    tasks_.push_back({address, std::move(run)});
  }
  void AddFailing(const std::string& address, Failure failure) {
    Add(address, [failure](Host& host) { return host.output().Fail(failure); });
  }

  std::ostringstream out_;
  std::ostringstream err_;
  Output output_{out_, err_};
  Host host_{output_};
  std::vector<BatchTask> tasks_;
  BatchOptions options_{.threads = 4, .stopOnError = false, .verbose = true, .inOrder = true, .makeRoom = {}};
};

[[nodiscard]] Failure ServerIsGone() {
  Failure failure{ExitCode::CannotConnect, "cannot connect"};
  failure.reason = Reason{};
  failure.reason->kind = VtDirectManager::FailureKind::Unreachable;
  return failure;
}

}  // namespace

TEST_F(BatchTest, TellsResultsInTheOrderOfTheTasksOnManyThreads) {
  std::string expected;
  for (int number = 0; number < 200; ++number) {
    const std::string text = std::to_string(number);
    Add(number % 3 == 0 ? "//two/x" : "//one/x", [text](Host& host) {
      host.output().Row({{"n", text}});
      return ExitCode::Ok;
    });
    expected += text + "\n";
  }
  const BatchEnd end = RunTogether(host_, tasks_, options_);
  EXPECT_EQ(out_.str(), expected);
  EXPECT_EQ(end.ended, 200U);
  EXPECT_EQ(end.worst, ExitCode::Ok);
}

TEST_F(BatchTest, CarriesOnAndEndsWithTheWorst) {
  AddFailing("//one/a", {ExitCode::NotFound, "not found: a"});
  AddFailing("//one/b", {ExitCode::LocalFile, "cannot write b"});
  Add("//one/c", [](Host& host) {
    host.output().Row({{"c", std::string("c")}});
    return ExitCode::Ok;
  });
  const BatchEnd end = RunTogether(host_, tasks_, options_);
  EXPECT_EQ(out_.str(), "c\n");
  EXPECT_EQ(FinishBatch(host_, end, 3), ExitCode::LocalFile);
  EXPECT_EQ(err_.str(),
            "vtdirect: not found: a\nvtdirect: cannot write b\n"
            "vtdirect: 2 of 3 failed:\nvtdirect:   not found: a\nvtdirect:   cannot write b\n");
}

TEST_F(BatchTest, BeginsNothingAfterAFailureWhenItIsToldSo) {
  options_.threads = 1;
  options_.stopOnError = true;
  AddFailing("//one/a", {ExitCode::NotFound, "not found: a"});
  Add("//one/b", [](Host&) {
    ADD_FAILURE();
    return ExitCode::Ok;
  });
  EXPECT_EQ(RunTogether(host_, tasks_, options_).ended, 1U);
  const BatchEnd end = RunOneByOne(host_, tasks_, true);
  EXPECT_EQ(end.ended, 1U);
  EXPECT_EQ(end.worst, ExitCode::NotFound);
}

TEST_F(BatchTest, AsksAServerThatIsGoneOnce) {
  std::atomic<int> asked = 0;
  for (int number = 0; number < 50; ++number) {
    Add("//one/x", [&asked](Host& host) {
      ++asked;
      return host.output().Fail(ServerIsGone());
    });
  }
  Add("//two/x", [](Host& host) {
    host.output().Row({{"two", std::string("two")}});
    return ExitCode::Ok;
  });
  const BatchEnd end = RunTogether(host_, tasks_, options_);
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(end.notAsked, 49U);
  EXPECT_EQ(out_.str(), "two\n");
  EXPECT_EQ(FinishBatch(host_, end, 51), ExitCode::CannotConnect);
  EXPECT_THAT(err_.str(), HasSubstr("49 objects were not asked for, since the server can't be used"));
}

TEST_F(BatchTest, PassesOverWhatIsToBeToldAllTheSame) {
  for (int number = 0; number < 3; ++number) {
    AddFailing("//one/x", ServerIsGone());
    tasks_.back().passOver = [](Host& host, const Failure& why) {
      host.output().Row({{"status", std::string("failed")}});
      return host.output().Fail(why);
    };
  }
  const BatchEnd end = RunTogether(host_, tasks_, options_);
  EXPECT_EQ(out_.str(), "failed\nfailed\n");
  EXPECT_EQ(end.failures.size(), 3U);
}

// A server that is too busy to tell its own version answers no question.
TEST_F(BatchTest, PassesOverAServerThatIsTooBusyToBeChecked) {
  Failure busy{ExitCode::CannotConnect, "no usable answer"};
  busy.reason = Reason{};
  busy.reason->step = "ask the server for its version";
  busy.reason->httpStatus = 503;
  options_.retries = 3;
  std::atomic<int> asked = 0;
  for (int number = 0; number < 3; ++number) {
    Add("//one/x", [&asked, busy](Host& host) {
      ++asked;
      return host.output().Fail(busy);
    });
    tasks_.back().passOver = [](Host& host, const Failure& why) { return host.output().Fail(why); };
  }
  EXPECT_EQ(RunTogether(host_, tasks_, options_).failures.size(), 3U);
  EXPECT_EQ(asked, 1);
}

TEST_F(BatchTest, RepeatsATaskWhoseAnswerBrokeOffAndForgetsWhatItHasSaid) {
  options_.retries = 3;
  std::atomic<int> asked = 0;
  Add("//one/x", [&asked](Host& host) {
    host.output().Row({{"n", std::to_string(++asked)}});
    if (asked == 3) return ExitCode::Ok;
    Failure broken{ExitCode::DownloadFailed, "broke off"};
    broken.reason = Reason{};
    broken.reason->kind = VtDirectManager::FailureKind::AnswerBroken;
    return host.output().Fail(broken);
  });
  const BatchEnd end = RunTogether(host_, tasks_, options_);
  EXPECT_EQ(out_.str(), "3\n");
  EXPECT_EQ(err_.str(), "");
  EXPECT_EQ(end.worst, ExitCode::Ok);
}

// Why a call failed is told to the task that made it, and to no other one.
TEST_F(BatchTest, LetsEachTaskSeeItsOwnReasons) {
  for (int number = 0; number < 40; ++number) {
    const std::string address = "//nowhere" + std::to_string(number) + "/x";
    Add("//one/x", [address](Host&) {
      EXPECT_TRUE(Reasons().empty());
      EXPECT_FALSE(VtDirectManager::FileExists(address.c_str()));
      return ExitCode::Ok;
    });
  }
  EXPECT_EQ(RunTogether(host_, tasks_, options_).ended, 40U);
  EXPECT_TRUE(Reasons().empty());
}

TEST_F(BatchTest, ChangesOneThingAfterTheOther) {
  std::vector<int> order;
  for (int number = 0; number < 3; ++number) {
    Add("//one/x", [&order, number](Host& host) {
      order.push_back(number);
      return number == 1 ? host.output().Fail({ExitCode::Failure, "no"}) : ExitCode::Ok;
    });
  }
  const BatchEnd end = RunOneByOne(host_, tasks_, false);
  EXPECT_THAT(order, ElementsAre(0, 1, 2));
  EXPECT_EQ(end.failures.size(), 1U);
  EXPECT_EQ(end.worst, ExitCode::Failure);
}

}  // namespace vtdirect_cli
