#include "translation/translation_gate.h"

#include <stdlib.h>

#include "server/create_file_server.h"
#include "tests/wire/translation/xliff_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

const std::string versionPath = "servlet/OrvetGW";
const std::string addOnPath = "servlet/odata/v1/ZVK/IsAssemblyInstalled(assemblyName='kotia')";
const std::string servicesPath = "servlet/odata/";
const std::string installed = R"({"value":"true"})";
const std::string hasService = R"([{"id":"ZVK"},{"id":"DynamicDocMgmt"}])";
const TraceLine noAddOn = XliffInformation(
    "Cannot determine if KOT is installed on the server: KOT translation integration not available");
// "doe" is how hosts have always read it.
const TraceLine noService = XliffInformation(
    "The required NRX APIs doe not appear to be available on this server: KOT translation integration not "
    "available");

std::string Version(int major, int minor, int servicePack, int cps) {
  return "ServerMajorVersion:" + std::to_string(major) + "\nServerMinorVersion:" + std::to_string(minor) +
         "\nServerServicepackVersion:" + std::to_string(servicePack) +
         "\nServerCPSVersion:" + std::to_string(cps) + "\n";
}

TraceLine TooOld(const std::string& version) {
  return XliffInformation("Server version: " + version +
                          " not supported for KOT translation integration, at least: 11.1 M010 CPS 1 is "
                          "required - this feature will be disabled");
}

class Gate : public XliffTest {
 protected:
  // Whether a server of this version that has everything else gets through.
  bool Opens(int major, int minor, int servicePack, int cps) {
    trace.Clear();
    ScriptedTransport script;
    script.Then(200, Version(major, minor, servicePack, cps)).Then(200, installed).Then(200, hasService);
    const bool opens = TranslationGate(Begin(NewConnection()));
    EXPECT_EQ(script.requests().size(), opens ? 3U : 1U);
    EXPECT_EQ(trace.lines().empty(), opens);
    return opens;
  }
};

class GateAndServer : public XliffTest {
 protected:
  std::shared_ptr<FileServer> fileServer = CreateFileServer(serverUrl, [](const char*) { return false; });
};

