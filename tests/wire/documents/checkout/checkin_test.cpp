#include "documents/checkout/checkin.h"

#include "base/result.h"
#include "tests/wire/documents/flow_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* checkedInAnswer =
    R"([{"id":"D1003","revision":"B","iteration":"4","epmMaster":{"cadName":"pump.fnl"},
         "cadContent":{"contentSections":[{"fileSize":5}]},
         "derivedSourceDependencies":[{"asStoredChildName":"bolt","source":{"id":"D7"}}]}])";

std::string Resolution(const std::string& document) {
  return R"("conflictResolutions":[)"
         R"({"code":"com.zvk.vantry.udkm.common.conflict.UdkmConflictType.STALE_SEC_CONTENT",)"
         R"("resolutionOption":"com.zvk.vantry.udkm.common.conflict.UdkmResolutionType.IGNORE_STALE_SEC_CONTENT",)"
         R"("appliedEntities":[{"type":"vn.epm.EPMDocument","field":"id","value":")" +
         document + R"("}]}]})";
}

class CheckingIn : public FlowTest {
 protected:
  CheckingIn() { info.id = "before"; }
  bool Checkin(const char* id) {
    return HandOver(CheckinDocument(Begin(connection), ParseCheckoutId(id)), info);
  }
  FileInfo info;
};

TEST_F(CheckingIn, OfATemporaryCheckoutEmptiesAndDeletesTheWorkspace) {
  ThenNonce();
  transport.Then(200, checkedInAnswer).Then(200);
  EXPECT_TRUE(Checkin("D1001|W77|D1002|T"));
  EXPECT_EQ(transport.requests(),
            (Requests{ReadNonce(),
                      Write(workspacesPath + "/W77/checkin",
                            R"({"checkinInstructions":[{"id":"D1002"}],"removeFromWorkspace":true,)" +
                                Resolution("D1002")),
                      Write(workspacesPath + "/W77/delete", "[]")}));
  EXPECT_EQ(info.id, "D1003");
  EXPECT_EQ(info.version, "B.4");
  EXPECT_EQ(info.cadName, "pump.fnl");
  EXPECT_EQ(info.size, 5u);
  EXPECT_THAT(info.dependencies, ElementsAre(Pair("bolt", "D7")));
  EXPECT_EQ(trace.lines(), Traces{Miss("Checked-in document id D1002 on workspace W77 giving id D1003\n")});
}

TEST_F(CheckingIn, InAWorkspaceOfTheUsersLeavesTheDocumentThere) {
  ThenNonce();
  transport.Then(200, checkedInAnswer);
  EXPECT_TRUE(Checkin("D1|W/2"));
  EXPECT_EQ(transport.requests(),
            (Requests{ReadNonce(), Write(workspacesPath + "/W%2F2/checkin",
                                         R"({"checkinInstructions":[{"id":"D1"}],)" + Resolution("D1"))}));
  EXPECT_EQ(info.id, "D1003|W/2");
  EXPECT_EQ(trace.lines(), Traces{Miss("Checked-in document id D1 on workspace W/2 giving id D1003\n")});
}

TEST_F(CheckingIn, RefusesAnIdThatIsNoneOfACheckout) {
  Traces expected;
  for (const char* id : {"D1", "", "|W2", "D1|", "D1|W77||T"}) {
    EXPECT_FALSE(Checkin(id)) << id;
    expected.push_back(Error(std::string("Bad id data for checkout ") + id + "\n"));
  }
  EXPECT_FALSE(Checkin(nullptr));
  expected.push_back(Error("Bad id data for checkout \n"));
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_EQ(trace.lines(), expected);
  EXPECT_EQ(info.id, "before");
}

TEST_F(CheckingIn, ThatIsRefusedLeavesTheWorkspaceForAnotherTry) {
  ThenNonce();
  transport.Then(409, "stale");
  EXPECT_FALSE(Checkin("D1001|W77|D1002|T"));
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(workspacesPath + "/W77/checkin")}));
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to check-in document with error 409 : stale\n"),
                                   Error("Failed to check-in document id D1002 on workspace W77\n")}));
  EXPECT_EQ(info.id, "before");
}

TEST_F(CheckingIn, OfAnAnswerWithoutADocumentIsASuccessWithoutAnId) {
  ThenNonce();
  for (const char* answer : {"[]", "{}", "<html>", ""}) {
    trace.Clear();
    transport.Then(200, answer).Then(200);
    EXPECT_TRUE(Checkin("D1001|W77|D1002|T"));
    EXPECT_EQ(info.id, "") << answer;
    EXPECT_EQ(trace.lines(), Traces{Miss("Checked-in document id D1002 on workspace W77 giving id \n")});
    transport.Then(200, answer);
    EXPECT_TRUE(Checkin("D1|W2"));
    EXPECT_EQ(info.id, "|W2") << answer;
  }
}

TEST_F(CheckingIn, StandsWhateverBecomesOfTheWorkspace) {
  ThenNonce();
  transport.Then(200, checkedInAnswer).Then(500, "boom");
  EXPECT_TRUE(Checkin("D1001|W77|D1002|T"));
  EXPECT_EQ(info.id, "D1003");
  EXPECT_EQ(trace.lines(), (Traces{Miss("Checked-in document id D1002 on workspace W77 giving id D1003\n"),
                                   Error("Failed to delete temporary workspace W77\n")}));
}

TEST_F(CheckingIn, CanSendACommentAndDropTheAnswer) {
  ThenNonce();
  transport.Then(200, checkedInAnswer).Then(204).Then(500, "boom");
  EXPECT_TRUE(PostCheckin(Begin(connection), "W2", "D1", AfterCheckin::LeavesWorkspace, "why \"so\""));
  EXPECT_EQ(transport.requests().back().body,
            R"({"checkinInstructions":[{"id":"D1"}],"removeFromWorkspace":true,)"
            R"("checkinComment":"why \"so\"",)" +
                Resolution("D1"));
  EXPECT_TRUE(PostCheckin(Begin(connection), "W2", "D1", AfterCheckin::StaysInWorkspace, ""));
  EXPECT_EQ(transport.requests().back().body,
            R"({"checkinInstructions":[{"id":"D1"}],"checkinComment":"",)" + Resolution("D1"));
  EXPECT_FALSE(PostCheckin(Begin(connection), "W2", "D1", AfterCheckin::StaysInWorkspace));
}

}  // namespace
}  // namespace vtdirect_test
