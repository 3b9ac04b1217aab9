#include "connection/odata_services.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/support/scripted_transport.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using vtdirect_test::SentRequest;

const std::string server = "http://plm.example/vt";
const std::string readHeaders =
    "OData-Version: 4.0\r\nOData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000\r\n"
    "Accept: application/json";

class ODataServices : public testing::Test {
 protected:
  vtdirect_test::ScriptedTransport transport;
  VtConnection connection{server, [](const char*) { return false; }};
};

TEST_F(ODataServices, TheServiceListIsOneODataRead) {
  transport.Then(200, "[]");
  EXPECT_THAT(GetODataDomains(connection), IsEmpty());
  EXPECT_THAT(transport.requests(),
              ElementsAre(SentRequest{server, "GET /vt/servlet/odata/", readHeaders, std::nullopt}));
}

TEST_F(ODataServices, EachObjectGivesItsFourTexts) {
  transport.Then(200, R"([{"path":"p","name":"n","description":"d","id":"i","more":"m"},{"id":"j"}])");
  const auto domains = GetODataDomains(connection);
  ASSERT_THAT(domains, SizeIs(2));
  EXPECT_EQ(domains[0].path, "p");
  EXPECT_EQ(domains[0].name, "n");
  EXPECT_EQ(domains[0].description, "d");
  EXPECT_EQ(domains[0].id, "i");
  EXPECT_EQ(domains[1].path, "");
  EXPECT_EQ(domains[1].name, "");
  EXPECT_EQ(domains[1].description, "");
  EXPECT_EQ(domains[1].id, "j");
}

TEST_F(ODataServices, EachElementGivesAnEntryEvenWhatIsNoObject) {
  transport.Then(200, R"([1,null,"id",[{"id":"x"}],{"id":2,"name":"n"}])");
  const auto domains = GetODataDomains(connection);
  ASSERT_THAT(domains, SizeIs(5));
  for (const auto& domain : domains) EXPECT_EQ(domain.id, "");
  EXPECT_EQ(domains[4].name, "n");
}

TEST_F(ODataServices, AFailedListIsEmpty) {
  transport.Then(500, R"([{"id":"i"}])")
      .Then(302, R"([{"id":"i"}])")
      .Then(200, R"({"value":[{"id":"i"}]})")
      .Then(200, R"([{"id":"i"})")
      .Then(204)
      .ThenFail(du::http::ErrorCode::TimedOut);
  for (int turn = 0; turn < 6; ++turn) EXPECT_THAT(GetODataDomains(connection), IsEmpty()) << turn;
}

TEST_F(ODataServices, ADomainIsFoundByItsExactIdAndAskedForAnewEachTime) {
  const char* list = R"([{"id":"DynamicDocMgmt"},{"name":"Visualization"},1])";
  for (int turn = 0; turn < 5; ++turn) transport.Then(200, list);
  EXPECT_TRUE(HasODataDomain(connection, "DynamicDocMgmt"));
  EXPECT_FALSE(HasODataDomain(connection, "dynamicdocmgmt"));
  EXPECT_FALSE(HasODataDomain(connection, "DynamicDoc"));
  EXPECT_FALSE(HasODataDomain(connection, "Visualization"));
  // The list has entries without an id.
  EXPECT_TRUE(HasODataDomain(connection, ""));
  EXPECT_EQ(transport.requests().size(), 5U);
}

TEST_F(ODataServices, NoDomainIsFoundInAFailedList) {
  transport.Then(404);
  EXPECT_FALSE(HasODataDomain(connection, ""));
}

TEST_F(ODataServices, AnAssemblyIsAskedForByItsNameAsItStands) {
  transport.Then(200, R"({"value":"true"})").Then(200, R"({"value":"true"})");
  EXPECT_TRUE(IsAssemblyInstalled(connection, "zvk.nrx"));
  EXPECT_TRUE(IsAssemblyInstalled(connection, "a b'%"));
  EXPECT_THAT(
      transport.requests(),
      ElementsAre(
          SentRequest{server, "GET /vt/servlet/odata/v1/ZVK/IsAssemblyInstalled(assemblyName='zvk.nrx')",
                      readHeaders, std::nullopt},
          SentRequest{server, "GET /vt/servlet/odata/v1/ZVK/IsAssemblyInstalled(assemblyName='a b'%')",
                      readHeaders, std::nullopt}));
}

TEST_F(ODataServices, OnlyTheTextTrueSaysThatAnAssemblyIsInstalled) {
  for (const char* body :
       {R"({"value":true})", R"({"value":"TRUE"})", R"({"value":"true "})", R"({"value":1})",
        R"({"value":"false"})", R"({"value":""})", R"({})", R"(["true"])", R"("true")", R"({"Value":"true"})",
        R"({"value":"true")", "", R"({"value":"true\u0000"})"}) {
    transport.Then(200, body);
    EXPECT_FALSE(IsAssemblyInstalled(connection, "a")) << body;
  }
}

TEST_F(ODataServices, AFailedQuestionSaysThatAnAssemblyIsNotInstalled) {
  transport.Then(500, R"({"value":"true"})")
      .Then(404, R"({"value":"true"})")
      .ThenFail(du::http::ErrorCode::TimedOut);
  for (int turn = 0; turn < 3; ++turn) EXPECT_FALSE(IsAssemblyInstalled(connection, "a"));
}

}  // namespace