TEST_F(Gate, AsksForTheVersionThenTheAddOnThenTheServices) {
  transport.Then(200, Version(11, 1, 10, 1)).Then(200, installed).Then(200, hasService);
  EXPECT_TRUE(TranslationGate(Begin(connection)));
  EXPECT_EQ(transport.requests(),
            (Requests{{serverUrl, Get(versionPath), "", {}}, ReadPage(addOnPath), ReadPage(servicesPath)}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Gate, OpensFromTheMinimumVersionOn) {
  EXPECT_TRUE(Opens(11, 1, 10, 1));
  EXPECT_TRUE(Opens(11, 1, 10, 2));
  EXPECT_TRUE(Opens(11, 1, 11, 0));
  EXPECT_TRUE(Opens(11, 2, 0, 0));
  EXPECT_TRUE(Opens(12, 0, 0, 0));
}

TEST_F(Gate, StaysShutBelowTheMinimumVersionAndTracesBothVersions) {
  EXPECT_FALSE(Opens(11, 1, 10, 0));
  EXPECT_EQ(trace.lines(), Traces{TooOld("11.1 M010")});
  EXPECT_FALSE(Opens(11, 1, 9, 99));
  EXPECT_EQ(trace.lines(), Traces{TooOld("11.1 M009 CPS 99")});
  EXPECT_FALSE(Opens(11, 0, 99, 9));
  EXPECT_EQ(trace.lines(), Traces{TooOld("11.0 M099 CPS 9")});
  EXPECT_FALSE(Opens(10, 9, 1000, 0));
  EXPECT_EQ(trace.lines(), Traces{TooOld("10.9 M1000")});
  EXPECT_FALSE(Opens(0, 0, 0, 0));
  EXPECT_EQ(trace.lines(), Traces{TooOld("0.0 F000")});
}

TEST_F(Gate, TakesInformationWithoutAVersionForTheLowestOne) {
  transport.Then(200, "<html>nothing</html>");
  EXPECT_FALSE(TranslationGate(Begin(connection)));
  EXPECT_EQ(trace.lines(), Traces{TooOld("0.0 F000")});
}

TEST_F(Gate, StaysShutWithoutAVersion) {
  const TraceLine unknown =
      Error(std::string("Failed to get version info from server ") + serverUrl + " treating as unsupported");
  transport.Then(404).Then(500).Then(204).ThenFail(du::http::ErrorCode::NoConnection);
  for (int turn = 0; turn < 4; ++turn) EXPECT_FALSE(TranslationGate(Begin(connection))) << turn;
  EXPECT_EQ(transport.lines(), Lines(4, Get(versionPath)));
  EXPECT_EQ(trace.lines(), Traces(4, unknown));
}

TEST_F(Gate, OpensWithoutTheAddOnAndTracesIt) {
  transport.Then(200, Version(12, 0, 0, 0)).Then(200, R"({"value":"false"})").Then(200, hasService);
  EXPECT_TRUE(TranslationGate(Begin(connection)));
  EXPECT_EQ(trace.lines(), Traces{noAddOn});
}

TEST_F(Gate, OpensWithoutTheServiceAndTracesIt) {
  transport.Then(200, Version(12, 0, 0, 0)).Then(200, installed).Then(200, R"([{"id":"DataAdmin"}])");
  EXPECT_TRUE(TranslationGate(Begin(connection)));
  EXPECT_EQ(trace.lines(), Traces{noService});
}

TEST_F(Gate, OpensWithoutBothAndTracesThemInOrder) {
  transport.Then(200, Version(12, 0, 0, 0)).Then(200, R"({"value":"false"})").Then(200, "[]");
  EXPECT_TRUE(TranslationGate(Begin(connection)));
  EXPECT_EQ(trace.lines(), (Traces{noAddOn, noService}));
}

TEST_F(Gate, OpensWhenNeitherQuestionIsAnswered) {
  const std::vector<Answer> failures{{500, installed},
                                     {401, hasService},
                                     {0, "", du::http::ErrorCode::TimedOut},
                                     {200, "<html>"},
                                     {200, R"([{"id":"DynamicDocMgmt")"},
                                     {204, ""}};
  for (const Answer& failure : failures) {
    trace.Clear();
    transport.Then(200, Version(12, 0, 0, 0)).Then(failure).Then(failure);
    EXPECT_TRUE(TranslationGate(Begin(connection)));
    EXPECT_EQ(trace.lines(), (Traces{noAddOn, noService}));
  }
}

TEST_F(Gate, IsForcedOpenByAnyTextWithoutARequest) {
  for (const char* text : {"0", "1", "false", " "}) {
    setenv("FENLOOM_FORCE_NRX_XLIFF_ENABLE", text, 1);
    EXPECT_TRUE(TranslationGate(Begin(connection))) << text;
  }
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Gate, IsNotForcedByAnEmptyText) {
  setenv("FENLOOM_FORCE_NRX_XLIFF_ENABLE", "", 1);
  transport.Then(404);
  EXPECT_FALSE(TranslationGate(Begin(connection)));
  EXPECT_EQ(transport.lines(), Lines{Get(versionPath)});
}

TEST_F(GateAndServer, IsAskedOnFirstDemandAndItsYesIsKept) {
  EXPECT_THAT(transport.lines(), IsEmpty());
  transport.Then(200, Version(11, 1, 10, 1)).Then(200, installed).Then(200, hasService);
  XliffServer* translation = fileServer->GetXliffServer();
  ASSERT_NE(translation, nullptr);
  EXPECT_EQ(transport.requests().size(), 3U);
  EXPECT_EQ(fileServer->GetXliffServer(), translation);
  EXPECT_EQ(transport.requests().size(), 3U);
}

TEST_F(GateAndServer, RemembersANoForGood) {
  transport.Then(200, Version(11, 1, 10, 0));
  EXPECT_EQ(fileServer->GetXliffServer(), nullptr);
  EXPECT_EQ(fileServer->GetXliffServer(), nullptr);
  // Not even force brings it back.
  setenv("FENLOOM_FORCE_NRX_XLIFF_ENABLE", "1", 1);
  EXPECT_EQ(fileServer->GetXliffServer(), nullptr);
  EXPECT_EQ(transport.lines(), Lines{Get(versionPath)});
  EXPECT_EQ(trace.lines(), Traces{TooOld("11.1 M010")});
}

TEST_F(GateAndServer, RemembersAFailedQuestionAsANo) {
  transport.ThenFail(du::http::ErrorCode::NoConnection);
  EXPECT_EQ(fileServer->GetXliffServer(), nullptr);
  EXPECT_EQ(fileServer->GetXliffServer(), nullptr);
  EXPECT_EQ(transport.lines(), Lines{Get(versionPath)});
}

TEST_F(GateAndServer, IsAskedAnewForANewServerObject) {
  transport.Then(404).Then(200, Version(11, 1, 11, 0)).Then(200, installed).Then(200, hasService);
  EXPECT_EQ(fileServer->GetXliffServer(), nullptr);
  const auto renewed = CreateFileServer(serverUrl, [](const char*) { return false; });
  EXPECT_NE(renewed->GetXliffServer(), nullptr);
}

// The service goes over the connection of the server that gave it.
TEST_F(GateAndServer, SharesTheNonceOfTheServersConnection) {
  setenv("FENLOOM_FORCE_NRX_XLIFF_ENABLE", "1", 1);
  XliffServer* translation = fileServer->GetXliffServer();
  ASSERT_NE(translation, nullptr);
  ThenToken();
  transport.Then(204).Then(204);
  EXPECT_TRUE(translation->SetPublished("D1"));
  EXPECT_TRUE(fileServer->GetXliffServer()->SetPublished("D1"));
  EXPECT_EQ(transport.lines().front(), Get(tokenPath));
  EXPECT_EQ(transport.requests().size(), 3U);
}

}  // namespace
}  // namespace vtdirect_test
