#include "write_fixture.h"

namespace vantry_sim {
namespace {

const std::string registerPath = "/servlet/rest/v1/dkm/registerauthappversions";

TEST_F(WriteTest, EveryWriteNeedsTheNonce) {
  const std::string nonce = Nonce();
  for (const std::string& target :
       {workspacesPath, workspacesPath + "/W301/delete", workspacesPath + "/W301/checkout",
        workspacesPath + "/W301/checkin", workspacesPath + "/W301/undocheckout",
        workspacesPath + "/W301/store", documentsPath, registerPath,
        std::string("/servlet/rest/v1/content/creationFactory"),
        std::string("/servlet/rest/content/creationFactory")}) {
    Request request;
    request.method = "POST";
    request.target = target;
    request.user = "anna";
    request.contentType = "application/json";
    request.body = "[]";
    EXPECT_EQ(simulator_->Handle(request).status, 403) << target;
    request.nonce = nonce + "x";
    EXPECT_EQ(simulator_->Handle(request).status, 403) << target;
    request.nonce = nonce;
    EXPECT_NE(simulator_->Handle(request).status, 403) << target;
  }
}

TEST_F(WriteTest, NonceIsTheSameBehindARestartAndByBothRoads) {
  const std::string nonce = Nonce();
  Start();
  EXPECT_EQ(Nonce(), nonce);
  EXPECT_EQ(GetJson("/servlet/odata/v1/ZVK/GetCSRFToken()")["NonceValue"].GetString(), nonce);
}

TEST_F(WriteTest, BodyMustBeJsonAndSayso) {
  EXPECT_EQ(Outcome(workspacesPath, ""), "400 broken-json");
  EXPECT_EQ(Outcome(workspacesPath, "{"), "400 broken-json");
  EXPECT_EQ(Outcome(workspacesPath, "{} x"), "400 broken-json");
  EXPECT_EQ(Outcome(workspacesPath, "{\"name\":\"\xFF\"}"), "400 broken-json");
  EXPECT_EQ(Outcome(workspacesPath, R"({"n":1.11111111111111111111e-2147483639})"), "400 bad-body");
  EXPECT_EQ(Outcome(workspacesPath, std::string(2'000'000, '[')), "400 broken-json");
  EXPECT_EQ(Outcome(workspacesPath, std::string(1'000'000, '[') + std::string(1'000'000, ']')),
            "400 bad-body");
  Request request;
  request.method = "POST";
  request.target = workspacesPath;
  request.user = "anna";
  request.nonce = Nonce();
  request.contentType = "text/plain";
  request.body = "{}";
  EXPECT_EQ(simulator_->Handle(request).status, 415);
}

TEST_F(WriteTest, ReadsOfAWriteRouteAndWritesOfAReadRouteAreRefused) {
  EXPECT_EQ(Get(registerPath).status, 405);
  EXPECT_EQ(Post("/servlet/rest/v1/contexts", "{}").status, 405);
}

TEST_F(WriteTest, ApplicationVersionsAreRegisteredWithoutAnAnswer) {
  const Response response = Post(
      registerPath, R"([{ "authoringApplication":"MERIDOX", "authAppVersion":310, "ndVersions":["J-01"] }])");
  EXPECT_EQ(response.status, 204);
  EXPECT_EQ(response.body, "");
  EXPECT_EQ(
      Outcome(registerPath, R"([{"authoringApplication":"MERIDOX","authAppVersion":"310","ndVersions":[]}])"),
      "400 bad-body");
  EXPECT_EQ(Outcome(registerPath, "[]"), "400 bad-body");
  EXPECT_EQ(Outcome(registerPath, "{}"), "400 bad-body");
  simulator_.reset();
  Database database((directory_ / "data/vantry-sim.db").string());
  auto statement = database.Prepare("SELECT application, version FROM application_versions");
  ASSERT_TRUE(statement.Step());
  EXPECT_EQ(statement.Text(0) + " " + statement.Text(1), "MERIDOX 310");
  EXPECT_FALSE(statement.Step());
}

}  // namespace
}  // namespace vantry_sim
