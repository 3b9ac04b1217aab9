#include "simulator/options.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace vantry_sim {
namespace {

CommandLine Parse(std::initializer_list<const char*> arguments) {
  std::vector<const char*> argv{"vantry-sim"};
  argv.insert(argv.end(), arguments);
  return ParseCommandLine(static_cast<int>(argv.size()), argv.data());
}

TEST(Options, DefaultsNeedADataDirectoryAlone) {
  const auto line = Parse({"--data", "d"});
  ASSERT_TRUE(line.options) << line.text;
  EXPECT_EQ(line.options->dataDirectory, "d");
  EXPECT_EQ(line.options->bindAddress, "127.0.0.1");
  EXPECT_EQ(line.options->generation, Generation::Schema5);
  EXPECT_EQ(line.options->seed.kind, Seed::Kind::Demo);
  EXPECT_EQ(line.options->version.major, 12U);
  EXPECT_EQ(line.options->version.servicePack, 2U);
  EXPECT_TRUE(line.options->users.empty());
  EXPECT_FALSE(line.options->maxUploadBytes);
  EXPECT_TRUE(line.options->translation);
  EXPECT_TRUE(line.options->missingPreferences.empty());
  EXPECT_EQ(line.options->xliffFolder, XliffFolder::Cabinet);
  EXPECT_EQ(line.options->pageSize, 10'000U);
  EXPECT_FALSE(line.options->pagePort);
  EXPECT_EQ(line.options->uploadPort, 0);
  EXPECT_FALSE(line.options->oldCreationFactory);
  EXPECT_FALSE(line.options->gatewayEscapes);
}

TEST(Options, WhoComesInAndHowIsRead) {
  const auto line = Parse({"--data", "d", "--user", "a:p", "--digest", "--token", "robot:t:x", "--sessions",
                           "--session-seconds", "5", "--tls", "c.pem", "k.pem"});
  ASSERT_TRUE(line.options) << line.text;
  EXPECT_TRUE(line.options->digest);
  ASSERT_EQ(line.options->tokens.size(), 1U);
  EXPECT_EQ(line.options->tokens[0].name, "robot");
  EXPECT_EQ(line.options->tokens[0].password, "t:x");
  EXPECT_EQ(line.options->sessionSeconds, 5U);
  EXPECT_EQ(line.options->tlsCertificate, "c.pem");
  EXPECT_EQ(line.options->tlsKey, "k.pem");
  EXPECT_FALSE(Parse({"--data", "d", "--session-seconds", "5"}).options->sessionSeconds);
  EXPECT_EQ(Parse({"--data", "d", "--digest"}).exitCode, 2);
  EXPECT_EQ(Parse({"--data", "d", "--token", "secret"}).exitCode, 2);
  EXPECT_EQ(Parse({"--data", "d", "--token", "secret"}).text.find("secret"), std::string::npos);
  EXPECT_EQ(Parse({"--data", "d", "--tls", "c.pem"}).exitCode, 2);
  EXPECT_EQ(Parse({"--data", "d", "--tls", "c", "k", "--tls-self-signed", "t"}).exitCode, 2);
}

TEST(Options, ThoseOfTheServerAreRead) {
  const auto line = Parse({"--port",       "0",        "--data",    "d",         "--seed",
                           "bulk:250",     "--user",   "a:p:w",     "--user",    "b:",
                           "--generation", "schema4",  "--version", "11.0.30.7", "--codebase-url",
                           "http://h/x//", "--prefix", "vt/",       "--log",     "l"});
  ASSERT_TRUE(line.options) << line.text;
  const Options& options = *line.options;
  EXPECT_EQ(options.port, 0);
  EXPECT_EQ(options.seed.kind, Seed::Kind::Bulk);
  EXPECT_EQ(options.seed.bulk.documents, 250U);
  ASSERT_EQ(options.users.size(), 2U);
  EXPECT_EQ(options.users[0].name, "a");
  EXPECT_EQ(options.users[0].password, "p:w");
  EXPECT_EQ(options.users[1].password, "");
  EXPECT_EQ(options.generation, Generation::Schema4);
  EXPECT_EQ(options.version.major, 11U);
  EXPECT_EQ(options.version.minor, 0U);
  EXPECT_EQ(options.version.servicePack, 30U);
  EXPECT_EQ(options.version.cps, 7U);
  EXPECT_EQ(options.codebaseUrl, "http://h/x");
  EXPECT_EQ(options.prefix, "/vt");
  EXPECT_EQ(options.logFile, "l");
}

TEST(Options, ThoseOfItsAnswersAreRead) {
  const auto line = Parse({"--data",
                           "d",
                           "--latency",
                           "15",
                           "--max-upload",
                           "0",
                           "--fault",
                           "GET /a=500",
                           "--fault",
                           "GET /b=stall",
                           "--page-size",
                           "25",
                           "--page-port",
                           "0",
                           "--upload-port",
                           "4711",
                           "--old-creation-factory",
                           "--gateway-escapes",
                           "--without-translation",
                           "--without-preference",
                           "CABINET_OID",
                           "--without-preference",
                           "UPLOAD_SOFT_TYPE",
                           "--xliff-folder",
                           "path"});
  ASSERT_TRUE(line.options) << line.text;
  const Options& options = *line.options;
  EXPECT_EQ(options.latencyMilliseconds, 15U);
  EXPECT_EQ(options.maxUploadBytes, 0U);
  EXPECT_EQ(options.faults.size(), 2U);
  EXPECT_EQ(options.pageSize, 25U);
  EXPECT_EQ(options.pagePort, 0);
  EXPECT_EQ(options.uploadPort, 4711);
  EXPECT_TRUE(options.oldCreationFactory);
  EXPECT_TRUE(options.gatewayEscapes);
  EXPECT_FALSE(options.translation);
  EXPECT_EQ(options.missingPreferences, (std::vector<std::string>{"CABINET_OID", "UPLOAD_SOFT_TYPE"}));
  EXPECT_EQ(options.xliffFolder, XliffFolder::Path);
}

TEST(Options, BadValuesEndWithAReasonAndTwo) {
  const std::vector<std::vector<const char*>> cases{
      {},
      {"--data", "d", "--port", "65536"},
      {"--data", "d", "--seed", "bulk:0"},
      {"--data", "d", "--seed", "bulk:x"},
      {"--data", "d", "--seed", "other"},
      {"--data", "d", "--generation", "schema2"},
      {"--data", "d", "--user", "nameonly"},
      {"--data", "d", "--user", ":pw"},
      {"--data", "d", "--version", "12.0.2"},
      {"--data", "d", "--version", "12.0.2.0.1"},
      {"--data", "d", "--version", "12.0.2.x"},
      {"--data", "d", "--prefix", "/a b"},
      {"--data", "d", "--page-size", "0"},
      {"--data", "d", "--page-port", "65536"},
      {"--data", "d", "--fault", "nonsense"},
      {"--data", "d", "--without-preference", "CABINET"},
      {"--data", "d", "--xliff-folder", "both"},
      {"--data", "d", "--unknown"},
  };
  for (const auto& arguments : cases) {
    std::vector<const char*> argv{"vantry-sim"};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    const auto line = ParseCommandLine(static_cast<int>(argv.size()), argv.data());
    EXPECT_FALSE(line.options) << arguments.back();
    EXPECT_EQ(line.exitCode, 2);
    EXPECT_TRUE(line.text.starts_with("vantry-sim: "));
    EXPECT_TRUE(line.text.ends_with("\n"));
  }
}

TEST(Options, RefusedUserIsNotRepeatedSinceItMayHoldAPassword) {
  EXPECT_EQ(Parse({"--data", "d", "--user", ":hush"}).text.find("hush"), std::string::npos);
}

TEST(Options, HelpAndProgramVersionEndWithZero) {
  EXPECT_EQ(Parse({"--help"}).exitCode, 0);
  EXPECT_NE(Parse({"--help"}).text.find("--generation"), std::string::npos);
  EXPECT_EQ(Parse({"--version-info"}).exitCode, 0);
  EXPECT_TRUE(Parse({"--version-info"}).text.starts_with("vantry-sim "));
}

}  // namespace
}  // namespace vantry_sim
