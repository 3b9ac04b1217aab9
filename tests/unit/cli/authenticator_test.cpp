#include "hosts/cli/servers/authenticator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace vtdirect_cli {
namespace {

constexpr const char* serverUrl = "https://plm.example/vt/";

class AuthenticatorTest : public testing::Test {
 protected:
  Authenticator Make(const std::vector<std::string>& named = {serverUrl}) { return Make(named, named); }
  Authenticator Make(const std::vector<std::string>& named, const std::vector<std::string>& meant) {
    CredentialSinks sinks;
    sinks.setPassword = [this](const std::string& url, const std::string& user, const std::string& password) {
      set_.push_back(url + " " + user + ":" + password);
    };
    sinks.setToken = [this](const std::string& url, const std::string& token) {
      set_.push_back(url + " token " + token);
    };
    return {sources_, sinks, named, meant};
  }
  void Netrc(const std::string& text) {
    sources_.netrc = [this, text] {
      ++netrcReads_;
      return ReadNetrc(text);
    };
  }
  void Helper(const HelperAnswer& answer) {
    sources_.helper.get = [this, answer](const Origin& origin, const std::string& user) {
      asked_.push_back("helper " + TextOf(origin) + " " + user);
      return answer;
    };
    sources_.helper.store = [this](const Origin& origin, const PasswordCredentials& accepted) {
      told_.push_back("store " + TextOf(origin) + " " + accepted.user + ":" + accepted.password);
    };
    sources_.helper.erase = [this](const Origin& origin, const PasswordCredentials& refused) {
      told_.push_back("erase " + TextOf(origin) + " " + refused.user + ":" + refused.password);
    };
  }
  void Prompt(const std::string& password) {
    sources_.prompt = [this, password](const std::string& origin, const std::string& user) {
      asked_.push_back(origin + " " + user);
      return PasswordCredentials{user.empty() ? "typed" : user, password};
    };
  }

  CredentialSources sources_;
  std::vector<std::string> set_;
  std::vector<std::string> asked_;
  std::vector<std::string> told_;  // to the helper
  int netrcReads_ = 0;
};

}  // namespace

TEST_F(AuthenticatorTest, TriesTokenEnvironmentNetrcAndThreeQuestionsInThisOrderOnceEach) {
  sources_.token = "t";
  sources_.user = "joe";
  sources_.password = "e";
  Netrc("machine plm.example login joe password n");
  Prompt("p");
  Authenticator authenticator = Make();
  for (int i = 0; i < 6; ++i) EXPECT_TRUE(authenticator.Answer(serverUrl)) << i;
  EXPECT_FALSE(authenticator.refused());
  EXPECT_FALSE(authenticator.Answer(serverUrl));
  EXPECT_FALSE(authenticator.Answer(serverUrl));
  EXPECT_EQ(authenticator.refusal(), "https://plm.example refused the credentials");
  const std::string at = serverUrl;
  EXPECT_THAT(set_, ElementsAre(at + " token t", at + " joe:e", at + " joe:n", at + " joe:p", at + " joe:p",
                                at + " joe:p"));
  EXPECT_EQ(netrcReads_, 1);
}

TEST_F(AuthenticatorTest, WithNothingTellsHowToGiveCredentials) {
  Authenticator authenticator = Make();
  EXPECT_FALSE(authenticator.Answer(serverUrl));
  EXPECT_THAT(authenticator.refusal(), HasSubstr("https://plm.example demands credentials"));
  EXPECT_THAT(authenticator.advice(), HasSubstr("set VTDIRECT_USER"));
}

TEST_F(AuthenticatorTest, NamesTheLoginCommandOfAServerWithACredentialHelper) {
  Configuration configuration;
  configuration.servers = {{"plm", serverUrl}};
  configuration.settings["plm"].credentialHelper = "keyring";
  sources_.facts = [configuration](const Origin& origin) { return LoginFactsOf(configuration, origin); };
  Authenticator none = Make();
  EXPECT_FALSE(none.Answer(serverUrl));
  EXPECT_THAT(none.advice(), HasSubstr("\"vtdirect login 'plm'\""));
  sources_.user = "joe";
  sources_.password = "wrong";
  Authenticator wrong = Make();
  EXPECT_TRUE(wrong.Answer(serverUrl));
  EXPECT_FALSE(wrong.Answer(serverUrl));
  EXPECT_EQ(wrong.refusal(), "https://plm.example refused the credentials");
  EXPECT_THAT(wrong.advice(), HasSubstr("\"vtdirect login 'plm'\""));
}

