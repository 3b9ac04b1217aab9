#include <gmock/gmock.h>
#include <signal.h>

#include "tests/e2e/cli/vtdirect_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace vtdirect_test {
namespace {

class StalledServer : public VtDirect {
 protected:
  // Starts a download and waits until the server was asked for what it stalls at.
  std::unique_ptr<Process> StartAndStall(const std::vector<std::string>& words, const std::string& target) {
    auto process = Start(words);
    EXPECT_TRUE(WaitUntil([this] { return !TemporaryNames().empty(); }));
    EXPECT_TRUE(WaitUntil([this, &target] { return target.empty() || HasSome(target); }));
    // The request is on its way; nothing else tells when it has arrived.
    SleepMilliseconds(500);
    return process;
  }

 private:
  [[nodiscard]] bool HasSome(const std::string& prefix) const {
    for (const std::string& name : HereNames()) {
      if (name.starts_with(prefix) && !ReadFile(Here(name)).empty()) return true;
    }
    return false;
  }
};

}  // namespace

TEST_F(StalledServer, EndsWith130OnSigintInTheMiddleOfAContentAndLeavesNothing) {
  Serve({"--fault", "GET *streams*=stall:2000"});
  WriteFile(Here("copy"), "old");
  const auto process = StartAndStall({"get", "--force", server().Uid("D1001"), "-o", "copy"}, ".vtdirect-");
  process->Signal(SIGINT);
  EXPECT_EQ(process->Wait().status, 130);
  EXPECT_EQ(ReadFile(Here("copy")), "old");
  EXPECT_THAT(HereNames(), ElementsAre("copy"));
}

TEST_F(StalledServer, EndsWith143OnSigtermWhileStandardOutputWaits) {
  Serve({"--fault", "GET *streams*=stall:2000"});
  const auto process = StartAndStall({"get", server().Uid("D1001"), "-o", "-"}, "");
  process->Signal(SIGTERM);
  const ProcessResult result = process->Wait();
  EXPECT_EQ(result.status, 143);
  EXPECT_EQ(result.out, "");
}

TEST_F(StalledServer, EndsWith129OnSighupBeforeAnyAnswer) {
  Serve({"--fault", "GET *OrvetGW*=stall"});
  const auto process = StartAndStall({"check", "sim"}, "");
  process->Signal(SIGHUP);
  EXPECT_EQ(process->Wait().status, 129);
}

TEST_F(StalledServer, EndsAtOnceOnASecondSignal) {
  Serve({"--fault", "GET *streams*=stall:2000"});
  const auto process = StartAndStall({"get", server().Uid("D1001")}, ".vtdirect-");
  process->Signal(SIGINT);
  process->Signal(SIGINT);
  EXPECT_EQ(process->Wait().status, 130);
  EXPECT_THAT(HereNames(), testing::IsEmpty());
}

}  // namespace vtdirect_test
