#include "hosts/mount/requests/kept_answers.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <future>
#include <thread>
#include <vector>

namespace vtdirect_mount {
namespace {

using namespace std::chrono_literals;

class KeptAnswersTest : public testing::Test {
 protected:
  Answer<int> Ask(KeptAnswers<int>& answers, Answer<int> given) {
    return answers.Get("key", [&] {
      ++asked_;
      return given;
    });
  }

  int asked_ = 0;
};

TEST_F(KeptAnswersTest, AreAskedForOnceWhileTheyCount) {
  KeptAnswers<int> answers(1h);
  EXPECT_EQ(*Ask(answers, Found(7)).value, 7);
  EXPECT_EQ(*Ask(answers, Found(8)).value, 7);
  EXPECT_EQ(asked_, 1);
  EXPECT_EQ(*answers.Peek("key").value, 7);
  EXPECT_EQ(answers.Peek("other").value, nullptr);
}

TEST_F(KeptAnswersTest, AreAskedForEachTimeWithoutAnAge) {
  KeptAnswers<int> answers(0s);
  static_cast<void>(Ask(answers, Found(7)));
  EXPECT_EQ(*Ask(answers, Found(8)).value, 8);
  EXPECT_EQ(answers.Peek("key").value, nullptr);
  EXPECT_EQ(*answers.Recall("key").value, 8);
  EXPECT_EQ(answers.Recall("other").value, nullptr);
}

TEST_F(KeptAnswersTest, AreAskedForAnewWhenOutdated) {
  KeptAnswers<int> answers(1h);
  static_cast<void>(Ask(answers, Found(7)));
  answers.Outdate();
  EXPECT_EQ(answers.Peek("key").value, nullptr);
  EXPECT_EQ(*Ask(answers, Found(8)).value, 8);
  answers.Outdate("key");
  EXPECT_EQ(*Ask(answers, Found(9)).value, 9);
}

TEST_F(KeptAnswersTest, TellAnErrorToThoseWhoMustKnowWhatIsTrueNow) {
  KeptAnswers<int> answers(1h);
  static_cast<void>(Ask(answers, Found(7)));
  EXPECT_EQ(answers.AskNow("key", [] { return Answer<int>{EIO}; }).value, nullptr);
  EXPECT_EQ(answers.AskNow("key", [] { return Answer<int>{EIO}; }).error, EIO);
  EXPECT_EQ(*answers.Peek("key").value, 7) << "it helps out those who only look";
  EXPECT_EQ(*answers.AskNow("key", [] { return Found(8); }).value, 8);
  EXPECT_EQ(*answers.Peek("key").value, 8);
}

// What another one has asked may have been answered before.
TEST_F(KeptAnswersTest, DoNotTellWhatWasAskedBeforeToThoseWhoMustKnowWhatIsTrueNow) {
  KeptAnswers<int> answers(1h);
  std::promise<void> begun;
  std::promise<void> go;
  std::thread earlier([&] {
    static_cast<void>(answers.Get("key", [&] {
      begun.set_value();
      go.get_future().wait();
      return Found(1);
    }));
  });
  begun.get_future().wait();
  auto now = std::async(std::launch::async, [&] { return answers.AskNow("key", [] { return Found(2); }); });
  go.set_value();
  EXPECT_EQ(*now.get().value, 2);
  earlier.join();
}

TEST_F(KeptAnswersTest, HelpOutWhileTheServerIsAway) {
  KeptAnswers<int> answers(1h);
  static_cast<void>(Ask(answers, Found(7)));
  for (const int error : {EIO, ETIMEDOUT}) {
    answers.Outdate();
    EXPECT_EQ(*Ask(answers, {error}).value, 7);
  }
  answers.Outdate();
  EXPECT_EQ(*Ask(answers, Found(8)).value, 8);
}

TEST_F(KeptAnswersTest, GoWhenTheServerSaysThatNothingIsThere) {
  KeptAnswers<int> answers(1h);
  static_cast<void>(Ask(answers, Found(7)));
  answers.Outdate();
  EXPECT_EQ(Ask(answers, {ENOENT}).error, ENOENT);
  EXPECT_EQ(Ask(answers, {EIO}).error, EIO);
}

TEST_F(KeptAnswersTest, DoNotKeepFailures) {
  KeptAnswers<int> answers(1h);
  EXPECT_EQ(Ask(answers, {EIO}).error, EIO);
  EXPECT_EQ(*Ask(answers, Found(7)).value, 7);
}

TEST_F(KeptAnswersTest, ThatWereOutdatedOnTheirWayDoNotCount) {
  KeptAnswers<int> answers(1h);
  const auto first = answers.Get("key", [&] {
    answers.Outdate();
    return Found(7);
  });
  EXPECT_EQ(*first.value, 7);
  EXPECT_EQ(*Ask(answers, Found(8)).value, 8);
}

TEST_F(KeptAnswersTest, AreSharedByAllThatAskAtOnce) {
  KeptAnswers<int> answers(1h);
  std::promise<void> begun;
  std::promise<void> release;
  std::atomic<int> asked{0};
  std::vector<std::future<Answer<int>>> gets;
  gets.push_back(std::async(std::launch::async, [&] {
    return answers.Get("key", [&] {
      ++asked;
      begun.set_value();
      release.get_future().wait();
      return Answer<int>{ENOENT};
    });
  }));
  begun.get_future().wait();
  std::atomic<int> started{0};
  for (int thread = 0; thread < 4; ++thread) {
    gets.push_back(std::async(std::launch::async, [&] {
      ++started;
      return answers.Get("key", [&] {
        ++asked;
        return Answer<int>{ENOENT};
      });
    }));
  }
  while (started < 4) std::this_thread::yield();
  release.set_value();
  for (auto& get : gets) EXPECT_EQ(get.get().error, ENOENT);
  // One that came after the end has asked by itself; none has asked meanwhile.
  EXPECT_GE(asked, 1);
}

}  // namespace
}  // namespace vtdirect_mount
