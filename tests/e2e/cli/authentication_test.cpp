#include <gmock/gmock.h>

#include "tests/e2e/cli/vtdirect_fixture.h"
#include "tests/e2e/platform/scripted_server.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {
namespace {

class ClosedServer : public VtDirect {
 protected:
  ClosedServer() { Serve({"--user", "anna:se cret:1", "--user", "bruno:b"}); }
  [[nodiscard]] std::vector<std::string> Get() const { return {"get", server().Uid("D1001"), "-o", "copy"}; }
  void SetUser(const std::string& user, const std::string& password) {
    environment_["VTDIRECT_USER"] = user;
    environment_["VTDIRECT_PASSWORD"] = password;
  }
  [[nodiscard]] std::size_t Requests() const {
    const std::string log = server().Log();
    return static_cast<std::size_t>(std::count(log.begin(), log.end(), '\n'));
  }
};

}  // namespace

TEST_F(ClosedServer, LetsUserAndPasswordOfTheEnvironmentIn) {
  SetUser("anna", "se cret:1");
  EXPECT_EQ(Run(Get()).status, 0);
  EXPECT_EQ(Run({"check", "sim"}).status, 0);
  EXPECT_EQ(Run({"uid", server().Uid("D1001")}).status, 0);
  EXPECT_EQ(Run({"info", server().Uid("D1001")}).status, 0);
}

TEST_F(ClosedServer, IsRefusedWithoutCredentials) {
  for (const auto& words :
       {Get(), {"check", "sim"}, {"uid", server().Uid("D1001")}, {"info", server().Uid("D1001")}}) {
    const ProcessResult result = Run(words);
    EXPECT_EQ(result.status, 4) << words[0];
    EXPECT_THAT(result.err, HasSubstr("demands credentials; set VTDIRECT_USER and VTDIRECT_PASSWORD"));
  }
  EXPECT_EQ(Run({"check", "sim"}).out,
            "url: " + server().url() + "\nsupported: no\nreason: authentication-refused\n");
}

TEST_F(ClosedServer, IsRefusedWithAWrongPasswordThatIsSentOnce) {
  SetUser("anna", "wrong");
  const ProcessResult result = Run({"check", "sim"});
  EXPECT_EQ(result.status, 4);
  EXPECT_THAT(result.err, HasSubstr("refused the credentials"));
  EXPECT_THAT(result.err + result.out, Not(HasSubstr("wrong")));
  // The version is asked for without credentials, perhaps once to learn how the server takes a password, and
  // with them; nothing goes round in circles.
  EXPECT_LE(Requests(), 4U);
}

TEST_F(ClosedServer, LetsAUserOfTheNetrcFileIn) {
  WriteHome(".netrc", "machine 127.0.0.1 login anna password \"se cret:1\"\n", 0600);
  EXPECT_EQ(Run(Get()).status, 0);
  WriteHome(".netrc", "", 0600);
  EXPECT_EQ(Run(Get()).status, 4);
  WriteHome("other", "machine 127.0.0.1 login bruno password b\n", 0600);
  EXPECT_EQ(Run({"--netrc", Home("other"), "get", server().Uid("D1001"), "-o", "copy"}).status, 0);
  environment_["NETRC"] = Home("other");
  EXPECT_EQ(Run(Get()).status, 0);
}

TEST_F(ClosedServer, FallsBackToTheNetrcFileWhenTheEnvironmentIsWrong) {
  WriteHome(".netrc", "machine 127.0.0.1 login anna password \"se cret:1\"\n", 0600);
  SetUser("anna", "wrong");
  EXPECT_EQ(Run(Get()).status, 0);
}

TEST_F(ClosedServer, DoesNotTrustANetrcFileThatOthersMayRead) {
  WriteHome(".netrc", "machine 127.0.0.1 login bruno password b\n", 0644);
  const ProcessResult result = Run(Get());
  EXPECT_EQ(result.status, 4);
  EXPECT_THAT(result.err, HasSubstr("warning: " + Home(".netrc") + " is not used"));
  EXPECT_EQ(Run({"--netrc", Home(".netrc"), "servers"}).status, 8);
}

TEST_F(ClosedServer, GetsNothingWhenItIsNamedByAnotherServerOnly) {
  // A server that calls the closed one its own address leads the check there, and no password goes along.
  SetUser("anna", "se cret:1");
  const TemporaryDirectory directory;
  const Simulator open(directory.path(),
                       {"--codebase-url", server().url().substr(0, server().url().size() - 1)});
  const std::string before = server().Log();
  const ProcessResult result =
      Process({VTDIRECT_PROGRAM, "check", open.url()}, ProcessOptions{environment_, {}, {}}).Wait();
  EXPECT_EQ(result.status, 4);
  EXPECT_THAT(result.err, HasSubstr("credentials; they go only to servers that you have named"));
  EXPECT_THAT(server().Log().substr(before.size()), Not(HasSubstr("\"status\":200")));
}

TEST_F(ClosedServer, KeepsSecretsOutOfTheTrace) {
  SetUser("anna", "se cret:1");
  const ProcessResult result = Run({"--trace", "0123", "info", server().Uid("D1001")});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.err, Not(HasSubstr("se cret")));
  EXPECT_THAT(result.err, Not(HasSubstr("YW5uYT")));  // "anna" at the head of a Basic line
}

/// A server that names another one, which is listed too, as the place of its contents.
class NamedPlace : public VtDirect {
 protected:
  NamedPlace() { Serve({"--codebase-url", place_.Url() + "/"}); }

  ProcessResult Get(const std::string& setting) {
    environment_["VTDIRECT_TOKEN"] = "the-token";
    WriteHome(".config/vtdirect/config",
              "[server main]\nurl = " + server().url() + "\n" + setting +
                  "[server place]\nurl = " + place_.Url() + "/\n",
              0600);
    return Run({"--no-prompt", "get", "//main/?id=D1001", "-o", "copy", "--force"});
  }
  /// Whether the other server was ever sent the token.
  [[nodiscard]] bool HasGotTheToken() const {
    bool has = false;
    for (const WireRequest& request : place_.requests())
      has = has || request.Header("Authorization") == "Bearer the-token";
    return has;
  }

  ScriptedServer place_{[](Peer& peer, WireRequest& request) {
    if (request.Header("Authorization") == "Bearer the-token") return peer.Answer(200, "content");
    peer.Answer(401, "", "WWW-Authenticate: Bearer\r\n");
  }};
};

TEST_F(NamedPlace, DoesNotGetTheTokenOfTheEnvironment) {
  const ProcessResult result = Get("");
  EXPECT_NE(result.status, 0);
  EXPECT_FALSE(place_.requests().empty());
  EXPECT_FALSE(HasGotTheToken());
  EXPECT_THAT(result.err, HasSubstr("login_also_for"));
}

TEST_F(NamedPlace, GetsItWhereTheConfigurationNamesThePair) {
  static_cast<void>(Get("login_also_for = place\n"));
  EXPECT_TRUE(HasGotTheToken());
}

TEST_F(NamedPlace, OfAPairHasToBeListed) {
  const ProcessResult result = Get("login_also_for = nowhere\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.err, HasSubstr("nowhere"));
  EXPECT_TRUE(place_.requests().empty());
}

}  // namespace vtdirect_test
