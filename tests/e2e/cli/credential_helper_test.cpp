#include <gmock/gmock.h>

#include "tests/e2e/cli/vtdirect_fixture.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {

/// A server that wants a password, and a helper script that keeps one in a file, as a keyring would.
class HelpedServer : public VtDirect {
 protected:
  HelpedServer() {
    Serve({"--user", "anna:se cret:1"});
    Configure(Home("helper"));
    WriteHome("helper",
              "#!/bin/sh\nlog=" + Home("log") +
                  "\necho \"$1\" >> $log\nsed 's/^password=/secret=/' >> $log\n" +
                  "test \"$1\" = get && cat " + Home("answer") + "\nexit 0\n",
              0700);
    WriteHome("answer", "username=anna\npassword=se cret:1\n", 0600);
  }

  void Configure(const std::string& helper) {
    WriteHome(".config/vtdirect/config",
              "[server here]\nurl = " + server().url() + "\ncredential_helper = " + helper + "\n", 0600);
  }
  [[nodiscard]] std::string Told() const { return ReadFile(Home("log")); }
  [[nodiscard]] std::string About(const std::string& action) const {
    return action + "\nprotocol=http\nhost=" + server().authority() + "\n";
  }
};

TEST_F(HelpedServer, LetsInWhomTheHelperKnowsAndHasItKeepThat) {
  const ProcessResult result = Run({"check", "sim"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(Told(), About("get") + "\n" + About("store") + "username=anna\nsecret=se cret:1\n\n");
  EXPECT_EQ(result.err, "");
}

TEST_F(HelpedServer, HasWhatWasRefusedForgotten) {
  WriteHome("answer", "username=anna\npassword=wrong\n", 0600);
  const ProcessResult result = Run({"check", "sim"});
  EXPECT_EQ(result.status, 4);
  EXPECT_EQ(Told(), About("get") + "\n" + About("erase") + "username=anna\nsecret=wrong\n\n");
  EXPECT_THAT(result.err, Not(HasSubstr("wrong")));
}

TEST_F(HelpedServer, TellsTheHelperWhoIsMeant) {
  environment_["VTDIRECT_USER"] = "bruno";
  EXPECT_EQ(Run({"check", "sim"}).status, 4) << "an answer for anna is none for bruno";
  EXPECT_EQ(Told(), About("get") + "username=bruno\n\n");
}

TEST_F(HelpedServer, GoesOnWithTheNetrcFileWhenTheHelperKnowsNothing) {
  WriteHome("answer", "", 0600);
  WriteHome(".netrc", "machine 127.0.0.1 login anna password \"se cret:1\"\n", 0600);
  EXPECT_EQ(Run({"check", "sim"}).status, 0);
  EXPECT_EQ(Told(), About("get") + "\n");
  WriteHome("answer", "quit=1\n", 0600);
  EXPECT_EQ(Run({"check", "sim"}).status, 4) << "the helper has said that nothing else is to be asked";
}

TEST_F(HelpedServer, PassesOverAHelperThatPrintsNonsenseOrIsNotThere) {
  WriteHome("answer", "se cret:1\n", 0600);
  const ProcessResult nonsense = Run({"check", "sim"});
  EXPECT_EQ(nonsense.status, 4);
  EXPECT_THAT(nonsense.err, HasSubstr("warning: the credential helper has printed what is no answer"));
  EXPECT_THAT(nonsense.err, Not(HasSubstr("se cret")));
  Configure(Home("missing"));
  EXPECT_EQ(Run({"check", "sim"}).status, 4);
}

TEST_F(HelpedServer, EndsAHelperThatHangsWhenTheTimeIsOver) {
  Configure("sleep 60; :");
  const ProcessResult result = Run({"--max-time", "1", "check", "sim"});
  EXPECT_EQ(result.status, 12);
}

}  // namespace vtdirect_test
