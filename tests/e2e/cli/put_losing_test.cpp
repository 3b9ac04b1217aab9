#include <gmock/gmock.h>

#include <memory>

#include "tests/e2e/cli/checkout_fixture.h"
#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/cli/server_document.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace vtdirect_test {

/// What a store must not lose, whatever the server answers.
class PutLosing : public CheckoutTest {
 protected:
  void SetUp() override {
    Serve();
    WriteFile(Here("f"), "new content");
  }
  const std::string linked_ = "//sim/Products/Trekking Bike/Folders/Frame/fork.lxz";  // made from D1002
};

TEST_F(PutLosing, KeepsTheSourceLinksWhenTheyCannotBeRead) {
  const auto before = DocumentOf(server(), "D1001").sources;
  ASSERT_FALSE(before.empty());
  // Which of the reads of the document it is that fails.
  for (int passing = 0; passing < 6; ++passing) {
    int reads = 0;
    Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
      const bool isRead =
          request.method == "GET" && request.target.find("dkm/documents/D1") != std::string::npos;
      if (isRead && reads++ >= passing) return peer.Answer(503, "{}");
      peer.Send(forward());
    });
    environment_["http_proxy"] = meddler.Url();
    const ProcessResult result = Run({"put", "f", linked_});
    environment_.erase("http_proxy");
    const ServerDocument newest = DocumentOf(server(), IdIn(Run({"uid", linked_}).out));
    EXPECT_EQ(newest.sources, before) << passing << result.err;
    if (result.status != 0 && newest.bytes == "new content") {
      EXPECT_THAT(result.err, HasSubstr("only the answer may have been lost"));
    }
  }
}

// The library asks for the linked document again while it stores, and leaves out what it can't read.
TEST_F(PutLosing, TellsTheWholeCommandThatStoresALinkThatWasLeftOut) {
  CheckOut(linked_);
  int reads = 0;
  Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    const bool isRead = request.target.find("dkm/documents/D1003") != std::string::npos;
    if (isRead && ++reads == 2) return peer.Answer(503, "{}");
    peer.Send(forward());
  });
  environment_["http_proxy"] = meddler.Url();
  const ProcessResult result = Run({"put", "f", linked_, "--link", "it's=//sim/?id=D1003", "--checkin"});
  EXPECT_EQ(result.status, 11);
  EXPECT_THAT(result.err,
              HasSubstr(", which is checked out and was not checked in, but without the link it's; "
                        "\"vtdirect put 'f' '" +
                        linked_ +
                        "' --link 'it'\\''s=//sim/?id=D1003' --checkin\" stores it again with the "
                        "link"));
  EXPECT_EQ(HolderOf("D1001"), "anna");
}

TEST_F(PutLosing, ChecksNothingInWhileItIsNotKnownWhetherTheLinksWereTaken) {
  CheckOut(linked_);
  bool isStored = false;
  Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    if (isStored && request.target.find("dkm/documents/D1000") != std::string::npos) {
      return peer.Answer(503, "{}");
    }
    peer.Send(forward());
    isStored = isStored || request.target.ends_with("/store");
  });
  environment_["http_proxy"] = meddler.Url();
  const ProcessResult result = Run({"put", "f", linked_, "--checkin"});
  environment_.erase("http_proxy");
  EXPECT_EQ(result.status, 11);
  EXPECT_THAT(result.err, HasSubstr("whether it has its source links could not be found out"));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(Run({"checkin", linked_}).status, 0);
}

TEST_F(PutLosing, EndsWithoutAnAccidentWhenATicketMakesNoSense) {
  Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    std::string answer = forward();
    if (request.target.find("creationFactory") != std::string::npos) {
      const std::size_t ids = answer.find("\"streamIds\":[\"");
      ASSERT_NE(ids, std::string::npos) << answer;
      answer[ids + 14] = 'x';
    }
    peer.Send(answer);
  });
  environment_["http_proxy"] = meddler.Url();
  const ProcessResult result = Run({"--json", "put", "f", "//sim/?id=D1001"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("nothing was stored"));
  EXPECT_THAT(TemporaryNames(), IsEmpty());
}

TEST_F(PutLosing, StoresNoOtherKindOverADocumentUnasked) {
  const ProcessResult refused = Run({"put", "f", linked_, "--kind", "general"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.err,
              HasSubstr("drops its viewable, metadata and links; nothing was sent; give --force"));
  EXPECT_EQ(DocumentOf(server(), IdIn(Run({"uid", linked_}).out)).sources,
            DocumentOf(server(), "D1001").sources);
}

TEST_F(PutLosing, ChecksOutUnderTheNextNameWhileTheFirstIsTaken) {
  int refusals = 0;
  Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    if (request.method == "POST" && request.target.ends_with("dkm/workspaces") && refusals < 3) {
      ++refusals;
      return peer.Answer(409, "{}");
    }
    peer.Send(forward());
  });
  environment_["http_proxy"] = meddler.Url();
  EXPECT_EQ(Run({"checkout", forkPath}).status, 0);
  EXPECT_EQ(refusals, 3);
  EXPECT_EQ(TemporaryWorkspaces(), 1U);
}

TEST_F(PutLosing, ManyCheckOutWithinOneSecond) {
  std::vector<std::unique_ptr<Process>> runs;
  const std::vector<std::string> names = {"fork.lxz", "frame.lxz"};
  for (const std::string& name : names) {
    runs.push_back(Start({"checkout", "//sim/Products/Trekking Bike/Folders/Frame/" + name}));
  }
  runs.push_back(Start({"checkout", "//sim/Products/Trekking Bike/Folders/Drivetrain/gear.lxz"}));
  for (const auto& run : runs) {
    const ProcessResult result = run->Wait();
    EXPECT_EQ(result.status, 0) << result.err;
  }
  EXPECT_EQ(TemporaryWorkspaces(), 3U);
}

}  // namespace vtdirect_test
