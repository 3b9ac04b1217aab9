#include "browsing/hvd_features.h"
#include "connection/vt_connection.h"
#include "tests/wire/public/listed_server.h"

namespace {

using namespace VtDirectManager;
using namespace lxservices::cms_interface;
using namespace vtdirect_test;

constexpr const char* featureLine = "GET /vt/servlet/odata/v3/Visualization/GetHVDFeatures()";

using ServerFeatures = ListedServerTest;

std::string Feature(const char* name, const char* values) {
  return std::string(R"({"FeatureName":")") + name + R"(","FeatureValues":)" + values + "}";
}

class FeatureReading : public ListedServerTest {
 protected:
  // What is read into two switches that were as given: "separated info", as two digits.
  std::string Read(bool separated, bool info) {
    const auto features = vantry::ReadHvdFeatures(Begin(connection), {separated, info});
    return std::string(features.separatedSources ? "1" : "0") + (features.vcsInfo ? "1" : "0");
  }

  std::shared_ptr<vantry::VtConnection> connection =
      std::make_shared<vantry::VtConnection>(plmUrl, [](const char*) { return false; });
};

TEST_F(ServerFeatures, AreReadByOneRequestAndRemembered) {
  transport.Then(200, R"({"value":[)" + Feature("SeparatedsourceQ7zk", R"(["true"])") + "," +
                          Feature("uploadvcsinfo", R"(["false"])") + "]}");
  EXPECT_TRUE(SupportsSeparatedSources("//plm/a"));
  EXPECT_FALSE(SupportsVCSMetadata(uidOfD1));
  EXPECT_TRUE(SupportsSeparatedSources(uidOfD1));
  EXPECT_EQ(transport.requests(),
            (Requests{{plmUrl,
                       featureLine,
                       "OData-Version: 4.0\r\nOData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000\r\n"
                       "Accept: application/json",
                       {}}}));
}

TEST_F(ServerFeatures, OfAServerThatFailedOnceAreAnsweredNoForGood) {
  transport.Then(500).Then(200, R"({"value":[)" + Feature("uploadvcsinfo", R"(["true"])") + "]}");
  EXPECT_FALSE(SupportsVCSMetadata("//plm"));
  EXPECT_FALSE(SupportsVCSMetadata("//plm"));
  EXPECT_FALSE(SupportsSeparatedSources("//plm"));
  EXPECT_EQ(transport.lines(), Lines{featureLine});
}

TEST_F(ServerFeatures, AreReadAnewForANewServerObject) {
  transport.Then(500).Then(200, R"({"value":[)" + Feature("uploadvcsinfo", R"(["true"])") + "]}");
  EXPECT_FALSE(SupportsVCSMetadata("//plm"));
  UpdateServerList({});
  UpdateServerList({{"plm", plmUrl}});
  EXPECT_TRUE(SupportsVCSMetadata("//plm"));
}

TEST_F(FeatureReading, TakesEachSwitchByItsName) {
  transport.Then(200, R"({"value":[)" + Feature("SeparatedsourceQ7zk", R"(["true"])") + "]}")
      .Then(200, R"({"value":[)" + Feature("uploadvcsinfo", R"(["true"])") + "]}");
  EXPECT_EQ(Read(false, false), "10");
  EXPECT_EQ(Read(false, false), "01");
}

TEST_F(FeatureReading, LetsTheLastValueWin) {
  transport.Then(200, R"({"value":[)" + Feature("SeparatedsourceQ7zk", R"(["true","false"])") + "," +
                          Feature("uploadvcsinfo", R"(["false"])") + "," +
                          Feature("uploadvcsinfo", R"(["true"])") + "]}");
  EXPECT_EQ(Read(false, false), "01");
}

TEST_F(FeatureReading, IsChangedByNoOtherText) {
  transport.Then(200, R"({"value":[)" +
                          Feature("SeparatedsourceQ7zk", R"(["True","yes","",true,1,null,["true"],{}])") +
                          "," + Feature("uploadvcsinfo", R"(["False","0",false])") + "]}");
  EXPECT_EQ(Read(false, true), "01");
}

TEST_F(FeatureReading, ClearsASwitchThatStood) {
  transport.Then(200, R"({"value":[)" + Feature("SeparatedsourceQ7zk", R"(["false"])") + "]}");
  EXPECT_EQ(Read(true, true), "01");
}

TEST_F(FeatureReading, PassesOverRowsThatAreNoFeatures) {
  transport.Then(200, R"({"value":[7,null,"x",[],{},{"FeatureName":"uploadvcsinfo"},
      {"FeatureName":7,"FeatureValues":["true"]},{"FeatureValues":["true"]},
      {"FeatureName":"uploadvcsinfo","FeatureValues":"true"},
      {"FeatureName":"Uploadvcsinfo","FeatureValues":["true"]}]})");
  EXPECT_EQ(Read(false, false), "00");
}

TEST_F(FeatureReading, TakesAnAnswerWithoutAListForNoFeature) {
  for (const char* body : {"{}", "[]", "7", R"({"value":{}})", R"([{"value":[]}])"}) {
    transport.Then(200, body);
    EXPECT_EQ(Read(false, true), "01") << body;
  }
}

TEST_F(FeatureReading, ReadsEveryPage) {
  transport
      .Then(200, R"({"value":[)" + Feature("uploadvcsinfo", R"(["true"])") +
                     R"(],"@odata.nextLink":"https://plm.example/vt/next?$skip=1"})")
      .Then(200, R"({"value":[)" + Feature("SeparatedsourceQ7zk", R"(["true"])") + "]}");
  EXPECT_EQ(Read(false, false), "11");
  EXPECT_EQ(transport.lines(), (Lines{featureLine, "GET /vt/next?$skip=1"}));
}

TEST_F(FeatureReading, FailsWhenAPageFailsAndKeepsWhatItHas) {
  transport
      .Then(200, R"({"value":[)" + Feature("uploadvcsinfo", R"(["true"])") +
                     R"(],"@odata.nextLink":"https://plm.example/vt/next"})")
      .Then(500);
  EXPECT_EQ(Read(false, false), "01");
}

TEST_F(FeatureReading, FailsForAnAnswerThatIsNoJson) {
  transport.Then(200, "<html>").Then(401).ThenFail(du::http::ErrorCode::NoConnection);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Read(false, false), "00");
}

}  // namespace
