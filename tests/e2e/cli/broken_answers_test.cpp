#include <gmock/gmock.h>

#include <atomic>

#include "tests/e2e/cli/accident_fixture.h"
#include "tests/e2e/cli/meddler.h"

using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {
namespace {

constexpr const char* stored = "stored before";

// What comes in place of an answer to a question.
struct NoAnswer {
  const char* name;
  int status;
  const char* body;
};

void PrintTo(const NoAnswer& answer, std::ostream* stream) {
  *stream << answer.name;
}

constexpr NoAnswer noAnswers[] = {{"Page", 200, "<html>"}, {"Refusal", 503, "{}"}};

}  // namespace

/// A question that gets no answer is not taken for a no: one question after the other fails, once only and from
/// then on, while a working copy with content is there.
class BrokenAnswers : public AccidentTest, public testing::WithParamInterface<NoAnswer> {
 protected:
  using Meant = std::function<bool(const WireRequest& request)>;

  void SetUp() override {
    AccidentTest::SetUp();
    WriteFile(Here("g"), stored);
    WriteFile(Here("f"), "new content");
    uid_ = CheckOut(forkPath);
    ASSERT_EQ(Run({"put", "g", forkPath}).status, 0);
    KeepBeginning();
  }

  ProcessResult RunWithout(const std::vector<std::string>& words, const Meant& isMeant) {
    Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
      if (!isMeant(request)) return peer.Send(forward());
      peer.Answer(GetParam().status, GetParam().body);
    });
    environment_["http_proxy"] = meddler.Url();
    ProcessResult result = isElsewhere_ ? RunElsewhere(words) : Run(words);
    environment_.erase("http_proxy");
    return result;
  }

  // Whether there was such a question. With `stays` the same one fails again as well.
  bool AskWithout(const std::vector<std::string>& words, int at, bool stays) {
    int number = 0;
    std::string& target = target_;
    target.clear();
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
        SCOPED_TRACE("question " + std::to_string(at) + (stays ? " from then on, " : " once, ") + target_ +
                     ", status " + std::to_string(result_.status) + ": " + result_.out + result_.err);
        check();
      }
      EXPECT_GT(at, 2) << "the command ended early: " << result_.err;
    }
  }

  [[nodiscard]] bool IsKept() const { return Book().find("\t" + uid_ + "\t") != std::string::npos; }

  std::string uid_;
  std::string target_;        // of the question that got no answer
  bool isElsewhere_ = false;  // runs where nothing is kept
};

class RecoverOfAHeldDocument : public CheckoutTest {
 protected:
  void SetUp() override { Serve(); }
};

/// A document whose record can't be read. The library has blanks in its place, of which nothing is true.
class BrokenRecord : public VtDirect, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Of, BrokenRecord,
                         testing::Values("info", "links", "path", "status", "url", "versions"));

TEST_P(BrokenRecord, IsToldOfByNoCommand) {
  Serve();
  std::atomic<bool> isBroken{false};
  Meddler meddler([&isBroken](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    const bool isMeant = isBroken && request.target.find("/dkm/documents/") != std::string::npos;
    if (!isMeant) return peer.Send(forward());
    peer.Answer(200, "<html>");
  });
  environment_["http_proxy"] = meddler.Url();
  const std::string uid = server().Uid("D1001");
  EXPECT_EQ(Run({GetParam(), uid}).status, 0);
  isBroken = true;
  const ProcessResult result = Run({GetParam(), uid});
  environment_.erase("http_proxy");
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.out, AnyOf("", "failed\t\t\t\t" + uid + "\n"));
  EXPECT_THAT(result.err, HasSubstr("no usable answer from " + server().url()));
  EXPECT_THAT(result.err, HasSubstr("the answer is not what a server of this kind gives"));
}

INSTANTIATE_TEST_SUITE_P(Of, BrokenAnswers, testing::ValuesIn(noAnswers),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(BrokenAnswers, LetVerifyForgetNothing) {
  MissEveryAnswer({"verify", forkPath}, [this] {
    EXPECT_TRUE(IsKept()) << Book();
    EXPECT_THAT(result_.err, Not(HasSubstr("vtdirect undo")));
  });
}

TEST_P(BrokenAnswers, LetPutCheckInOrSayThatItDidNot) {
  MissEveryAnswer({"put", "f", forkPath, "--checkin"}, [this] {
    const bool isHeld = HolderOf("D1001") == "anna";
    EXPECT_TRUE(result_.status != 0 || !isHeld);
    EXPECT_TRUE(!isHeld || IsKept()) << Book();
  });
}

TEST_P(BrokenAnswers, LetGetFetchTheWorkingCopyOrNothing) {
  for (const bool isElsewhere : {false, true}) {
    isElsewhere_ = isElsewhere;
    MissEveryAnswer({"get", forkPath, "-o", "-"}, [this] {
      EXPECT_THAT(result_.out, AnyOf("", stored));
      EXPECT_EQ(result_.status == 0, result_.out == stored);
    });
  }
}

// Only there does the server's list tell it.
TEST_P(BrokenAnswers, LetCheckoutsListTheWorkingCopyOrFail) {
  isElsewhere_ = true;
  MissEveryAnswer({"checkouts", "--on", "sim"}, [this] {
    EXPECT_TRUE(result_.status != 0 || result_.out.find(uid_) != std::string::npos);
  });
}

// The server refuses it, and then tells nothing of the document.
TEST_P(BrokenAnswers, LetUndoSayThatItIsDoneOnlyOnceTheDocumentTellsIt) {
  bool isSent = false;
  const ProcessResult result = RunWithout({"undo", forkPath}, [&isSent](const WireRequest& request) {
    if (request.method == "POST") isSent = true;
    return isSent && request.target.find("csrf") == std::string::npos;
  });
  ASSERT_TRUE(isSent) << result.err;
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_NE(result.status, 0) << result.out << result.err;
  EXPECT_TRUE(IsKept());
}

// A check-in whose answer was lost and that was not done.
TEST_P(BrokenAnswers, LetRecoverThrowNothingAway) {
  WriteHome(".local/state/vtdirect/journal",
            "vtdirect-journal 1\n1:1\t2026-01-31T09:00:00Z\tcheckin\t" + std::string(forkPath) + "\t" + uid_ +
                "\t\t\n",
            0600);
  KeepBeginning();
  MissEveryAnswer({"recover"}, [this] {
    EXPECT_EQ(HolderOf("D1001"), "anna");
    EXPECT_TRUE(IsKept()) << Book();
  });
}

// The copy's own id is not found, and the document still says that the user has it checked out.
TEST_F(RecoverOfAHeldDocument, ThrowsNothingAwayForOneAnswerThatTheCopyIsGone) {
  const std::string uid = CheckOut(forkPath);
  WriteHome(".local/state/vtdirect/journal",
            "vtdirect-journal 1\n1:1\t2026-01-31T09:00:00Z\tcheckin\t" + std::string(forkPath) + "\t" + uid +
                "\t\t\n",
            0600);
  const std::string copy = uid.substr(uid.find("|D") + 1, uid.find("|T") - uid.find("|D") - 1);
  Restart({"--fault", "GET *documents/" + copy + "*=404"});
  const ProcessResult result = Run({"recover"});
  EXPECT_EQ(result.status, 11) << result.out << result.err;
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_THAT(Book(), HasSubstr("\t" + uid + "\t"));
}

}  // namespace vtdirect_test
