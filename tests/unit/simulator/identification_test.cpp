#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

TEST_F(SimulatorTest, InformationDocumentTellsTheVersionInLines) {
  options_.version = {11, 1, 10, 3};
  const Response response = Get("/servlet/OrvetGW");
  EXPECT_EQ(response.status, 200);
  EXPECT_EQ(response.body,
            "ServerName:vantry-sim\n"
            "ServerMajorVersion:11\n"
            "ServerMinorVersion:1\n"
            "ServerServicepackVersion:10\n"
            "ServerCPSVersion:3\n"
            "ServerGeneration:schema5\n");
}

TEST_F(SimulatorTest, InformationDocumentTellsAnAddressOnlyWhenItWasGivenOne) {
  options_.codebaseUrl = "https://pdm.example/vt";
  EXPECT_TRUE(Get("/servlet/OrvetGW").body.ends_with("CodebaseURL:https://pdm.example/vt\n"));
}

TEST_F(SimulatorTest, BothRoutesGiveTheSameNonce) {
  const auto rest = GetJson("/servlet/rest/security/csrf");
  ASSERT_EQ(rest["items"].Size(), 1U);
  EXPECT_STREQ(rest["items"][0]["id"].GetString(), "csrf");
  const auto odata = GetJson("/servlet/odata/v1/ZVK/GetCSRFToken()");
  EXPECT_STREQ(rest["items"][0]["attributes"]["nonce_key"].GetString(), odata["NonceKey"].GetString());
  EXPECT_STREQ(rest["items"][0]["attributes"]["nonce"].GetString(), odata["NonceValue"].GetString());
  EXPECT_EQ(odata["NonceValue"].GetStringLength(), 32U);
}

TEST_F(SimulatorTest, AssemblyAnswerIsAText) {
  const auto installed = GetJson("/servlet/odata/v1/ZVK/IsAssemblyInstalled(assemblyName='kotia')");
  EXPECT_STREQ(installed["value"].GetString(), "true");
  const auto unknown = GetJson("/servlet/odata/v1/ZVK/IsAssemblyInstalled(assemblyName='other')");
  EXPECT_STREQ(unknown["value"].GetString(), "false");
}

TEST_F(SimulatorTest, ContextsAreListedByKindOrAllTogether) {
  EXPECT_EQ(GetJson("/servlet/rest/v1/contexts")["items"].Size(), 9U);
  const auto products = GetJson("/servlet/rest/v1/contexts?type=Product");
  ASSERT_EQ(products["items"].Size(), 2U);
  const auto& bike = products["items"][1];
  EXPECT_STREQ(bike["id"].GetString(), "OR:vn.product.Product:101");
  EXPECT_STREQ(bike["typeId"].GetString(), "vn.product.Product");
  EXPECT_STREQ(bike["attributes"]["name"].GetString(), "Trekking Bike");
  EXPECT_STREQ(bike["attributes"]["type"].GetString(), "Product");
  EXPECT_STREQ(bike["attributes"]["organizationReference.name"].GetString(), "Kettenblitz");
  EXPECT_EQ(Get("/servlet/rest/v1/contexts?type=product").status, 400);
}

TEST_F(SimulatorTest, VisualizationFeaturesAreTexts) {
  const auto features = GetJson("/servlet/odata/v3/Visualization/GetHVDFeatures()");
  ASSERT_EQ(features["value"].Size(), 2U);
  EXPECT_STREQ(features["value"][0]["FeatureName"].GetString(), "SeparatedsourceQ7zk");
  EXPECT_STREQ(features["value"][0]["FeatureValues"][0].GetString(), "true");
  EXPECT_STREQ(features["value"][1]["FeatureName"].GetString(), "uploadvcsinfo");
}

TEST_F(SimulatorTest, RoutesStandBehindThePrefixAlone) {
  options_.prefix = "/vt";
  EXPECT_EQ(Get("/vt/servlet/OrvetGW").status, 200);
  EXPECT_EQ(Get("/servlet/OrvetGW").status, 404);
  EXPECT_EQ(Get("/vtservlet/OrvetGW").status, 404);
}

TEST_F(SimulatorTest, TargetInAbsoluteFormIsUnderstood) {
  EXPECT_EQ(Get("http://elsewhere.example/servlet/OrvetGW").status, 200);
  EXPECT_EQ(Get("servlet/OrvetGW").status, 400);
}

}  // namespace
}  // namespace vantry_sim
