#include "public/sessions.h"

#include "public/server_table.h"
#include "public/vt_direct_manager.h"
#include "tests/unit/public/fake_server.h"

namespace {

using namespace VtDirectManager;
using namespace lxservices::cms_interface;
using namespace vtdirect_test;

class Sessions : public FakeServerTest {
 protected:
  static std::size_t SessionCount() { return TheManagerState().sessions.size(); }
  static std::set<std::string> BlockedIn(const std::shared_ptr<Session>& session) {
    return TheManagerState().sessions.BlockedKeys(session);
  }
  static int AskStatusOfD1() {
    std::string current;
    std::string latest;
    return GetStatus("korvufenloom-vt://plm.example/vt/?id=D1", current, latest, nullptr);
  }
  static void BlockPlm() { BlockServerInSessions(TableNow().servers.at(plmKey)); }
};

TEST_F(Sessions, StartEmptyAndAreHeldByTheHostAlone) {
  auto session = StartSession();
  ASSERT_NE(session, nullptr);
  EXPECT_TRUE(BlockedIn(session).empty());
  EXPECT_EQ(SessionCount(), 1u);
  EXPECT_EQ(session.use_count(), 1);
}

TEST_F(Sessions, RememberNothingWhenNoneIsAlive) {
  BlockPlm();
  EXPECT_NE(FindServerByNickname("plm"), nullptr);
  StartSession();
  BlockPlm();
  EXPECT_NE(FindServerByNickname("plm"), nullptr);
}

TEST_F(Sessions, HideABlockedServerFromEveryLookUp) {
  Put<FakeVantry>("lib", "korvufenloom-vt://lib.example/", "https://lib.example");
  const auto session = StartSession();
  BlockPlm();
  EXPECT_EQ(FindServerByNickname("plm"), nullptr);
  EXPECT_EQ(FindServerByKey(plmKey), nullptr);
  EXPECT_EQ(FindServerByKey("korvufenloom-vt://plm.example/vt"), nullptr);
  EXPECT_EQ(FindServerByUrl(plmUrl), nullptr);
  EXPECT_NE(FindServerByNickname("lib"), nullptr);
  EXPECT_EQ(FindNicknameOfKey(TableNow(), plmKey), "plm");
}

TEST_F(Sessions, BringTheServerBackWhenTheLastOneGoes) {
  auto first = StartSession();
  auto second = StartSession();
  BlockPlm();
  first.reset();
  EXPECT_EQ(FindServerByNickname("plm"), nullptr);
  second.reset();
  EXPECT_NE(FindServerByNickname("plm"), nullptr);
}

TEST_F(Sessions, ThatStartLaterKnowNothingOfEarlierFailures) {
  auto first = StartSession();
  BlockPlm();
  const auto second = StartSession();
  first.reset();
  EXPECT_NE(FindServerByNickname("plm"), nullptr);
}

TEST_F(Sessions, HoldAKeyOnce) {
  const auto session = StartSession();
  BlockPlm();
  BlockPlm();
  EXPECT_EQ(BlockedIn(session), std::set<std::string>{plmKey});
}

TEST_F(Sessions, AreNotTouchedByAnEmptyServer) {
  const auto session = StartSession();
  auto expired = StartSession();
  expired.reset();
  BlockServerInSessions(nullptr);
  EXPECT_TRUE(BlockedIn(session).empty());
  EXPECT_EQ(SessionCount(), 2u);
}

TEST_F(Sessions, ThatExpiredAreDroppedByAWalkWhichKeepsTheOthers) {
  auto a = StartSession();
  const auto b = StartSession();
  auto c = StartSession();
  auto d = StartSession();
  const auto e = StartSession();
  a.reset();
  c.reset();
  d.reset();
  EXPECT_FALSE(IsKeyBlocked("x"));
  EXPECT_EQ(SessionCount(), 2u);
  BlockPlm();
  EXPECT_EQ(BlockedIn(b), std::set<std::string>{plmKey});
  EXPECT_EQ(BlockedIn(e), std::set<std::string>{plmKey});
}

// The walk ends at the first hit, so what is after it is not looked at.
TEST_F(Sessions, BehindAHitAreLeftAlone) {
  const auto first = StartSession();
  auto second = StartSession();
  BlockPlm();
  second.reset();
  EXPECT_TRUE(IsKeyBlocked(plmKey));
  EXPECT_EQ(SessionCount(), 2u);
  EXPECT_FALSE(IsKeyBlocked("x"));
  EXPECT_EQ(SessionCount(), 1u);
}

TEST_F(Sessions, ThatExpiredAreDroppedByBlockingToo) {
  auto first = StartSession();
  const auto second = StartSession();
  first.reset();
  BlockPlm();
  EXPECT_EQ(SessionCount(), 1u);
  EXPECT_EQ(BlockedIn(second).count(plmKey), 1u);
}

TEST_F(Sessions, AreNotAskedAboutANicknameThatIsNotThere) {
  auto session = StartSession();
  session.reset();
  EXPECT_EQ(FindServerByNickname("nobody"), nullptr);
  EXPECT_EQ(SessionCount(), 1u);
}

TEST_F(Sessions, BlockAKeyAcrossAnUpdateOfTheList) {
  auto session = StartSession();
  BlockPlm();
  UpdateServerList({{"plm", plmUrl}});
  EXPECT_EQ(FindServerByNickname("plm"), nullptr);
  session.reset();
  EXPECT_NE(FindServerByNickname("plm"), nullptr);
}

TEST_F(Sessions, FailABlockedServersAddressesLikeUnknownOnes) {
  const auto session = StartSession();
  BlockPlm();
  EXPECT_FALSE(FileExists("//plm/a"));
  EXPECT_EQ(trace.lines(), (Traces{{1, "VtDirect", "Failed to connect to server path //plm/a\n"}}));
  EXPECT_TRUE(answers.calls.empty());
}

// These failures are the server's, whichever document is asked for next.
TEST_F(Sessions, WriteAServerOffWhoseStatusQueryFindsNoConnectionNoAccessOrNoSupport) {
  Put<FakeVantry>("lib", "korvufenloom-vt://lib.example/", "https://lib.example");
  for (const Status failure : {ConnectionFailed, Unauthorized, Unsupported}) {
    SCOPED_TRACE(failure);
    auto session = StartSession();
    answers.detailsStatus = failure;
    EXPECT_EQ(AskStatusOfD1(), -1);
    EXPECT_EQ(BlockedIn(session), std::set<std::string>{plmKey});
    answers.calls.clear();
    EXPECT_EQ(AskStatusOfD1(), -1);
    EXPECT_FALSE(FileExists("//plm/a"));
    EXPECT_TRUE(answers.calls.empty());
    EXPECT_NE(FindServerByNickname("lib"), nullptr);
    session.reset();
    answers.detailsStatus = Ok;
    EXPECT_EQ(AskStatusOfD1(), 0);
  }
}

TEST_F(Sessions, KeepAServerWhoseStatusQueryFailsForTheDocumentAlone) {
  for (const Status failure : {NotFound, Refused, ServerError, TooLarge}) {
    SCOPED_TRACE(failure);
    const auto session = StartSession();
    answers.detailsStatus = failure;
    EXPECT_EQ(AskStatusOfD1(), -1);
    EXPECT_TRUE(BlockedIn(session).empty());
    EXPECT_NE(FindServerByNickname("plm"), nullptr);
  }
}

// The server is blocked before the UID of the newest is asked for, which is asked of the server in hand.
TEST_F(Sessions, DoNotKeepAFailedStatusQueryFromAskingForTheNewestUid) {
  const auto session = StartSession();
  answers.detailsStatus = Unauthorized;
  std::string current = "unset";
  std::string latest = "unset";
  std::string latestUid = "unset";
  EXPECT_EQ(GetStatus("korvufenloom-vt://plm.example/vt/?id=D1", current, latest, &latestUid), -1);
  EXPECT_EQ(current, "unset");
  EXPECT_EQ(latest, "unset");
  EXPECT_EQ(latestUid, "");
  EXPECT_EQ(answers.calls, (Lines{"ReadDetails(D1 current latest)", "GetFileInfo()"}));
}

TEST_F(Sessions, DoNotHideABlockedServerFromTheRootDirectory) {
  const auto session = StartSession();
  BlockPlm();
  int count = 0;
  ReadRootDirs([](const char*, void* user) { ++*static_cast<int*>(user); }, &count);
  EXPECT_EQ(count, 1);
}

}  // namespace
