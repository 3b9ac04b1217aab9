#include "connection/server_information.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using vtdirect_test::Answer;
using vtdirect_test::SentRequest;
using vtdirect_test::TraceLine;

const std::string server = "http://plm.example/vt";

class ServerInformation : public testing::Test {
 protected:
  // Reads an information document of the given text.
  ServerInfo Read(const std::string& document) {
    transport.Then(200, document);
    ServerInfo info;
    EXPECT_EQ(GetServerInfo(connection, info), Ok);
    EXPECT_THAT(directory.Entries(), IsEmpty());
    return info;
  }

  vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::TraceRecorder trace;
  vtdirect_test::ScriptedTransport transport;
  HttpConnection connection{server, {}};
};

TEST_F(ServerInformation, IsOneGetOfTheGatewayWithoutHeaders) {
  (void)Read("");
  EXPECT_THAT(transport.requests(),
              ElementsAre(SentRequest{server, "GET /vt/servlet/OrvetGW", "", std::nullopt}));
  EXPECT_THAT(transport.clientMarks(), ElementsAre("X-Zvk-Connected: 1"));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ServerInformation, HoldsVersionAndAddress) {
  const ServerInfo info = Read(
      "ServerMajorVersion:12\nServerMinorVersion:1\nServerServicepackVersion:20\nServerCPSVersion:3\n"
      "CodebaseURL:https://plm.example/vt\n");
  EXPECT_EQ(info.version, (ServerVersion{12, 1, 20, 3}));
  EXPECT_EQ(info.codebaseUrl, "https://plm.example/vt");
}

TEST_F(ServerInformation, AKeyEndsAtTheFirstColonAndItsValueKeepsTheOthers) {
  EXPECT_EQ(Read("CodebaseURL:https://plm.example:8443/a:b\n").codebaseUrl, "https://plm.example:8443/a:b");
}

TEST_F(ServerInformation, AValueKeepsItsBlanks) {
  const ServerInfo info = Read("ServerMajorVersion:  12 \nCodebaseURL: http://plm.example \n");
  EXPECT_EQ(info.version.major, 12U);
  EXPECT_EQ(info.codebaseUrl, " http://plm.example ");
}

TEST_F(ServerInformation, ACarriageReturnIsHarmlessForNumbersAndStaysInTheAddress) {
  const ServerInfo info =
      Read("ServerMajorVersion:12\r\nServerMinorVersion:1\r\nCodebaseURL:http://h/vt/\r\n");
  EXPECT_EQ(info.version, (ServerVersion{12, 1, 0, 0}));
  EXPECT_EQ(info.codebaseUrl, "http://h/vt/\r");
}

TEST_F(ServerInformation, EverySlashAtTheEndOfTheAddressIsCutOff) {
  EXPECT_EQ(Read("CodebaseURL:http://plm.example/vt///\n").codebaseUrl, "http://plm.example/vt");
  EXPECT_EQ(Read("CodebaseURL:///\n").codebaseUrl, "");
  EXPECT_EQ(Read("CodebaseURL:\n").codebaseUrl, "");
}

TEST_F(ServerInformation, ALaterLineWins) {
  const ServerInfo info =
      Read("ServerMajorVersion:12\nCodebaseURL:http://a\nServerMajorVersion:11\nCodebaseURL:http://b\n");
  EXPECT_EQ(info.version.major, 11U);
  EXPECT_EQ(info.codebaseUrl, "http://b");
}

TEST_F(ServerInformation, ALaterLineWinsEvenWithoutANumber) {
  EXPECT_EQ(Read("ServerMajorVersion:12\nServerMajorVersion:\n").version.major, 0U);
}

TEST_F(ServerInformation, PassesOverLinesThatItDoesNotKnow) {
  const ServerInfo info = Read(
      "\n\nServerName:plm\nServerMajorVersion\n:12\nServerMajorVersion=12\nno colon\nServerMinorVersion:4");
  EXPECT_EQ(info.version, (ServerVersion{0, 4, 0, 0}));
  EXPECT_EQ(info.codebaseUrl, "");
}

TEST_F(ServerInformation, KeysAreExactAndCaseSensitive) {
  const ServerInfo info = Read(
      "servermajorversion:12\n ServerMajorVersion:12\nServerMajorVersion :12\nServerMajorVersions:12\n"
      "ServerServicePackVersion:30\nCodebaseUrl:http://h\n");
  EXPECT_EQ(info.version, ServerVersion{});
  EXPECT_EQ(info.codebaseUrl, "");
}

TEST_F(ServerInformation, NumbersAreReadAsTheCLibraryReadsThem) {
  EXPECT_EQ(Read("ServerMajorVersion:12abc\n").version.major, 12U);
  EXPECT_EQ(Read("ServerMajorVersion:abc\n").version.major, 0U);
  EXPECT_EQ(Read("ServerMajorVersion:+12\n").version.major, 12U);
  EXPECT_EQ(Read("ServerMajorVersion:007\n").version.major, 7U);
  EXPECT_EQ(Read("ServerMajorVersion:0x12\n").version.major, 0U);
  EXPECT_EQ(Read("ServerMajorVersion:-1\n").version.major, 4294967295U);
}

TEST_F(ServerInformation, TheLastLineNeedsNoLineFeed) {
  EXPECT_EQ(Read("ServerMajorVersion:12").version.major, 12U);
}

