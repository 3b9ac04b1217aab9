#include <gmock/gmock.h>

#include <atomic>

#include "tests/e2e/cli/accident_fixture.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {
namespace {

constexpr const char* kStored = "stored before";

// What comes in place of an answer to a question.
struct NoAnswer {
  const char* name;
  int status;
  const char* body;
};

constexpr NoAnswer kNoAnswers[] = {{"Page", 200, "<html>"}, {"Refusal", 503, "{}"}};

}  // namespace

/// A question that gets no answer is not taken for a no: one question after the other fails, once only and from
/// then on, while a working copy with content is there.
class BrokenAnswers : public AccidentTest, public testing::WithParamInterface<NoAnswer> {
 protected:
  using Meant = std::function<bool(const WireRequest& request)>;

  void SetUp() override {
    AccidentTest::SetUp();
    WriteFile(Here("g"), kStored);
    WriteFile(Here("f"), "new content");
    uid_ = CheckOut(kForkPath);
    ASSERT_EQ(Run({"put", "g", kForkPath}).status, 0);
    KeepBeginning();
  }

  ProcessResult RunWithout(const std::vector<std::string>& words, const Meant& isMeant) {
    Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
      if (!isMeant(request)) return peer.Send(forward());
      peer.Answer(GetParam().status, GetParam().body);
    });
    environment_["http_proxy"] = meddler.Url();
    ProcessResult result = Run(words);
    environment_.erase("http_proxy");
    return result;
  }

  // Whether there was such a question. With `stays` the same one fails again as well.
  bool AskWithout(const std::vector<std::string>& words, int at, bool stays) {
    int number = 0;
    std::string target;
    result_ = RunWithout(words, [&](const WireRequest& request) {
      if (request.method != "GET") return false;
      if (number++ == at) {
        target = request.target;
        return true;
      }
      return stays && !target.empty() && request.target == target;
    });
    return !target.empty();
  }

  void MissEveryAnswer(const std::vector<std::string>& words, const std::function<void()>& check) {
    for (const bool stays : {false, true}) {
      int at = 0;
      for (bool came = true; came && !HasFailure(); ++at) {
        GoBackToBeginning();
        came = AskWithout(words, at, stays);
        SCOPED_TRACE("question " + std::to_string(at) + (stays ? " from then on" : " once") + ", status " +
                     std::to_string(result_.status) + ": " + result_.out + result_.err);
        check();
      }
      EXPECT_GT(at, 2) << "the command ended early: " << result_.err;
    }
  }

  [[nodiscard]] bool IsKept() const { return Book().find("\t" + uid_ + "\t") != std::string::npos; }

  std::string uid_;
};

INSTANTIATE_TEST_SUITE_P(Of, BrokenAnswers, testing::ValuesIn(kNoAnswers),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(BrokenAnswers, LetVerifyForgetNothing) {
  MissEveryAnswer({"verify", kForkPath}, [this] {
    EXPECT_TRUE(IsKept()) << Book();
    EXPECT_THAT(result_.err, Not(HasSubstr("vtdirect undo")));
  });
}

TEST_P(BrokenAnswers, LetPutCheckInOrSayThatItDidNot) {
  MissEveryAnswer({"put", "f", kForkPath, "--checkin"}, [this] {
    const bool isHeld = HolderOf("D1001") == "anna";
    EXPECT_TRUE(result_.status != 0 || !isHeld);
    EXPECT_TRUE(!isHeld || IsKept()) << Book();
  });
}

}  // namespace vtdirect_test
