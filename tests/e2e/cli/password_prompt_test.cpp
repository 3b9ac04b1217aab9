#include <gmock/gmock.h>

#include "tests/e2e/cli/terminal_session.h"
#include "tests/e2e/cli/vtdirect_fixture.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {
namespace {

class PasswordPrompt : public VtDirect {
 protected:
  PasswordPrompt() { Serve({"--user", "anna:secret"}); }
  [[nodiscard]] std::unique_ptr<TerminalSession> StartOnTerminal(std::vector<std::string> words) const {
    words.insert(words.end(), {"--server", "sim=" + server().url()});
    return std::make_unique<TerminalSession>(words, environment_, Here(""));
  }
};

}  // namespace

TEST_F(PasswordPrompt, AsksForUserAndPasswordAndDoesNotShowThePassword) {
  const auto session = StartOnTerminal({"get", server().Uid("D1001")});
  ASSERT_TRUE(session->Sees("User name for http://" + server().authority() + ": "));
  EXPECT_TRUE(session->Echoes());
  session->Types("anna\n");
  ASSERT_TRUE(session->Sees("Password for anna at http://" + server().authority() + ": "));
  ASSERT_TRUE(WaitUntil([&session] { return !session->Echoes(); }));
  session->Types("secret\n");
  EXPECT_EQ(session->Wait(), 0);
  EXPECT_THAT(session->screen(), Not(HasSubstr("secret")));
  EXPECT_TRUE(session->Echoes());
  EXPECT_THAT(ReadFile(Here("fork.lxz")), testing::StartsWith(forkHead));
}

TEST_F(PasswordPrompt, AsksThreeTimesAtMost) {
  environment_["VTDIRECT_USER"] = "anna";
  const auto session = StartOnTerminal({"get", server().Uid("D1001")});
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(session->Sees("Password for anna at ")) << i;
    ASSERT_TRUE(WaitUntil([&session] { return !session->Echoes(); }));
    session->Types("wrong\n");
  }
  EXPECT_EQ(session->Wait(), 4);
  EXPECT_THAT(session->screen(), HasSubstr("refused the credentials"));
}

TEST_F(PasswordPrompt, RestoresTheTerminalWhenItIsInterrupted) {
  environment_["VTDIRECT_USER"] = "anna";
  const auto session = StartOnTerminal({"get", server().Uid("D1001")});
  ASSERT_TRUE(session->Sees("Password for anna at "));
  ASSERT_TRUE(WaitUntil([&session] { return !session->Echoes(); }));
  session->Types("\x03");
  EXPECT_EQ(session->Wait(), 130);
  EXPECT_TRUE(session->Echoes());
  EXPECT_THAT(HereNames(), testing::IsEmpty());
}

TEST_F(PasswordPrompt, IsNotShownWhenAskedNotTo) {
  const auto session = StartOnTerminal({"--no-prompt", "get", server().Uid("D1001")});
  EXPECT_EQ(session->Wait(), 4);
  EXPECT_THAT(session->screen(), Not(HasSubstr("User name")));
}

TEST_F(PasswordPrompt, ProgressIsShownOnATerminalAndTakenAway) {
  environment_["VTDIRECT_USER"] = "anna";
  environment_["VTDIRECT_PASSWORD"] = "secret";
  const auto session = StartOnTerminal({"get", server().Uid("D1009"), "-o", "copy"});
  EXPECT_EQ(session->Wait(), 0);
  EXPECT_THAT(session->screen(), HasSubstr("\r\033[Kcopy  "));
  EXPECT_THAT(session->screen(), HasSubstr("of 976.6 KiB"));
  EXPECT_THAT(session->screen(), HasSubstr("\r\033[Kvtdirect: saved copy, 976.6 KiB"));
}

}  // namespace vtdirect_test