TEST_F(ServerInformation, ADocumentWithoutAVersionReadsAsZeroAndIsNoFailure) {
  const ServerInfo info = Read("<html>sign in</html>");
  EXPECT_EQ(info.version, ServerVersion{});
  EXPECT_EQ(info.codebaseUrl, "");
}

TEST_F(ServerInformation, ReplacesWhatStoodInTheRecord) {
  transport.Then(200, "ServerMinorVersion:4\n");
  ServerInfo info{{12, 1, 20, 3}, "http://old"};
  EXPECT_EQ(GetServerInfo(connection, info), Ok);
  EXPECT_EQ(info.version, (ServerVersion{0, 4, 0, 0}));
  EXPECT_EQ(info.codebaseUrl, "");
}

TEST_F(ServerInformation, AnyAnswerButExactly200IsConnectionFailedAndLeavesTheRecordAlone) {
  for (const int status : {201, 204, 302, 401, 404, 500}) {
    transport.Then(status, "ServerMajorVersion:12\n");
    trace.Clear();
    ServerInfo info{{1, 2, 3, 4}, "http://old"};
    EXPECT_EQ(GetServerInfo(connection, info), ConnectionFailed) << status;
    EXPECT_EQ(info.version, (ServerVersion{1, 2, 3, 4})) << status;
    EXPECT_EQ(info.codebaseUrl, "http://old") << status;
    EXPECT_THAT(trace.lines(), ElementsAre(TraceLine{
                                   3, "VtDirect",
                                   "Failed to get version info from server http://plm.example/vt treating as "
                                   "unsupported"}));
    EXPECT_THAT(directory.Entries(), IsEmpty()) << status;
  }
  EXPECT_THAT(trace.strayAreas(), IsEmpty());
}

TEST_F(ServerInformation, ATransportFailureIsConnectionFailed) {
  transport.ThenFail(du::http::ErrorCode::TimedOut);
  ServerInfo info;
  EXPECT_EQ(GetServerInfo(connection, info), ConnectionFailed);
  EXPECT_THAT(trace.lines(),
              ElementsAre(TraceLine{
                  3, "VtDirect",
                  "Failed to get version info from server http://plm.example/vt treating as unsupported"}));
  EXPECT_THAT(directory.Entries(), IsEmpty());
}

TEST_F(ServerInformation, PassesThroughATemporaryFile) {
  std::vector<std::string> during;
  Answer answer{200, "ServerMajorVersion:12\n"};
  answer.afterwards = [&] { during = directory.Entries(); };
  transport.Then(answer);
  ServerInfo info;
  EXPECT_EQ(GetServerInfo(connection, info), Ok);
  EXPECT_THAT(during, ElementsAre(MatchesRegex("vtinfo.*\\.txt")));
  EXPECT_THAT(directory.Entries(), IsEmpty());
}

TEST_F(ServerInformation, AFileThatCannotBeReadGivesTheZeroVersionAndIsNoFailure) {
  std::string file;
  Answer answer{200, "ServerMajorVersion:12\n"};
  answer.afterwards = [&] {
    file = directory.File(directory.Entries().at(0));
    std::filesystem::remove(file);
  };
  transport.Then(answer);
  ServerInfo info{{1, 2, 3, 4}, "http://old"};
  EXPECT_EQ(GetServerInfo(connection, info), Ok);
  EXPECT_EQ(info.version, ServerVersion{});
  EXPECT_EQ(info.codebaseUrl, "");
  EXPECT_THAT(
      trace.lines(),
      ElementsAre(TraceLine{3, "VtDirect", "Failed to unlink file " + file + ": No such file or directory"}));
}

TEST_F(ServerInformation, WithoutADirectoryForTheFileIsConnectionFailed) {
  setenv("TMPDIR", directory.File("missing").c_str(), 1);
  transport.Then(200, "ServerMajorVersion:12\n");
  ServerInfo info;
  EXPECT_EQ(GetServerInfo(connection, info), ConnectionFailed);
}

TEST_F(ServerInformation, TheVersionAloneIsReadInTheSameWay) {
  transport.Then(200, "ServerMajorVersion:12\nServerCPSVersion:3\nCodebaseURL:http://h\n").Then(404);
  ServerVersion version;
  EXPECT_EQ(GetServerVersion(connection, version), Ok);
  EXPECT_EQ(version, (ServerVersion{12, 0, 0, 3}));
  EXPECT_EQ(GetServerVersion(connection, version), ConnectionFailed);
  EXPECT_EQ(version, (ServerVersion{12, 0, 0, 3}));
  EXPECT_THAT(trace.lines(),
              ElementsAre(TraceLine{
                  3, "VtDirect",
                  "Failed to get version info from server http://plm.example/vt treating as unsupported"}));
  EXPECT_THAT(transport.lines(), ElementsAre("GET /vt/servlet/OrvetGW", "GET /vt/servlet/OrvetGW"));
}

TEST_F(ServerInformation, TakesLongLinesAndNulBytes) {
  const std::string path(20'000, 'p');
  std::string document = std::string("Server\0Name:x\n", 14) + "CodebaseURL:http://h/" + path + "\n";
  document += std::string("ServerMajorVersion:12\0 34\n", 26) + std::string(20'000, 'k') + ":1";
  const ServerInfo info = Read(document);
  EXPECT_EQ(info.version.major, 12U);
  EXPECT_TRUE(info.codebaseUrl == "http://h/" + path);
}

}  // namespace
