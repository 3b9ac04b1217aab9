#include "write_fixture.h"

namespace vantry_sim {
namespace {

const std::string bench = workspacesPath + "/W301";

class CheckoutTest : public WriteTest {
 protected:
  std::vector<std::string> Held(const std::string& workspace, const std::string& user = "anna") {
    const auto list = GetJson(workspacesPath + "/" + workspace + "/documents", user);
    std::vector<std::string> ids;
    for (const auto& document : list.GetArray()) ids.push_back(document["id"].GetString());
    return ids;
  }
  rapidjson::Document Document(const std::string& id, const std::string& user = "anna") {
    return GetJson(documentsPath + "/" + id, user);
  }
};

TEST_F(CheckoutTest, WorkspaceIsMadeForItsOwnerInItsContext) {
  const auto made =
      PostJson(workspacesPath,
               R"({"name":"FenloomTMP0a1b2c3d","contextId":"OR:vn.product.Product:101","description":"d"})");
  const std::string id = made["id"].GetString();
  EXPECT_STREQ(made["name"].GetString(), "FenloomTMP0a1b2c3d");
  EXPECT_STREQ(made["contextId"].GetString(), trekkingContext.c_str());
  EXPECT_STREQ(made["description"].GetString(), "d");
  EXPECT_EQ(Held(id), std::vector<std::string>{});
  EXPECT_EQ(Get(workspacesPath + "/" + id + "/documents", "bruno").status, 404);
}

TEST_F(CheckoutTest, WorkspaceNameIsTakenForOneUserInOneContext) {
  const std::string body = R"({"name":"Anna's bench","contextId":"OR:vn.product.Product:101"})";
  EXPECT_EQ(Outcome(workspacesPath, body), "409 name-taken");
  EXPECT_EQ(Outcome(workspacesPath, body, "bruno"), "200");
  EXPECT_EQ(Outcome(workspacesPath, R"({"name":"Anna's bench","contextId":"OR:vn.product.Product:102"})"),
            "200");
  EXPECT_EQ(Outcome(workspacesPath, R"({"name":"x","contextId":"unknown"})"), "404 no-such-context");
  EXPECT_EQ(Outcome(workspacesPath, R"({"name":"","contextId":"OR:vn.product.Product:101"})"),
            "400 bad-body");
  EXPECT_EQ(Outcome(workspacesPath, R"({"name":7,"contextId":"OR:vn.product.Product:101"})"), "400 bad-body");
}

TEST_F(CheckoutTest, UserThatNobodyKnewMayHaveAWorkspace) {
  EXPECT_EQ(Outcome(workspacesPath, R"({"name":"new","contextId":"OR:vn.product.Product:101"})", "carla"),
            "200");
}

TEST_F(CheckoutTest, CheckoutGivesAWorkingCopyOfTheSameVersionAndLocksTheDocument) {
  const auto answer = PostJson(bench + "/checkout", CheckoutBody("D1003"));
  ASSERT_EQ(answer.Size(), 1U);
  const std::string working = answer[0]["id"].GetString();
  EXPECT_NE(working, "D1003");
  EXPECT_EQ(VersionOf(answer[0]), "B.2");
  EXPECT_TRUE(answer[0]["pdmIterationState"]["isCheckoutByYou"].GetBool());
  EXPECT_STREQ(answer[0]["pdmIterationState"]["checkoutToFolderName"].GetString(), "Anna's bench");
  EXPECT_EQ(answer[0]["cadContent"]["contentSections"][0]["streamId"].GetInt64(), 10030);
  const auto held = Held("W301");
  EXPECT_EQ(std::count(held.begin(), held.end(), working), 1);
  EXPECT_TRUE(Document("D1003")["pdmIterationState"]["isCheckout"].GetBool());
}

TEST_F(CheckoutTest, OtherUserSeesTheCheckoutAndNotTheWorkingCopy) {
  const std::string working = CheckOut("W301", "D1003");
  const auto seen = Document("D1003", "bruno");
  EXPECT_TRUE(seen["pdmIterationState"]["isCheckout"].GetBool());
  EXPECT_FALSE(seen["pdmIterationState"]["isCheckoutByYou"].GetBool());
  EXPECT_STREQ(seen["pdmIterationState"]["checkoutByUser"].GetString(), "anna");
  EXPECT_EQ(Get(documentsPath + "/" + working, "bruno").status, 404);
  EXPECT_EQ(Outcome(workspacesPath + "/W302/checkout", CheckoutBody("D1003"), "bruno"), "409 checked-out");
}

TEST_F(CheckoutTest, WhatIsCheckedOutIsRefusedToItsOwnerToo) {
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D1016")), "409 checked-out");
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D1015")), "409 checked-out");
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D1026")), "409 in-workspace");
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D1017")), "409 in-workspace");
}

TEST_F(CheckoutTest, OnlyTheLatestVersionInTheWorkspacesContextIsCheckedOut) {
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D1103")), "409 not-latest");
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D1013")), "409 other-context");
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D9999")), "404 no-such-document");
  EXPECT_EQ(Outcome(workspacesPath + "/W302/checkout", CheckoutBody("D1003")), "404 no-such-workspace");
  EXPECT_EQ(Outcome(bench + "/checkout", R"({"objIdList":["D1003"],"dependenciesOption":"All"})"),
            "501 not-implemented");
  EXPECT_EQ(Outcome(bench + "/checkout", R"({"objIdList":[]})"), "400 bad-body");
  EXPECT_EQ(Outcome(bench + "/checkout", R"({"objIdList":[1]})"), "400 bad-body");
}

TEST_F(CheckoutTest, WorkspaceThatHoldsTheDocumentWantsAResolution) {
  // W301 holds D1001 without a checkout.
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D1001")), "409 unresolved-conflict");
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D1001", CheckoutResolution("M9999"))),
            "409 unresolved-conflict");
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D1001", CheckinResolution("D1001"))),
            "409 unresolved-conflict");
  EXPECT_FALSE(Document("D1001")["pdmIterationState"]["isCheckout"].GetBool());
  const auto answer = PostJson(bench + "/checkout", CheckoutBody("D1001", CheckoutResolution("M2001")));
  const auto held = Held("W301");
  EXPECT_EQ(std::count(held.begin(), held.end(), "D1001"), 0);
  EXPECT_EQ(std::count(held.begin(), held.end(), answer[0]["id"].GetString()), 1);
}

TEST_F(CheckoutTest, WordsOfAResolutionAreTakenAsTheyAreSpelledOnTheWire) {
  const std::string wellSpelled =
      Resolution("vn.epm.util.EPMConflictType.WORKSPACE_ADD_EXISTING_OBJECT",
                 "vn.epm.util.EPMResolutionType.WORKSPACE_SUBSTITUTE_EXISTING_OBJECT",
                 "vn.epm.EPMDocumentMaster", "M2001");
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D1001", wellSpelled)), "400 bad-resolution");
  const std::string otherType = Resolution(
      "vn.epm.util.EPMConflictType.WORKASPACE_ADD_EXISTING_OBJECT",
      "vn.epm.util.EPMResolutionType.WORKSPACE_SUBSTITUTE_EXISTING_OBJECT", "vn.epm.EPMDocument", "M2001");
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D1001", otherType)), "400 bad-resolution");
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D1001", "[7]")), "400 bad-resolution");
  EXPECT_EQ(Outcome(bench + "/checkout", CheckoutBody("D1001", "7")), "400 bad-body");
}

TEST_F(CheckoutTest, OneRefusedDocumentOfSeveralUndoesThemAll) {
  EXPECT_EQ(Outcome(bench + "/checkout", R"({"objIdList":["D1003","D1016"],"dependenciesOption":"None"})"),
            "409 checked-out");
  EXPECT_FALSE(Document("D1003")["pdmIterationState"]["isCheckout"].GetBool());
  EXPECT_EQ(Held("W301").size(), 3U);
}

TEST_F(CheckoutTest, CheckinMakesTheNextIterationUnderANewId) {
  const auto answer = PostJson(bench + "/checkin", CheckinBody("D1026"));
  ASSERT_EQ(answer.Size(), 1U);
  const std::string id = answer[0]["id"].GetString();
  EXPECT_NE(id, "D1026");
  EXPECT_EQ(VersionOf(answer[0]), "A.2");
  EXPECT_FALSE(answer[0]["pdmIterationState"]["isCheckout"].GetBool());
  EXPECT_TRUE(answer[0]["pdmIterationState"]["isLatest"].GetBool());
  EXPECT_STREQ(answer[0]["locationFolder"]["path"].GetString(), "/Trekking Bike/Drivetrain");
  EXPECT_EQ(answer[0]["cadContent"]["contentSections"][0]["streamId"].GetInt64(), 10260);
  EXPECT_FALSE(Document("D1016")["pdmIterationState"]["isLatest"].GetBool());
  EXPECT_EQ(Get(documentsPath + "/D1026").status, 404);
  const auto held = Held("W301");
  EXPECT_EQ(std::count(held.begin(), held.end(), id), 1);
  EXPECT_STREQ(Document(id, "bruno")["id"].GetString(), id.c_str());
}

TEST_F(CheckoutTest, CheckinMayTakeTheDocumentOutOfTheWorkspace) {
  const auto answer = PostJson(bench + "/checkin", CheckinBody("D1026", ",\"removeFromWorkspace\":true"));
  const auto held = Held("W301");
  EXPECT_EQ(std::count(held.begin(), held.end(), answer[0]["id"].GetString()), 0);
}

TEST_F(CheckoutTest, WhatIsNotCheckedOutIsNotCheckedIn) {
  EXPECT_EQ(Outcome(bench + "/checkin", CheckinBody("D1001")), "409 not-checked-out");
  EXPECT_EQ(Outcome(bench + "/checkin", CheckinBody("D1016")), "409 not-checked-out");
  EXPECT_EQ(Outcome(bench + "/checkin", CheckinBody("D1003")), "409 not-checked-out");
  EXPECT_EQ(Outcome(bench + "/checkin", CheckinBody("D1025")), "404 no-such-document");
  EXPECT_EQ(Outcome(workspacesPath + "/W303/checkin", CheckinBody("D1026")), "409 not-checked-out");
  EXPECT_EQ(Outcome(bench + "/checkin", R"({"checkinInstructions":[]})"), "400 bad-body");
  EXPECT_EQ(Outcome(bench + "/checkin", R"({"checkinInstructions":[{}]})"), "400 bad-body");
}

TEST_F(CheckoutTest, FirstCheckinOfANewDocumentGivesItAFolder) {
  const auto answer = PostJson(bench + "/checkin", CheckinBody("D1017", ",\"checkinComment\":\"first\""));
  EXPECT_EQ(VersionOf(answer[0]), "A.1");
  EXPECT_TRUE(answer[0]["pdmIterationState"]["isLatest"].GetBool());
  EXPECT_STREQ(answer[0]["locationFolder"]["id"].GetString(), "OR:vn.folder.Cabinet:201");
}

TEST_F(CheckoutTest, UndoThrowsTheWorkingCopyAwayAndFreesTheDocument) {
  const auto answer = PostJson(bench + "/undocheckout", R"({"objIdList":["D1026"]})");
  ASSERT_EQ(answer.Size(), 1U);
  EXPECT_STREQ(answer[0]["id"].GetString(), "D1016");
  EXPECT_FALSE(answer[0]["pdmIterationState"]["isCheckout"].GetBool());
  EXPECT_EQ(Get(documentsPath + "/D1026").status, 404);
  EXPECT_EQ(Held("W301"), (std::vector<std::string>{"D1001", "D1016", "D1017"}));
  EXPECT_EQ(Outcome(bench + "/undocheckout", R"({"objIdList":["D1016"]})"), "409 not-checked-out");
  EXPECT_EQ(Outcome(workspacesPath + "/W302/checkout", CheckoutBody("D1016"), "bruno"), "200");
}

TEST_F(CheckoutTest, UndoOfWhatWasNeverCheckedInIsRefused) {
  EXPECT_EQ(Outcome(bench + "/undocheckout", R"({"objIdList":["D1017"]})"), "409 not-checked-out");
  EXPECT_EQ(Outcome(workspacesPath + "/W302/undocheckout", R"({"objIdList":["D1026"]})"),
            "404 no-such-workspace");
}

TEST_F(CheckoutTest, DeletedWorkspaceTakesItsWorkingCopiesWithIt) {
  EXPECT_EQ(Outcome(bench + "/delete", "{}"), "400 bad-body");
  EXPECT_EQ(Outcome(bench + "/delete", "[]", "bruno"), "404 no-such-workspace");
  EXPECT_EQ(Outcome(bench + "/delete", "[]"), "200");
  EXPECT_EQ(Get(bench + "/documents").status, 404);
  EXPECT_EQ(Get(documentsPath + "/D1026").status, 404);
  EXPECT_EQ(Get(documentsPath + "/D1017").status, 404);
  EXPECT_FALSE(Document("D1016")["pdmIterationState"]["isCheckout"].GetBool());
  EXPECT_EQ(Get(documentsPath + "/D1001").status, 200);
  EXPECT_EQ(Outcome(bench + "/delete", "[]"), "404 no-such-workspace");
}

TEST_F(CheckoutTest, WholeRoundThroughATemporaryWorkspace) {
  const auto made = PostJson(workspacesPath, R"({"name":"T1","contextId":"OR:vn.product.Product:101"})");
  const std::string workspace = made["id"].GetString();
  const std::string working = CheckOut(workspace, "D1002");
  const auto in = PostJson(workspacesPath + "/" + workspace + "/checkin",
                           CheckinBody(working, ",\"removeFromWorkspace\":true,\"conflictResolutions\":" +
                                                    CheckinResolution(working)));
  EXPECT_EQ(VersionOf(in[0]), "A.4");
  EXPECT_EQ(Outcome(workspacesPath + "/" + workspace + "/delete", "[]"), "200");
  EXPECT_EQ(GetJson(documentsPath + "/D1002/versions?contextId=OR%3Avn.product.Product%3A101").Size(), 4U);
}

}  // namespace
}  // namespace vantry_sim
