#include <gmock/gmock.h>

#include <sstream>

#include "tests/e2e/cli/vtdirect_fixture.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/platform/tls_front.h"
#include "tests/e2e/platform/tls_server.h"

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

namespace vtdirect_test {

class Doctor : public VtDirect {
 protected:
  // The line of a step of the server "sim".
  [[nodiscard]] static std::string LineOf(const std::string& step, const ProcessResult& result) {
    std::istringstream stream(result.out);
    for (std::string line; std::getline(stream, line);) {
      if (line.find("\t" + step + "\t") != std::string::npos) return line;
    }
    return "(no line of " + step + " in " + result.out + result.err + ")";
  }
};

TEST_F(Doctor, WalksTheWayToAServerThatIsWell) {
  Serve();
  const ProcessResult result = Run({"doctor", "sim"});
  EXPECT_EQ(result.status, 0) << result.out << result.err;
  EXPECT_EQ(LineOf("name", result), "sim\tname\tok\t127.0.0.1 is an address");
  EXPECT_EQ(LineOf("route", result), "sim\troute\tok\tdirect; no proxy is set");
  EXPECT_THAT(
      LineOf("connection", result),
      MatchesRegex(
          "sim\tconnection\tok\t127\\.0\\.0\\.1, connected within [0-9]+ ms, answered within [0-9]+ ms"));
  EXPECT_THAT(LineOf("certificate", result), HasSubstr("\twarning\tnone: the server is asked over http"));
  EXPECT_EQ(LineOf("login", result), "sim\tlogin\tok\tthe server asked for none");
  EXPECT_THAT(LineOf("version", result),
              MatchesRegex("sim\tversion\tok\t[0-9]+\\.[0-9]+\\.[0-9]+\\.[0-9]+, supported"));
  EXPECT_THAT(LineOf("services", result), HasSubstr("\tok\tCADDocumentMgmt "));
  EXPECT_THAT(LineOf("services", result), HasSubstr("DataAdmin 5, DynamicDocMgmt 2"));
  EXPECT_EQ(LineOf("nonce", result), "sim\tnonce\tok\tthe server gives one, so that something can be stored");
  EXPECT_EQ(LineOf("content address", result),
            "sim\tcontent address\tok\thttp://" + server().authority() + " gives contents");
  EXPECT_THAT(LineOf("upload address", result), HasSubstr("\tskipped\t"));
}

// What it asks, whatever it finds, is never a change.
TEST_F(Doctor, SendsNothingButGets) {
  Serve();
  EXPECT_EQ(Run({"doctor", "--log-http", "log.har"}).status, 0);
  const std::string har = ReadFile(Here("log.har"));
  EXPECT_THAT(har, HasSubstr("\"method\":\"GET\""));
  EXPECT_THAT(har, Not(HasSubstr("\"method\":\"POST\"")));
  EXPECT_THAT(har, Not(HasSubstr("\"method\":\"PATCH\"")));
}

TEST_F(Doctor, SaysWhatIsWrongWhenNobodyAnswers) {
  const std::string url = "http://127.0.0.1:" + std::to_string(UnusedPort()) + "/";
  const ProcessResult result = Run({"--server", "sim=" + url, "doctor"});
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(LineOf("connection", result), HasSubstr("sim\tconnection\tfailed\tcannot connect to " + url));
  EXPECT_EQ(LineOf("nonce", result), "sim\tnonce\tskipped\tnothing more can be asked");
}

TEST_F(Doctor, KnowsAHostWhoseNameIsNotKnown) {
  const ProcessResult result = Run({"--server", "sim=http://no-such-host.invalid/", "doctor"});
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(LineOf("name", result), HasSubstr("sim\tname\tfailed\tno-such-host.invalid: "));
}

TEST_F(Doctor, TellsALoginThatIsRefusedAndOneThatIsTaken) {
  Serve({"--user", "anna:secret"});
  const ProcessResult none = Run({"doctor", "sim", "--no-prompt"});
  EXPECT_EQ(none.status, 4);
  EXPECT_THAT(LineOf("login", none),
              HasSubstr("\tfailed\tthe server demands a login, and there was none to give\t"));
  environment_["VTDIRECT_USER"] = "anna";
  environment_["VTDIRECT_PASSWORD"] = "wrong";
  EXPECT_THAT(LineOf("login", Run({"doctor", "sim"})),
              HasSubstr("\tfailed\tthe server refused the login (Basic)\t"));
  environment_["VTDIRECT_PASSWORD"] = "secret";
  const ProcessResult taken = Run({"doctor", "sim"});
  EXPECT_EQ(taken.status, 0) << taken.out;
  EXPECT_EQ(LineOf("login", taken), "sim\tlogin\tok\tthe server took the login (Basic)");
  EXPECT_THAT(LineOf("content address", taken), HasSubstr("\tok\t"));
}

TEST_F(Doctor, SaysThatSomethingElseAnswers) {
  ScriptedServer other([](Peer& peer, WireRequest&) { peer.Answer(200, "<html>hello</html>"); });
  const ProcessResult result = Run({"--server", "sim=" + other.Url(), "doctor"});
  EXPECT_EQ(result.status, 5) << result.out;
  EXPECT_THAT(LineOf("connection", result), HasSubstr("\tok\t"));
  EXPECT_THAT(LineOf("version", result), HasSubstr("\tfailed\t"));
}

TEST_F(Doctor, SeesThatAProxyIsBetween) {
  Serve();
  environment_["http_proxy"] = server().url();
  const ProcessResult result = Run({"doctor", "sim"});
  EXPECT_THAT(LineOf("route", result),
              HasSubstr("through the proxy " + server().url() + ", as http_proxy says"));
  EXPECT_THAT(LineOf("connection", result), HasSubstr("\ta proxy at 127.0.0.1, "));
}

TEST_F(Doctor, ShowsNoLoginOfAProxy) {
  Serve();
  environment_["http_proxy"] = "http://joe:CanaryPw@" + server().authority() + "/";
  EXPECT_THAT(Run({"doctor", "sim"}).out, Not(HasSubstr("CanaryPw")));
}

TEST_F(Doctor, NamesTheServersThatGiveNoContents) {
  Serve({"--fault", "GET *content/streams*=503"});
  const ProcessResult result = Run({"doctor", "sim"});
  EXPECT_EQ(result.status, 7) << result.out;
  EXPECT_THAT(LineOf("content address", result),
              HasSubstr("\tfailed\thttp://" + server().authority() + " gives no contents: HTTP 503\t"));
}

TEST_F(Doctor, SeesThatNothingCanBeStored) {
  Serve({"--fault", "GET *security/csrf=503"});
  const ProcessResult result = Run({"doctor", "sim"});
  EXPECT_EQ(result.status, 1) << result.out;
  EXPECT_THAT(LineOf("nonce", result),
              HasSubstr("\tfailed\tthe server gives none (HTTP 503), so that nothing can be stored\t"));
}

TEST_F(Doctor, RefusesANicknameThatIsNotListed) {
  Serve();
  EXPECT_EQ(Run({"doctor", "other"}).status, 9);
}

TEST_F(Doctor, TellsIssuerAndEndOfACertificate) {
  if (!HaveOpenSsl()) GTEST_SKIP() << "the openssl program, which makes certificates, is missing";
  Serve();
  const std::string authority = MakeCertificate(Home(""), "server", "IP:127.0.0.1");
  const std::string port = server().authority().substr(server().authority().find(':') + 1);
  TlsFront front(Home(""), "server", std::stoi(port), {});
  const ProcessResult result =
      Run({"--ca-file", authority, "--server", "tls=" + front.Url(), "doctor", "tls", "--no-prompt"});
  EXPECT_THAT(LineOf("certificate", result),
              MatchesRegex("tls\tcertificate\t[a-z]+\t.*, issued by .*, valid until "
                           "[0-9]+-[0-9][0-9]-[0-9][0-9].*"));
}

}  // namespace vtdirect_test
