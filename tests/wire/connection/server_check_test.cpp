#include "connection/server_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using du::http::ErrorCode;
using testing::ElementsAre;
using testing::IsEmpty;
using vtdirect_test::Answer;
using vtdirect_test::SentRequest;
using vtdirect_test::TraceLine;

const std::string url = "http://plm.example/vt";
constexpr const char* informationLine = "GET /vt/servlet/OrvetGW";
constexpr const char* schemaLine = "GET /vt/servlet/odata/DynamicDocMgmt/$metadata";
constexpr const char* contextsLine = "GET /vt/servlet/rest/v1/contexts";
constexpr const char* schema = "<Schema/>";

// An information document.
std::string Information(int major, int minor, int servicePack, int cps, const std::string& codebaseUrl = {}) {
  std::string text = "ServerMajorVersion:" + std::to_string(major) +
                     "\nServerMinorVersion:" + std::to_string(minor) +
                     "\nServerServicepackVersion:" + std::to_string(servicePack) +
                     "\nServerCPSVersion:" + std::to_string(cps) + "\n";
  if (!codebaseUrl.empty()) text += "CodebaseURL:" + codebaseUrl + "\n";
  return text;
}

TraceLine NoSchema(const std::string& server) {
  return {0, "CmsInterface",
          "Failed to get schema info servlet/odata/DynamicDocMgmt/$metadata from server " + server};
}
TraceLine NoUsefulData(const std::string& server) {
  return {3, "VtDirect", "Failed to get useful data from server " + server + " treating as unsupported"};
}
TraceLine NoVersion(const std::string& server) {
  return {3, "VtDirect", "Failed to get version info from server " + server + " treating as unsupported"};
}
TraceLine Passed(const std::string& server, const std::string& version) {
  return {0, "VtDirect", "Server " + server + " (version: " + version + ") passed our checks OK"};
}
TraceLine TooOld(const std::string& version) {
  return {3, "VtDirect", "Server version: " + version + " unsupported, at least: 11.0 M030 is required"};
}

class CheckServerTest : public testing::Test {
 protected:
  ~CheckServerTest() override {
    EXPECT_THAT(directory.Entries(), IsEmpty());
    EXPECT_THAT(trace.strayAreas(), IsEmpty());
    EXPECT_EQ(transport.unanswered(), 0U);
  }

  Status Check(const std::string& server = url) {
    return CheckServer(
        server.c_str(),
        [this](const char* asking) {
          asked.emplace_back(asking);
          return true;
        },
        &redirect);
  }

  vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::TraceRecorder trace;
  vtdirect_test::ScriptedTransport transport;
  std::vector<std::string> asked;
  std::string redirect = "as it was";
};

TEST_F(CheckServerTest, AGoodServerIsAskedForItsInformationAndItsSchema) {
  transport.Then(200, Information(12, 0, 5, 3)).Then(200, schema);
  EXPECT_EQ(Check(), Ok);
  EXPECT_EQ(redirect, "");
  EXPECT_THAT(transport.requests(), ElementsAre(SentRequest{url, informationLine, "", std::nullopt},
                                                SentRequest{url, schemaLine, "", std::nullopt}));
  EXPECT_THAT(transport.connections(), ElementsAre(url));
  EXPECT_THAT(trace.lines(), ElementsAre(Passed(url, "12.0 M005 CPS 3")));
}

TEST_F(CheckServerTest, AServerWithoutTheSchemaThatListsContextsPasses) {
  transport.Then(200, Information(12, 0, 0, 0)).Then(404).Then(200, R"({"items":[]})");
  EXPECT_EQ(Check(), Ok);
  EXPECT_EQ(redirect, "");
  EXPECT_THAT(transport.requests(),
              ElementsAre(SentRequest{url, informationLine, "", std::nullopt},
                          SentRequest{url, schemaLine, "", std::nullopt},
                          SentRequest{url, contextsLine, "Accept: application/json", std::nullopt}));
  EXPECT_THAT(trace.lines(), ElementsAre(NoSchema(url), Passed(url, "12.0 F000")));
}

TEST_F(CheckServerTest, ABrokenListOfContextsIsStillUsefulData) {
  transport.Then(200, Information(12, 0, 0, 0)).Then(500).Then(200, "{");
  EXPECT_EQ(Check(), Ok);
}

TEST_F(CheckServerTest, ABrokenSchemaLeadsToTheContexts) {
  transport.Then(200, Information(12, 0, 0, 0)).Then(200, "<a></b>" + std::string(600, ' ')).Then(200, "[]");
  EXPECT_EQ(Check(), Ok);
  EXPECT_THAT(transport.lines(), ElementsAre(informationLine, schemaLine, contextsLine));
  EXPECT_THAT(trace.lines(),
              ElementsAre(TraceLine{3, "CmsInterface", "XML parse error"}, Passed(url, "12.0 F000")));
}