TEST_F(AuthenticatorTest, NamesTheLineThatLetsAnotherServerHaveTheLoginToo) {
  const std::string other = "https://files.example/store";
  Configuration configuration;
  configuration.servers = {{"plm", serverUrl}, {"uploads", other}};
  sources_.facts = [configuration](const Origin& origin) { return LoginFactsOf(configuration, origin); };
  sources_.token = "t";
  Authenticator authenticator = Make({serverUrl, other}, {serverUrl});
  EXPECT_FALSE(authenticator.Answer(other));
  EXPECT_THAT(authenticator.advice(), HasSubstr("login_also_for = uploads under [server plm]"));
  EXPECT_THAT(authenticator.advice(), HasSubstr("VTDIRECT_SERVER_plm__LOGIN_ALSO_FOR=uploads"));
}

TEST_F(AuthenticatorTest, DoesNotSendWrongEnvironmentCredentialsTwice) {
  sources_.user = "joe";
  sources_.password = "wrong";
  Authenticator authenticator = Make();
  EXPECT_TRUE(authenticator.Answer(serverUrl));
  EXPECT_FALSE(authenticator.Answer(serverUrl));
  EXPECT_FALSE(authenticator.Answer("https://plm.example/other/"));
  EXPECT_EQ(set_.size(), 1U);
}

TEST_F(AuthenticatorTest, TakesThePasswordOfANamedUserFromTheNetrcFile) {
  sources_.user = "ann";
  Netrc("machine plm.example login joe password 1 machine plm.example login ann password 2");
  Authenticator authenticator = Make();
  EXPECT_TRUE(authenticator.Answer(serverUrl));
  EXPECT_THAT(set_, ElementsAre(std::string(serverUrl) + " ann:2"));
}

TEST_F(AuthenticatorTest, StopsAskingWhenTheUserGivesUp) {
  sources_.prompt = [this](const std::string& origin,
                           const std::string&) -> std::optional<PasswordCredentials> {
    asked_.push_back(origin);
    return std::nullopt;
  };
  Authenticator authenticator = Make();
  EXPECT_FALSE(authenticator.Answer(serverUrl));
  EXPECT_FALSE(authenticator.Answer(serverUrl));
  EXPECT_THAT(asked_, ElementsAre("https://plm.example"));
}

TEST_F(AuthenticatorTest, KeepsWhatIsMeantForOneServerFromAnotherThatIsListed) {
  const std::string other = "https://files.example/store";
  sources_.token = "t";
  sources_.user = "joe";
  sources_.password = "e";
  Authenticator authenticator = Make({serverUrl, other}, {serverUrl});
  EXPECT_FALSE(authenticator.Answer(other));
  EXPECT_THAT(set_, IsEmpty());
  EXPECT_THAT(authenticator.advice(), HasSubstr("login_also_for"));
  EXPECT_TRUE(authenticator.Answer(serverUrl));
  EXPECT_THAT(set_, ElementsAre(std::string(serverUrl) + " token t"));
  Authenticator paired = Make({serverUrl, other}, {serverUrl, other});
  EXPECT_TRUE(paired.Answer(other));
}

TEST_F(AuthenticatorTest, AsksForWhatIsMeantForAnotherServerThatIsListed) {
  const std::string other = "https://files.example/store";
  sources_.token = "t";
  Netrc("machine files.example login f password n");
  Prompt("p");
  Authenticator authenticator = Make({serverUrl, other}, {serverUrl});
  EXPECT_TRUE(authenticator.Answer(other));
  EXPECT_TRUE(authenticator.Answer(other));
  EXPECT_THAT(set_, ElementsAre(other + " f:n", other + " typed:p"));
  EXPECT_THAT(asked_, ElementsAre("https://files.example "));
}

