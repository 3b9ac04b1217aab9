#include "public/vt_direct_manager.h"
#include "tests/unit/public/fake_server.h"

// The look-ups on a server that the table has. How a server is found that it does not have: see the wire
// tests.
namespace {

using namespace VtDirectManager;
using namespace vtdirect_test;

constexpr const char* otherUrl = "https://other.example/";
constexpr const char* resultUid = "korvufenloom-vt://plm.example/vt/?id=D9&file=/fork.lxz";

class LookUp : public FakeServerTest {
 protected:
  LookUp() {
    answers.text = "D9";
    answers.infos["D9"].id = "D9";
    answers.infos["D9"].cadName = "fork.lxz";
  }
};

using CadNameLookUp = LookUp;
using DocumentLookUp = LookUp;

TEST_F(CadNameLookUp, GivesTheUidOfWhatTheServerFinds) {
  EXPECT_EQ(UIDFromVantryCadName(plmUrl, "fork.lxz"), resultUid);
  EXPECT_EQ(answers.calls, (Lines{"UIDFromVantryCadName(fork.lxz)", "GetFileInfo(D9)"}));
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(CadNameLookUp, TracesANameThatIsNotFoundTwice) {
  answers.text.clear();
  EXPECT_EQ(UIDFromVantryCadName(plmUrl, "fork.lxz"), "");
  EXPECT_EQ(
      trace.lines(),
      (Traces{{3, "VtDirect", "Failed to find a CAD name fork.lxz at server URL https://plm.example/vt\n"},
              {3, "VtDirect",
               "Failed to inquire uid for CAD Name fork.lxz, at server URL https://plm.example/vt\n"}}));
}

TEST_F(CadNameLookUp, TracesAnObjectThatCannotBeReadOnce) {
  answers.infos.clear();
  EXPECT_EQ(UIDFromVantryCadName(plmUrl, "fork.lxz"), "");
  EXPECT_EQ(
      trace.lines(),
      (Traces{{3, "VtDirect",
               "Failed to inquire uid for CAD Name fork.lxz, at server URL https://plm.example/vt\n"}}));
}

TEST_F(CadNameLookUp, FailsOnAnotherKindOfServer) {
  Put<FakeOther>("other", "korvufenloom-vt://other.example/", otherUrl);
  EXPECT_EQ(UIDFromVantryCadName(otherUrl, "fork.lxz"), "");
  EXPECT_TRUE(answers.calls.empty());
  EXPECT_EQ(
      trace.lines(),
      (Traces{{3, "VtDirect", "Failed to establish connection to server  at  URL https://other.example/\n"},
              {3, "VtDirect",
               "Failed to inquire uid for CAD Name fork.lxz, at server URL https://other.example/\n"}}));
}

TEST_F(CadNameLookUp, FailsForANullUrlWithoutAskingAnybody) {
  EXPECT_EQ(UIDFromVantryCadName(nullptr, "fork.lxz"), "");
  EXPECT_TRUE(answers.calls.empty());
  EXPECT_EQ(trace.lines(),
            (Traces{{3, "VtDirect", "Failed to establish connection to server  at  URL \n"},
                    {3, "VtDirect", "Failed to inquire uid for CAD Name fork.lxz, at server URL \n"}}));
}

TEST_F(CadNameLookUp, HandsANullNameToTheServer) {
  answers.text.clear();
  EXPECT_EQ(UIDFromVantryCadName(plmUrl, nullptr), "");
  EXPECT_EQ(answers.calls, Lines{"UIDFromVantryCadName((null))"});
}

TEST_F(DocumentLookUp, GivesTheUidOfWhatTheServerFinds) {
  EXPECT_EQ(UIDFromVantryParams(plmUrl, "D1", "W2", true), resultUid);
  EXPECT_EQ(UIDFromVantryParams(plmUrl, "D1", nullptr, false), resultUid);
  EXPECT_EQ(UIDFromVantryParams(plmUrl, "D1", "", false), resultUid);
  EXPECT_EQ(answers.calls,
            (Lines{"UIDFromVantryParams(D1 W2)", "GetFileInfo(D9)", "UIDFromVantryParams(D1 (null))",
                   "GetFileInfo(D9)", "UIDFromVantryParams(D1 )", "GetFileInfo(D9)"}));
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(DocumentLookUp, TracesADocumentThatIsNotFound) {
  answers.text.clear();
  EXPECT_EQ(UIDFromVantryParams(plmUrl, "D1", "W2", true), "");
  EXPECT_EQ(UIDFromVantryParams(plmUrl, "D1", nullptr, true), "");
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to find a sensible object: D1 W2\n"},
                                   {3, "VtDirect", "Failed to find a sensible object: D1 \n"}}));
}

TEST_F(DocumentLookUp, TracesAnObjectThatCannotBeReadWithTheIdThatWasFound) {
  answers.infos.clear();
  EXPECT_EQ(UIDFromVantryParams(plmUrl, "D1", "W2", true), "");
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to retrieve object: D1 D9\n"}}));
}

TEST_F(DocumentLookUp, FailsOnAnotherKindOfServer) {
  Put<FakeOther>("other", "korvufenloom-vt://other.example/", otherUrl);
  EXPECT_EQ(UIDFromVantryParams(otherUrl, "D1", "W2", true), "");
  EXPECT_TRUE(answers.calls.empty());
  EXPECT_EQ(trace.lines(),
            (Traces{{3, "VtDirect", "Failed to connect to server: https://other.example/\n"}}));
}

TEST_F(DocumentLookUp, FailsForANullUrlWithoutAskingAnybody) {
  EXPECT_EQ(UIDFromVantryParams(nullptr, "D1", "W2", true), "");
  EXPECT_TRUE(answers.calls.empty());
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to connect to server: \n"}}));
}

TEST_F(DocumentLookUp, FindsAServerBuiltForHttpsByHttp) {
  EXPECT_EQ(UIDFromVantryParams("http://plm.example/vt", "D1", nullptr, false), resultUid);
}

}  // namespace