TEST_F(CheckServerTest, AServerThatGivesNoInformationIsConnectionFailedAndAskedNothingElse) {
  for (const int status : {404, 500, 401, 204, 302}) {
    trace.Clear();
    transport.ClearRequests();
    transport.Then(status, Information(12, 0, 0, 0));
    EXPECT_EQ(Check(), ConnectionFailed) << status;
    EXPECT_EQ(redirect, "as it was") << status;
    EXPECT_THAT(transport.lines(), ElementsAre(informationLine)) << status;
    EXPECT_THAT(trace.lines(), ElementsAre(NoVersion(url))) << status;
  }
}

TEST_F(CheckServerTest, AServerThatCannotBeReachedIsConnectionFailed) {
  transport.ThenFail(ErrorCode::NoConnection);
  EXPECT_EQ(Check(), ConnectionFailed);
  EXPECT_EQ(redirect, "as it was");
  EXPECT_THAT(trace.lines(), ElementsAre(NoVersion(url)));
}

TEST_F(CheckServerTest, AnAddressThatNoConnectionCanBeMadeForIsConnectionFailed) {
  transport.RefuseConnections(2);
  EXPECT_EQ(Check("nonsense"), ConnectionFailed);
  EXPECT_THAT(transport.requests(), IsEmpty());
  EXPECT_THAT(trace.lines(), ElementsAre(NoVersion("nonsense")));
}

TEST_F(CheckServerTest, TheMinimumVersionItselfPasses) {
  transport.Then(200, Information(11, 0, 30, 0)).Then(200, schema);
  EXPECT_EQ(Check(), Ok);
  EXPECT_THAT(trace.lines(), ElementsAre(Passed(url, "11.0 M030")));
}

TEST_F(CheckServerTest, AHigherMinorVersionPassesWithoutAServicePack) {
  transport.Then(200, Information(11, 1, 0, 0)).Then(200, schema);
  EXPECT_EQ(Check(), Ok);
  EXPECT_THAT(trace.lines(), ElementsAre(Passed(url, "11.1 F000")));
}

TEST_F(CheckServerTest, ALowerServicePackFailsWhateverItsCps) {
  transport.Then(200, Information(11, 0, 29, 9));
  EXPECT_EQ(Check(), Unsupported);
  EXPECT_THAT(transport.lines(), ElementsAre(informationLine));
  EXPECT_THAT(trace.lines(), ElementsAre(TooOld("11.0 M029 CPS 9")));
}

TEST_F(CheckServerTest, ALowerMajorVersionFails) {
  transport.Then(200, Information(10, 99, 99, 99));
  EXPECT_EQ(Check(), Unsupported);
  EXPECT_THAT(trace.lines(), ElementsAre(TooOld("10.99 M099 CPS 99")));
}

TEST_F(CheckServerTest, ADocumentWithoutAVersionIsRefusedAsVersionZero) {
  transport.Then(200, "<html>sign in</html>");
  EXPECT_EQ(Check(), Unsupported);
  EXPECT_THAT(trace.lines(), ElementsAre(TooOld("0.0 F000")));
}

TEST_F(CheckServerTest, ANegativeNumberCountsAsVeryHigh) {
  transport.Then(200, Information(-1, 0, 0, 0)).Then(200, schema);
  EXPECT_EQ(Check(), Ok);
  EXPECT_THAT(trace.lines(), ElementsAre(Passed(url, "4294967295.0 F000")));
}

TEST_F(CheckServerTest, AServerRefusedForItsVersionLeavesTheRedirectAsItWas) {
  transport.Then(200, Information(11, 0, 29, 0, "http://other.example/vt"));
  EXPECT_EQ(Check(), Unsupported);
  EXPECT_EQ(redirect, "as it was");
  EXPECT_THAT(transport.connections(), ElementsAre(url));
}

TEST_F(CheckServerTest, AServerWithoutUsefulDataIsConnectionFailedAndEmptiesTheRedirect) {
  for (const int status : {500, 404, 403}) {
    trace.Clear();
    redirect = "as it was";
    transport.Then(200, Information(12, 0, 0, 0)).Then(404).Then(status);
    EXPECT_EQ(Check(), ConnectionFailed) << status;
    EXPECT_EQ(redirect, "") << status;
    EXPECT_THAT(trace.lines(), ElementsAre(NoSchema(url), NoUsefulData(url))) << status;
  }
}

TEST_F(CheckServerTest, AServerThatBreaksOffDuringTheProbeIsConnectionFailed) {
  transport.Then(200, Information(12, 0, 0, 0))
      .ThenFail(ErrorCode::ProtocolFailure)
      .ThenFail(ErrorCode::TimedOut);
  EXPECT_EQ(Check(), ConnectionFailed);
  EXPECT_THAT(trace.lines(), ElementsAre(NoSchema(url), NoUsefulData(url)));
}

