#include "hosts/cli/servers/server_environment.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {
namespace {

std::string FaultOf(const Variables& variables) {
  const auto configuration = WithServersOfEnvironment({}, variables);
  return configuration ? "" : configuration.failure().message;
}

}  // namespace

TEST(ServersOfTheEnvironment, AreListedUnderTheNicknameAsItIsWritten) {
  const auto configuration = WithServersOfEnvironment({}, {{"VTDIRECT_SERVER_plm", "https://plm.example/vt"},
                                                           {"VTDIRECT_SERVER_OLD_one", "http://old.example/"},
                                                           {"VTDIRECT_SERVER_empty", ""},
                                                           {"VTDIRECT_SERVER", "http://no.example/"}});
  ASSERT_TRUE(configuration);
  EXPECT_EQ(configuration->servers,
            (ServerMap{{"OLD_one", "http://old.example/"}, {"plm", "https://plm.example/vt"}}));
}

TEST(ServersOfTheEnvironment, HaveTheSettingsOfASectionOfTheConfigurationFile) {
  const auto configuration =
      WithServersOfEnvironment({}, {{"VTDIRECT_SERVER_plm__CA_FILE", "/ca"},
                                    {"VTDIRECT_SERVER_plm__max_time", "90"},
                                    {"VTDIRECT_SERVER_plm", "https://plm.example/vt"}});
  ASSERT_TRUE(configuration);
  EXPECT_EQ(SettingsFor(*configuration, "https://plm.example/").authorityFile, "/ca");
  EXPECT_EQ(SettingsFor(*configuration, "https://plm.example/").maxTime, 90);
}

TEST(ServersOfTheEnvironment, GoBeforeTheConfigurationFile) {
  Configuration before;
  before.servers = {{"plm", "https://plm.example/vt"}};
  before.settings["plm"].proxy = "none";
  before.settings["plm"].authorityFile = "/theirs";
  auto configuration = WithServersOfEnvironment(before, {{"VTDIRECT_SERVER_plm", "https://plm.example/new"},
                                                         {"VTDIRECT_SERVER_plm__CA_FILE", "/ours"}});
  ASSERT_TRUE(configuration);
  EXPECT_EQ(configuration->servers["plm"], "https://plm.example/new");
  EXPECT_EQ(configuration->settings["plm"].proxy, "none");
  EXPECT_EQ(configuration->settings["plm"].authorityFile, "/ours");
}

// A password or a certificate that the file says of one server must not go to another.
TEST(ServersOfTheEnvironment, TakeNoSettingsOfAnotherHostAlong) {
  Configuration before;
  before.servers = {{"plm", "https://plm.example/vt"}};
  before.settings["plm"].clientCertificate = "/theirs";
  auto configuration = WithServersOfEnvironment(
      before,
      {{"VTDIRECT_SERVER_plm__CA_FILE", "/ours"}, {"VTDIRECT_SERVER_plm", "https://other.example/vt"}});
  ASSERT_TRUE(configuration);
  EXPECT_EQ(configuration->settings["plm"].clientCertificate, "");
  EXPECT_EQ(configuration->settings["plm"].authorityFile, "/ours");
}

TEST(ServersOfTheEnvironment, NameTheVariableOfAFault) {
  EXPECT_EQ(FaultOf({{"VTDIRECT_SERVER_plm", "plm.example"}}),
            "VTDIRECT_SERVER_plm: a server URL begins with \"https://\" or \"http://\"");
  EXPECT_EQ(FaultOf({{"VTDIRECT_SERVER_", "http://plm.example/"}}),
            "VTDIRECT_SERVER_: a nickname must not be empty");
  EXPECT_EQ(FaultOf({{"VTDIRECT_SERVER_plm__MAX_TIME", "soon"}}),
            "VTDIRECT_SERVER_plm__MAX_TIME: max_time takes a number of seconds from 1 to 86400");
  EXPECT_EQ(FaultOf({{"VTDIRECT_SERVER_plm__PASSWORD", "x"}}).substr(0, 57),
            "VTDIRECT_SERVER_plm__PASSWORD: unknown setting \"password\"");
}

}  // namespace vtdirect_cli
