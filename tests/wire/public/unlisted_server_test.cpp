#include <algorithm>

#include "tests/wire/public/listed_server.h"

// Look-ups on a server that the host never listed.
namespace {

using namespace VtDirectManager;
using namespace vtdirect_test;

constexpr const char* newUrl = "https://new.example/vt";
constexpr const char* versionLine = "GET /vt/servlet/OrvetGW";
constexpr const char* probeLine = "GET /vt/servlet/odata/DynamicDocMgmt/$metadata";

class UnlistedServer : public ListedServerTest {
 protected:
  void ThenSupported() { transport.Then(200, "ServerMajorVersion:12\n").Then(200, "<Schema/>"); }
  // The first lines, as many as are asked for.
  Lines FirstLines(std::size_t count) const {
    Lines lines = transport.lines();
    lines.resize(std::min(count, lines.size()));
    return lines;
  }
  bool Traced(const TraceLine& line) const {
    return std::find(trace.lines().begin(), trace.lines().end(), line) != trace.lines().end();
  }
};

TEST_F(UnlistedServer, IsCheckedAndRememberedByTheLookUpOfACadName) {
  ThenSupported();
  EXPECT_EQ(UIDFromVantryCadName(newUrl, "fork.lxz"), "");
  EXPECT_EQ(FirstLines(2), (Lines{versionLine, probeLine}));
  EXPECT_EQ(Nicknames(), (Lines{"new.example", "plm"}));
  EXPECT_EQ(GetServerURL("//new.example/"), "https://new.example/vt/");
}

TEST_F(UnlistedServer, ThatIsNotSupportedIsNotRememberedByTheLookUpOfACadName) {
  transport.Then(200, "ServerMajorVersion:10\n");
  EXPECT_EQ(UIDFromVantryCadName(newUrl, "fork.lxz"), "");
  EXPECT_EQ(transport.lines(), Lines{versionLine});
  EXPECT_EQ(Nicknames(), Lines{"plm"});
  EXPECT_EQ(
      trace.lines(),
      (Traces{{3, "VtDirect", "Server version: 10.0 F000 unsupported, at least: 11.0 M030 is required"},
              {3, "VtDirect", "Failed to establish connection to server  at  URL https://new.example/vt\n"},
              {3, "VtDirect",
               "Failed to inquire uid for CAD Name fork.lxz, at server URL https://new.example/vt\n"}}));
}

TEST_F(UnlistedServer, IsCheckedAndRememberedByTheLookUpOfADocumentWhenAsked) {
  ThenSupported();
  EXPECT_EQ(UIDFromVantryParams(newUrl, "D1", "W2", true), "");
  EXPECT_EQ(FirstLines(2), (Lines{versionLine, probeLine}));
  EXPECT_EQ(Nicknames(), (Lines{"new.example", "plm"}));
  EXPECT_TRUE(Traced({3, "VtDirect", "Failed to find a sensible object: D1 W2\n"}));
}

TEST_F(UnlistedServer, IsCheckedAndForgottenByTheLookUpOfADocumentWhenNotAsked) {
  ThenSupported();
  EXPECT_EQ(UIDFromVantryParams(newUrl, "D1", "W2", false), "");
  EXPECT_EQ(FirstLines(2), (Lines{versionLine, probeLine}));
  EXPECT_EQ(Nicknames(), Lines{"plm"});
  EXPECT_EQ(TableNow().servers.size(), 1u);
}

TEST_F(UnlistedServer, GivesTheUidOfADocumentThatItHas) {
  ThenSupported();
  transport.Then(200, documentJson).Then(200, documentJson);
  EXPECT_EQ(UIDFromVantryParams(newUrl, "D1", nullptr, false),
            "korvufenloom-vt://new.example/vt/?id=D1&file=/fork%201.lxz");
  EXPECT_EQ(transport.lines(), (Lines{versionLine, probeLine, documentLine, documentLine}));
  EXPECT_EQ(Nicknames(), Lines{"plm"});
}

TEST_F(UnlistedServer, TracesADocumentThatGoesBetweenTheTwoReads) {
  ThenSupported();
  transport.Then(200, documentJson).Then(404);
  EXPECT_EQ(UIDFromVantryParams(newUrl, "D1", nullptr, true), "");
  EXPECT_EQ(Nicknames(), (Lines{"new.example", "plm"}));
  ASSERT_EQ(trace.lines().size(), 3u);
  EXPECT_EQ(trace.lines()[1], (TraceLine{3, "VtDirect", "Failed to locate document D1 on server\n"}));
  EXPECT_EQ(trace.lines()[2], (TraceLine{3, "VtDirect", "Failed to retrieve object: D1 D1\n"}));
}

TEST_F(UnlistedServer, SurvivesANullDocumentAndANullName) {
  transport.Then(404).Then(404).Then(404).Then(404).Then(404).Then(404);
  EXPECT_EQ(UIDFromVantryParams(plmUrl, nullptr, nullptr, true), "");
  EXPECT_EQ(UIDFromVantryCadName(plmUrl, nullptr), "");
}

TEST_F(UnlistedServer, ThatIsNotSupportedFailsTheLookUpOfADocument) {
  transport.Then(404).Then(404);
  EXPECT_EQ(UIDFromVantryParams(newUrl, "D1", nullptr, true), "");
  EXPECT_EQ(UIDFromVantryParams(newUrl, "D1", nullptr, false), "");
  EXPECT_EQ(Nicknames(), Lines{"plm"});
  const TraceLine refused{
      3, "VtDirect", "Failed to get version info from server https://new.example/vt treating as unsupported"};
  const TraceLine failed{3, "VtDirect", "Failed to connect to server: https://new.example/vt\n"};
  EXPECT_EQ(trace.lines(), (Traces{refused, failed, refused, failed}));
}

TEST_F(UnlistedServer, FollowsNoAddressThatItCallsItsOwn) {
  transport.Then(200, "ServerMajorVersion:12\nCodebaseURL:https://elsewhere.example\n")
      .Then(200, "<Schema/>");
  EXPECT_EQ(UIDFromVantryCadName(newUrl, "fork.lxz"), "");
  EXPECT_EQ(transport.requests()[1].server, newUrl);
  EXPECT_EQ(GetServerURL("//new.example/"), "https://new.example/vt/");
}

TEST_F(UnlistedServer, IsNeverMadeForAListedOne) {
  EXPECT_EQ(UIDFromVantryParams("http://plm.example/vt", "D1", nullptr, true), "");
  EXPECT_EQ(Nicknames(), Lines{"plm"});
  for (const std::string& line : transport.lines()) EXPECT_NE(line, versionLine);
}

// A server built for "http" is not found by "https", so the address is checked and added; but its key is in
// the table already, and what is there stays.
TEST_F(UnlistedServer, SharesTheEntryOfAServerThatIsListedByHttp) {
  UpdateServerList({});
  UpdateServerList({{"plm", "http://plm.example/vt"}});
  ThenSupported();
  EXPECT_EQ(UIDFromVantryCadName("https://plm.example/vt", "fork.lxz"), "");
  EXPECT_EQ(FirstLines(2), (Lines{versionLine, probeLine}));
  EXPECT_EQ(Nicknames(), (Lines{"plm", "plm.example"}));
  EXPECT_EQ(GetServerURL("//plm.example/"), "http://plm.example/vt/");
}

TEST_F(UnlistedServer, ThreeOfOneHostGetNicknamesThatGrow) {
  for (const char* path : {"a", "b", "c"}) {
    ThenSupported();
    transport.Then(404).Then(404).Then(404).Then(404);  // what the look-up itself asks for
    EXPECT_EQ(UIDFromVantryParams((std::string("https://new.example/") + path).c_str(), "D1", nullptr, true),
              "");
    while (transport.unanswered() > 0) FileExists(uidOfD1);
  }
  EXPECT_EQ(Nicknames(), (Lines{"new.example", "new.example-1", "new.example-1-2", "plm"}));
}

}  // namespace