TEST_F(CheckServerTest, ADemandOnTheContextsThatNobodyMeetsIsUnauthorized) {
  transport.Then(200, Information(12, 0, 0, 0)).Then(401).Then(401);
  EXPECT_EQ(Check(), Unauthorized);
  EXPECT_EQ(redirect, "");
  EXPECT_THAT(trace.lines(), ElementsAre(NoSchema(url), NoUsefulData(url)));
}

TEST_F(CheckServerTest, ADemandOnTheSchemaAloneIsNotTheEnd) {
  transport.Then(200, Information(12, 0, 0, 0)).Then(401).Then(200, "[]");
  EXPECT_EQ(Check(), Ok);
}

TEST_F(CheckServerTest, FollowsTheServersOwnAddressAndProbesThatAlone) {
  const std::string own = "http://main.example:8080/app";
  transport.Then(200, Information(12, 0, 0, 0, own)).Then(404).Then(200, "[]");
  EXPECT_EQ(Check(), Ok);
  EXPECT_EQ(redirect, own);
  EXPECT_THAT(
      transport.requests(),
      ElementsAre(
          SentRequest{url, informationLine, "", std::nullopt},
          SentRequest{own, "GET /app/servlet/odata/DynamicDocMgmt/$metadata", "", std::nullopt},
          SentRequest{own, "GET /app/servlet/rest/v1/contexts", "Accept: application/json", std::nullopt}));
  EXPECT_THAT(transport.connections(), ElementsAre(url, own));
  EXPECT_THAT(trace.lines(), ElementsAre(NoSchema(own), Passed(url, "12.0 F000")));
}

TEST_F(CheckServerTest, AnAddressOfItsOwnWithoutUsefulDataFailsTheServer) {
  const std::string own = "http://main.example/app";
  transport.Then(200, Information(12, 0, 0, 0, own)).Then(500).Then(500);
  EXPECT_EQ(Check(), ConnectionFailed);
  EXPECT_EQ(redirect, "");
  // Told by the address that was asked about; that one is not probed in its turn.
  EXPECT_THAT(trace.lines(), ElementsAre(NoSchema(own), NoUsefulData(url)));
  EXPECT_EQ(transport.requests().size(), 3U);
}

TEST_F(CheckServerTest, AnAddressOfItsOwnThatDemandsAuthenticationIsUnauthorized) {
  transport.Then(200, Information(12, 0, 0, 0, "http://main.example/app")).Then(404).Then(401);
  EXPECT_EQ(Check(), Unauthorized);
  EXPECT_EQ(redirect, "");
}

TEST_F(CheckServerTest, TheSameAddressIsNoRedirect) {
  transport.Then(200, Information(12, 0, 0, 0, url)).Then(200, schema);
  EXPECT_EQ(Check(), Ok);
  EXPECT_EQ(redirect, "");
  EXPECT_THAT(transport.connections(), ElementsAre(url));
}

TEST_F(CheckServerTest, AnAddressThatDiffersByItsClosingSlashCountsAsAnother) {
  const std::string withSlash = url + "/";
  transport.Then(200, Information(12, 0, 0, 0, withSlash)).Then(200, schema);
  EXPECT_EQ(Check(withSlash), Ok);
  // The server's own address has lost its slash by then.
  EXPECT_EQ(redirect, url);
  EXPECT_THAT(transport.connections(), ElementsAre(withSlash, url));
  EXPECT_THAT(trace.lines(), ElementsAre(Passed(withSlash, "12.0 F000")));
}

TEST_F(CheckServerTest, NeverLeavesHttps) {
  const std::string secure = "https://plm.example/vt";
  transport.Then(200, Information(12, 0, 0, 0, "http://plm.example/vt")).Then(200, schema);
  EXPECT_EQ(Check(secure), Ok);
  EXPECT_EQ(redirect, "");
  EXPECT_THAT(transport.connections(), ElementsAre(secure));
  EXPECT_EQ(transport.requests()[1].server, secure);
}

TEST_F(CheckServerTest, NeverLeavesHttpsForAnythingElse) {
  const std::string secure = "https://plm.example/vt";
  for (const char* own : {"HTTPS://plm.example/vt", "plm.example/vt", " https://plm.example/vt",
                          "ftp://plm.example", "httpss://plm.example"}) {
    redirect = "as it was";
    transport.Then(200, Information(12, 0, 0, 0, own)).Then(200, schema);
    EXPECT_EQ(Check(secure), Ok) << own;
    EXPECT_EQ(redirect, "") << own;
    EXPECT_EQ(transport.requests().back().server, secure) << own;
  }
}

