#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

const std::string workspacesPath = "/servlet/rest/v1/dkm/workspaces";
const std::string ofTrekking = workspacesPath + "?contextId=OR%3Avn.product.Product%3A101";

TEST_F(SimulatorTest, WorkspacesAreAnArrayOfOnesOwn) {
  const auto list = GetJson(ofTrekking);
  ASSERT_EQ(list.Size(), 1U);
  EXPECT_STREQ(list[0]["id"].GetString(), "W301");
  EXPECT_STREQ(list[0]["name"].GetString(), "Anna's bench");
  EXPECT_STREQ(list[0]["description"].GetString(), "What Anna is working on");
  EXPECT_STREQ(list[0]["contextId"].GetString(), "OR:vn.product.Product:101");
  EXPECT_STREQ(GetJson(ofTrekking, "bruno")[0]["id"].GetString(), "W302");
  EXPECT_EQ(GetJson(workspacesPath + "?contextId=unknown").Size(), 0U);
  EXPECT_EQ(Get(workspacesPath).status, 400);
}

TEST_F(SimulatorTest, WorkspaceShowsItsDocuments) {
  const auto documents = GetJson(workspacesPath + "/W301/documents");
  ASSERT_EQ(documents.Size(), 3U);
  EXPECT_STREQ(documents[0]["id"].GetString(), "D1001");
  EXPECT_FALSE(documents[0]["pdmIterationState"]["isCheckout"].GetBool());
  EXPECT_STREQ(documents[1]["id"].GetString(), "D1026");
  EXPECT_STREQ(documents[1]["epmMaster"]["cadName"].GetString(), "crank.lxz");
  EXPECT_TRUE(documents[1]["pdmIterationState"]["isCheckoutByYou"].GetBool());
  EXPECT_STREQ(documents[2]["id"].GetString(), "D1017");
  EXPECT_EQ(GetJson(workspacesPath + "/W303/documents").Size(), 0U);
}

TEST_F(SimulatorTest, SomebodyElsesWorkspaceIsNotThere) {
  EXPECT_EQ(Get(workspacesPath + "/W302/documents").status, 404);
  EXPECT_EQ(Get(workspacesPath + "/W302/documents", "bruno").status, 200);
  EXPECT_EQ(Get(workspacesPath + "/W999/documents").status, 404);
}

}  // namespace
}  // namespace vantry_sim
