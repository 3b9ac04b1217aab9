#include <gmock/gmock.h>

#include <filesystem>

#include "tests/e2e/cli/terminal_session.h"
#include "tests/e2e/cli/vtdirect_fixture.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {

/// A server that wants a login, a helper script that keeps one in a file, and somebody at a terminal.
class Login : public VtDirect {
 protected:
  Login() {
    Serve({"--user", "anna:secret", "--token", "anna:CanaryToken"});
    WriteHome("helper",
              "#!/bin/sh\ncase \"$1\" in\nget) cat \"$HOME/kept\" ;;\nstore) cat > \"$HOME/kept\" ;;\n"
              "erase) rm -f \"$HOME/kept\" ;;\nesac 2> /dev/null\nexit 0\n",
              0700);
    WriteHome(".config/vtdirect/config",
              "[server sim]\nurl = " + server().url() + "\ncredential_helper = " + Home("helper") + "\n",
              0600);
  }

  [[nodiscard]] std::unique_ptr<TerminalSession> StartOnTerminal(
      const std::vector<std::string>& words) const {
    return std::make_unique<TerminalSession>(words, environment_, Here(""));
  }
  [[nodiscard]] std::string Kept() const {
    return std::filesystem::exists(Home("kept")) ? ReadFile(Home("kept")) : "";
  }
};

TEST_F(Login, HandsWhatTheServerTookToTheHelper) {
  const auto session = StartOnTerminal({"login", "sim"});
  ASSERT_TRUE(session->Sees("User name for http://" + server().authority() + ": "));
  session->Types("anna\n");
  ASSERT_TRUE(session->Sees("Password for anna at "));
  ASSERT_TRUE(WaitUntil([&session] { return !session->Echoes(); }));
  session->Types("secret\n");
  EXPECT_EQ(session->Wait(), 0) << session->screen();
  EXPECT_THAT(session->screen(), Not(HasSubstr("secret")));
  EXPECT_EQ(Kept(), "protocol=http\nhost=" + server().authority() + "\nusername=anna\npassword=secret\n\n");
  EXPECT_EQ(Run({"check", "sim"}).status, 0) << "the next command is let in";
}

TEST_F(Login, KeepsNothingThatTheServerRefuses) {
  const auto session = StartOnTerminal({"login", "sim", "--user", "anna"});
  ASSERT_TRUE(session->Sees("Password for anna at "));
  ASSERT_TRUE(WaitUntil([&session] { return !session->Echoes(); }));
  session->Types("wrong\n");
  EXPECT_EQ(session->Wait(), 4);
  EXPECT_THAT(session->screen(), HasSubstr("refused the login"));
  EXPECT_EQ(Kept(), "");
}

TEST_F(Login, KeepsATokenAndSendsItAsOneAfterwards) {
  const auto session = StartOnTerminal({"login", "sim", "--token"});
  ASSERT_TRUE(session->Sees("Token for http://" + server().authority() + ": "));
  ASSERT_TRUE(WaitUntil([&session] { return !session->Echoes(); }));
  session->Types("CanaryToken\n");
  EXPECT_EQ(session->Wait(), 0) << session->screen();
  EXPECT_THAT(session->screen(), Not(HasSubstr("CanaryToken")));
  EXPECT_THAT(Kept(), HasSubstr("username=bearer-token\npassword=CanaryToken\n"));
  const ProcessResult next = Run({"--no-prompt", "check", "sim"});
  EXPECT_EQ(next.status, 0) << next.err;
}

TEST_F(Login, DoesNotAskWithoutSomebodyToKeepTheAnswer) {
  WriteHome(".config/vtdirect/config", "[servers]\nsim = " + server().url() + "\n", 0600);
  const ProcessResult result = Run({"login", "sim"});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.err, HasSubstr("no credential_helper is set for " + server().url()));
}

TEST_F(Login, NeedsATerminalAndAListedServer) {
  EXPECT_EQ(Run({"login", "sim"}).status, 4);
  EXPECT_EQ(Run({"login", "sim", "--no-prompt"}).status, 2);
  EXPECT_EQ(Run({"login", "other"}).status, 9);
}

TEST_F(Login, KeepsNothingForAServerThatAsksForNone) {
  Serve();
  WriteHome(".config/vtdirect/config",
            "[server sim]\nurl = " + server().url() + "\ncredential_helper = " + Home("helper") + "\n", 0600);
  const auto session = StartOnTerminal({"login", "sim", "--user", "anna"});
  ASSERT_TRUE(session->Sees("Password for anna at "));
  session->Types("secret\n");
  EXPECT_EQ(session->Wait(), 1);
  EXPECT_THAT(session->screen(), HasSubstr("asked for no login"));
  EXPECT_EQ(Kept(), "");
}

}  // namespace vtdirect_test
