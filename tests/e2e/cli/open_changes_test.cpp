#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>
#include <atomic>

#include "tests/e2e/cli/checkout_fixture.h"
#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/cli/xliff_fixture.h"

using testing::HasSubstr;

namespace vtdirect_test {
namespace {

constexpr const char* manual = "//sim/?id=D1032";
constexpr const char* translation = "//sim/?id=D1031";

enum class Beginning { AsSeeded, CheckedOut, CheckoutIsGone };

// A command, and the request that gets no answer before it is ended.
struct EndedCommand {
  const char* name;
  Beginning beginning;
  std::vector<std::string> words;
  const char* method;
  const char* target;  // a part of it
  bool isOpen;         // whether the request changes something
  const char* told;
};

const EndedCommand ended[] = {
    {"CheckoutThatLooks",
     Beginning::AsSeeded,
     {"checkout", forkPath},
     "GET",
     "/dkm/documents/",
     false,
     "nothing was changed"},
    {"Checkout",
     Beginning::AsSeeded,
     {"checkout", forkPath},
     "POST",
     "/checkout",
     true,
     " is checked out is not known"},
    {"Checkin",
     Beginning::CheckedOut,
     {"checkin", forkPath},
     "POST",
     "/checkin",
     true,
     " has ended is not known"},
    {"Undo",
     Beginning::CheckedOut,
     {"undo", forkPath},
     "POST",
     "/undocheckout",
     true,
     " has ended is not known"},
    {"StoreThatAsksForAPlace",
     Beginning::CheckedOut,
     {"put", "f", forkPath},
     "POST",
     "creationFactory",
     false,
     "nothing was stored"},
    {"Store",
     Beginning::CheckedOut,
     {"put", "f", forkPath},
     "POST",
     "/store",
     true,
     "whether the server has stored it is not known"},
    {"CheckinOfWhatWasStored",
     Beginning::CheckedOut,
     {"put", "f", forkPath, "--checkin"},
     "POST",
     "/checkin",
     true,
     "the file is stored in the working copy"},
    {"VerifyThatAsks",
     Beginning::CheckedOut,
     {"verify", forkPath},
     "GET",
     "/dkm/documents/",
     false,
     "nothing was changed"},
    {"Renewal",
     Beginning::CheckoutIsGone,
     {"verify", "--renew", forkPath},
     "POST",
     "/checkout",
     true,
     " is checked out anew is not known"},
    {"SourceXliff",
     Beginning::AsSeeded,
     {"xliff", "put", manual, "chain.xlf", "-l", "en"},
     "POST",
     "/dkm/documents",
     true,
     "whether the server has taken chain.xlf is not known"},
    {"Publication",
     Beginning::AsSeeded,
     {"xliff", "publish", translation},
     "PATCH",
     "",
     true,
     " is marked as published is not known; the same command can be given again"},
    {"PublicationThatLooks",
     Beginning::AsSeeded,
     {"xliff", "publish", translation},
     "GET",
     "D1031",
     false,
     "nothing was changed"},
};

}  // namespace

/// A command that changes something says, when it is ended from outside, whether a change of it may be carried out
/// all the same.
class EndedWhileItWaits : public CheckoutTest, public testing::WithParamInterface<EndedCommand> {
 protected:
  void SetUp() override {
    Serve();
    WriteFile(Here("f"), "new content");
    WriteFile(Here("chain.xlf"), English());
    if (GetParam().beginning == Beginning::AsSeeded) return;
    const std::string uid = CheckOut(forkPath);
    if (GetParam().beginning == Beginning::CheckedOut) return;
    ASSERT_EQ(RunElsewhere({"undo", uid}).status, 0);
  }

  [[nodiscard]] static bool IsMeant(const WireRequest& request) {
    return request.method == GetParam().method && request.target.find(GetParam().target) != std::string::npos;
  }

  // Sends the signal while the program waits for the answer to the request that is meant.
  ProcessResult RunAndEnd(const std::vector<std::string>& options) {
    std::vector<std::string> words = options;
    words.insert(words.end(), GetParam().words.begin(), GetParam().words.end());
    std::atomic<Process*> process = nullptr;
    Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
      if (!IsMeant(request)) return peer.Send(forward());
      EXPECT_TRUE(WaitUntil([&process] { return process != nullptr; }));
      process.load()->Signal(SIGTERM);
      peer.StaySilent();
    });
    environment_["http_proxy"] = meddler.Url();
    const auto running = Start(words);
    process = running.get();
    ProcessResult result = running->Wait();
    environment_.erase("http_proxy");
    return result;
  }
};

INSTANTIATE_TEST_SUITE_P(Commands, EndedWhileItWaits, testing::ValuesIn(ended),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(EndedWhileItWaits, TellsWhetherAChangeIsOpen) {
  const ProcessResult result = RunAndEnd({"--json"});
  EXPECT_EQ(result.status, 143);
  EXPECT_THAT(result.err, HasSubstr("\"error\":\"interrupted\""));
  EXPECT_THAT(result.err, HasSubstr(GetParam().told));
  EXPECT_THAT(result.err, HasSubstr("\"retryable\":false"));
  EXPECT_THAT(result.err, HasSubstr(std::string("\"may_have_happened\":") +
                                    (GetParam().isOpen ? "true" : "false") + "}\n"));
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1);
}

TEST_P(EndedWhileItWaits, TellsItInWords) {
  const ProcessResult result = RunAndEnd({});
  EXPECT_EQ(result.status, 143);
  EXPECT_TRUE(result.err.starts_with("vtdirect: interrupted; ")) << result.err;
  EXPECT_THAT(result.err, HasSubstr(GetParam().told));
}

}  // namespace vtdirect_test