TEST_F(CheckServerTest, AnIgnoredAddressLeavesTheProbeToTheFirstConnectionAndItsFailure) {
  const std::string secure = "https://plm.example/vt";
  transport.Then(200, Information(12, 0, 0, 0, "http://plm.example/vt")).Then(404).Then(401);
  EXPECT_EQ(Check(secure), Unauthorized);
  EXPECT_EQ(redirect, "");
  EXPECT_THAT(trace.lines(), ElementsAre(NoSchema(secure), NoUsefulData(secure)));
}

TEST_F(CheckServerTest, FollowsFromHttpToHttps) {
  const std::string secure = "https://plm.example/vt";
  transport.Then(200, Information(12, 0, 0, 0, secure)).Then(200, schema);
  EXPECT_EQ(Check(), Ok);
  EXPECT_EQ(redirect, secure);
  EXPECT_EQ(transport.requests()[1].server, secure);
}

TEST_F(CheckServerTest, FollowsFromHttpsToHttps) {
  const std::string other = "https://main.example/vt";
  transport.Then(200, Information(12, 0, 0, 0, other)).Then(200, schema);
  EXPECT_EQ(Check("https://plm.example/vt"), Ok);
  EXPECT_EQ(redirect, other);
}

TEST_F(CheckServerTest, WithoutARedirectTheServersOwnAddressIsNotLookedAt) {
  transport.Then(200, Information(12, 0, 0, 0, "http://main.example/app")).Then(200, schema);
  EXPECT_EQ(CheckServer(
                url.c_str(), [](const char*) { return false; }, nullptr),
            Ok);
  EXPECT_THAT(transport.connections(), ElementsAre(url));
  EXPECT_THAT(transport.lines(), ElementsAre(informationLine, schemaLine));
}

TEST_F(CheckServerTest, WithoutARedirectFailuresAreTheSame) {
  transport.Then(404)
      .Then(200, Information(1, 0, 0, 0))
      .Then(200, Information(12, 0, 0, 0))
      .Then(404)
      .Then(401);
  const auto auth = [](const char*) { return false; };
  EXPECT_EQ(CheckServer(url.c_str(), auth, nullptr), ConnectionFailed);
  EXPECT_EQ(CheckServer(url.c_str(), auth, nullptr), Unsupported);
  EXPECT_EQ(CheckServer(url.c_str(), auth, nullptr), Unauthorized);
}

TEST_F(CheckServerTest, BothConnectionsAuthenticateByTheFunctionGiven) {
  const std::string own = "http://main.example/app";
  Answer information{200, Information(12, 0, 0, 0, own)};
  information.demands = 1;
  Answer metadata{200, schema};
  metadata.demands = 1;
  transport.Then(information).Then(metadata);
  EXPECT_EQ(Check(), Ok);
  EXPECT_THAT(asked, ElementsAre(url, own));
  EXPECT_THAT(transport.authResults(), ElementsAre(true, true));
}

TEST_F(CheckServerTest, EachCheckHasConnectionsOfItsOwn) {
  transport.Then(200, Information(12, 0, 0, 0)).Then(200, schema);
  transport.Then(200, Information(12, 0, 0, 0)).Then(200, schema);
  EXPECT_EQ(Check(), Ok);
  EXPECT_EQ(Check(), Ok);
  EXPECT_THAT(transport.connections(), ElementsAre(url, url));
}

class ProbeConnectionTest : public CheckServerTest {
 protected:
  std::shared_ptr<VtConnection> connection =
      std::make_shared<VtConnection>(url, [](const char*) { return false; });
};

TEST_F(ProbeConnectionTest, AReadableSchemaIsEnough) {
  transport.Then(200, schema);
  EXPECT_EQ(ProbeConnection(connection), Ok);
  EXPECT_THAT(transport.lines(), ElementsAre(schemaLine));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ProbeConnectionTest, AnEmptySchemaIsEnough) {
  transport.Then(200, "");
  EXPECT_EQ(ProbeConnection(connection), Ok);
}

TEST_F(ProbeConnectionTest, EveryFailureOfTheSchemaLeadsToTheContexts) {
  for (const int status : {404, 500, 401, 302}) {
    transport.ClearRequests();
    transport.Then(status).Then(200, "[]");
    EXPECT_EQ(ProbeConnection(connection), Ok) << status;
    EXPECT_THAT(transport.lines(), ElementsAre(schemaLine, contextsLine)) << status;
  }
}

TEST_F(ProbeConnectionTest, TheContextsDecideBetweenTheFailures) {
  transport.Then(404).Then(401).Then(404).Then(404).Then(404).ThenFail(ErrorCode::NoConnection);
  EXPECT_EQ(ProbeConnection(connection), Unauthorized);
  EXPECT_EQ(ProbeConnection(connection), ConnectionFailed);
  EXPECT_EQ(ProbeConnection(connection), ConnectionFailed);
}

}  // namespace
