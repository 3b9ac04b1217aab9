#include "hosts/cli/servers/server_environment.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {
namespace {

std::string FaultOf(const Variables& variables) {
  Configuration configuration;
  const auto fault = AddServersOfEnvironment(variables, configuration);
  return fault ? fault->message : "";
}

}  // namespace

TEST(ServersOfTheEnvironment, AreListedUnderTheNicknameAsItIsWritten) {
  Configuration configuration;
  EXPECT_FALSE(AddServersOfEnvironment({{"VTDIRECT_SERVER_plm", "https://plm.example/vt"},
                                        {"VTDIRECT_SERVER_OLD_one", "http://old.example/"},
                                        {"VTDIRECT_SERVER_empty", ""},
                                        {"VTDIRECT_SERVER", "http://no.example/"}},
                                       configuration));
  EXPECT_EQ(configuration.servers,
            (ServerMap{{"OLD_one", "http://old.example/"}, {"plm", "https://plm.example/vt"}}));
}

TEST(ServersOfTheEnvironment, HaveTheSettingsOfASectionOfTheConfigurationFile) {
  Configuration configuration;
  EXPECT_FALSE(AddServersOfEnvironment({{"VTDIRECT_SERVER_plm__CA_FILE", "/ca"},
                                        {"VTDIRECT_SERVER_plm__max_time", "90"},
                                        {"VTDIRECT_SERVER_plm", "https://plm.example/vt"}},
                                       configuration));
  EXPECT_EQ(SettingsFor(configuration, "https://plm.example/").authorityFile, "/ca");
  EXPECT_EQ(SettingsFor(configuration, "https://plm.example/").maxTime, 90);
}

TEST(ServersOfTheEnvironment, GoBeforeTheConfigurationFile) {
  Configuration configuration;
  configuration.servers = {{"plm", "https://plm.example/vt"}};
  configuration.settings["plm"].proxy = "none";
  configuration.settings["plm"].authorityFile = "/theirs";
  EXPECT_FALSE(AddServersOfEnvironment(
      {{"VTDIRECT_SERVER_plm", "https://plm.example/new"}, {"VTDIRECT_SERVER_plm__CA_FILE", "/ours"}},
      configuration));
  EXPECT_EQ(configuration.servers["plm"], "https://plm.example/new");
  EXPECT_EQ(configuration.settings["plm"].proxy, "none");
  EXPECT_EQ(configuration.settings["plm"].authorityFile, "/ours");
}

// A password or a certificate that the file says of one server must not go to another.
TEST(ServersOfTheEnvironment, TakeNoSettingsOfAnotherHostAlong) {
  Configuration configuration;
  configuration.servers = {{"plm", "https://plm.example/vt"}};
  configuration.settings["plm"].clientCertificate = "/theirs";
  EXPECT_FALSE(AddServersOfEnvironment(
      {{"VTDIRECT_SERVER_plm__CA_FILE", "/ours"}, {"VTDIRECT_SERVER_plm", "https://other.example/vt"}},
      configuration));
  EXPECT_EQ(configuration.settings["plm"].clientCertificate, "");
  EXPECT_EQ(configuration.settings["plm"].authorityFile, "/ours");
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
