#include <gmock/gmock.h>

#include <atomic>

#include "tests/e2e/cli/checkout_fixture.h"
#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/cli/server_document.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {

/// A server that gives documents, and does not tell which of their versions is the newest. The library takes the one
/// that it knows for the newest then, and the program must not.
class UntoldNewest : public CheckoutTest {
 protected:
  void SetUp() override {
    Serve();
    WriteFile(Here("f"), "new content");
  }

  static bool AsksForNewest(const WireRequest& request) {
    return request.target.find("DynamicDocuments?") != std::string::npos ||
           request.target.find("/versions?") != std::string::npos;
  }
};

TEST_F(UntoldNewest, KeepsAnIterationOpenWhoseAnswerWasLost) {
  std::atomic<bool> isLost = false;
  const Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    if (isLost && AsksForNewest(request)) return peer.Answer(503, "{}");
    const std::string answer = forward();
    if (request.method == "POST" && request.target.ends_with("/dkm/documents")) {
      isLost = true;
      return;
    }
    peer.Send(answer);
  });
  environment_["http_proxy"] = meddler.Url();
  const ProcessResult put = Run({"put", "f", server().Uid("D1001")});
  EXPECT_EQ(put.status, 1);
  EXPECT_THAT(put.err, Not(HasSubstr("is the newest iteration")));
  EXPECT_THAT(put.err, HasSubstr("the state on the server could not be found out"));
  const ProcessResult asked = Run({"recover"});
  EXPECT_EQ(asked.status, 11);
  EXPECT_THAT(asked.out, HasSubstr("\tno\tthe state of "));
  environment_.erase("http_proxy");
  const ProcessResult settled = Run({"recover"});
  EXPECT_EQ(settled.status, 0);
  EXPECT_THAT(settled.out, HasSubstr("\tyes\tf is stored in "));
}

TEST_F(UntoldNewest, IsNoWordForUpToDate) {
  const Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    if (AsksForNewest(request)) return peer.Answer(503, "{}");
    peer.Send(forward());
  });
  environment_["http_proxy"] = meddler.Url();
  const std::string older = server().Uid("D1101");
  const ProcessResult status = Run({"status", older});
  EXPECT_THAT(status.out, HasSubstr("failed\t"));
  EXPECT_NE(status.status, 0);
  EXPECT_THAT(Run({"--json", "info", older}).out, Not(HasSubstr("latest_version")));
  environment_.erase("http_proxy");
  EXPECT_THAT(Run({"status", older}).out, HasSubstr("outdated\tA.1\tB.1\t"));
}

}  // namespace vtdirect_test