TEST_F(AuthenticatorTest, GivesNothingToAServerThatTheUserHasNotNamed) {
  sources_.user = "joe";
  sources_.password = "e";
  Netrc("default login d password d machine evil.example login e password e");
  Prompt("p");
  Authenticator authenticator = Make();
  for (const char* url : {"https://evil.example/", "http://plm.example/vt/", "https://plm.example:8443/vt/",
                          "https://plm.example@evil.example/", "https://plm.example.evil.example/", ""}) {
    EXPECT_FALSE(authenticator.Answer(url)) << url;
    EXPECT_TRUE(authenticator.refused());
  }
  EXPECT_THAT(set_, IsEmpty());
  EXPECT_THAT(asked_, IsEmpty());
  EXPECT_THAT(authenticator.refusal(), HasSubstr("go only to servers that you have named"));
}

TEST_F(AuthenticatorTest, FollowsAServerFromHttpToHttpsAtTheUsualPortsOnly) {
  sources_.user = "joe";
  sources_.password = "e";
  Authenticator authenticator = Make({"http://plm.example/vt", "http://other.example:8080/vt"});
  EXPECT_TRUE(authenticator.Answer("https://plm.example/vt"));
  EXPECT_FALSE(authenticator.Answer("https://plm.example:8443/vt"));
  EXPECT_FALSE(authenticator.Answer("https://other.example/vt"));
}

TEST_F(AuthenticatorTest, KeepsServersApart) {
  sources_.token = "t";
  Authenticator authenticator = Make({"https://a.example/", "https://b.example/"});
  EXPECT_TRUE(authenticator.Answer("https://a.example/"));
  EXPECT_FALSE(authenticator.Answer("https://a.example/"));
  EXPECT_TRUE(authenticator.Answer("https://b.example/"));
}

TEST_F(AuthenticatorTest, AsksTheHelperAfterTheEnvironmentAndBeforeTheNetrcFile) {
  sources_.user = "joe";
  sources_.password = "e";
  Helper({PasswordCredentials{"joe", "h"}, false});
  Netrc("machine plm.example login joe password n");
  Authenticator authenticator = Make();
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(authenticator.Answer(serverUrl)) << i;
  const std::string at = serverUrl;
  EXPECT_THAT(set_, ElementsAre(at + " joe:e", at + " joe:h", at + " joe:n"));
  EXPECT_THAT(asked_, ElementsAre("helper https://plm.example joe"));
  EXPECT_THAT(told_, ElementsAre("erase https://plm.example joe:h"));
}

TEST_F(AuthenticatorTest, TellsTheHelperWhatWasTaken) {
  Helper({PasswordCredentials{"joe", "h"}, false});
  Authenticator authenticator = Make();
  EXPECT_TRUE(authenticator.Answer(serverUrl));
  EXPECT_THAT(told_, IsEmpty());
  authenticator.TellAccepted();
  authenticator.TellAccepted();
  EXPECT_THAT(told_, ElementsAre("store https://plm.example joe:h"));
}

TEST_F(AuthenticatorTest, TellsTheHelperWhatWasTypedWhenItWasTaken) {
  Helper({});
  Prompt("p");
  Authenticator authenticator = Make();
  EXPECT_TRUE(authenticator.Answer(serverUrl));
  EXPECT_TRUE(authenticator.Answer(serverUrl));
  EXPECT_THAT(told_, IsEmpty()) << "what the helper never gave is not taken from it";
  authenticator.TellAccepted();
  EXPECT_THAT(told_, ElementsAre("store https://plm.example typed:p"));
}

TEST_F(AuthenticatorTest, AsksNobodyElseWhenTheHelperSaysToQuit) {
  Helper({std::nullopt, true});
  Netrc("machine plm.example login joe password n");
  Prompt("p");
  Authenticator authenticator = Make();
  EXPECT_FALSE(authenticator.Answer(serverUrl));
  EXPECT_THAT(set_, IsEmpty());
  EXPECT_EQ(netrcReads_, 0);
  EXPECT_TRUE(authenticator.refused());
}

TEST_F(AuthenticatorTest, NeverAsksTheHelperForAServerThatTheUserHasNotNamed) {
  Helper({PasswordCredentials{"joe", "h"}, false});
  Authenticator authenticator = Make();
  EXPECT_FALSE(authenticator.Answer("https://evil.example/"));
  EXPECT_THAT(asked_, IsEmpty());
}

}  // namespace vtdirect_cli
