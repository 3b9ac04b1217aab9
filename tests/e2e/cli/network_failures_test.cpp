#include <gmock/gmock.h>

#include "tests/e2e/cli/vtdirect_fixture.h"
#include "tests/e2e/platform/certificate_maker.h"
#include "tests/e2e/platform/raw_server.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/platform/tls_front.h"

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace vtdirect_test {

/// What a user reads when the way to the server is at fault.
class UnusableServer : public VtDirect {
 protected:
  /// What `check` says of a URL with these options before it; its exit status has to be 3.
  std::string Check(const std::string& url, std::vector<std::string> options = {}, int status = 3) {
    options.insert(options.end(), {"--no-prompt", "--stall-timeout", "1", "check", url});
    const ProcessResult result = Run(options);
    EXPECT_EQ(result.status, status) << result.err;
    return result.err;
  }
  static std::string CannotConnect(const std::string& url, const std::string& why) {
    return "vtdirect: cannot connect to " + url + ": " + why + "\n";
  }
  static std::string NoAnswer(const std::string& url, const std::string& why) {
    return "vtdirect: no usable answer from " + url + ": " + why + "\n";
  }
};

TEST_F(UnusableServer, OfAnotherKindIsTold) {
  ScriptedServer shop([](Peer& peer, WireRequest&) { peer.Answer(200, "<html>Welcome: buy</html>"); });
  const std::string why =
      "what answers there is not a Vantry server; look whether host, port and path of the server's address "
      "are "
      "right";
  EXPECT_EQ(Check(shop.Url(), {}, 5), NoAnswer(shop.Url(), why));
  ScriptedServer empty([](Peer& peer, WireRequest&) { peer.Answer(404, "<html>canary</html>"); });
  EXPECT_EQ(Check(empty.Url()), NoAnswer(empty.Url(), why));
  const RawServer shell("SSH-2.0-OpenSSH_9.2\r\n");
  EXPECT_THAT(Check("http://" + shell.Authority()), HasSubstr("does not speak HTTP; look whether host"));
}

TEST_F(UnusableServer, ThatIsSilentIsNotCalledOneThatTakesNoConnection) {
  ScriptedServer silent([](Peer& peer, WireRequest&) { peer.StaySilent(); });
  EXPECT_EQ(Check(silent.Url()),
            NoAnswer(silent.Url(),
                     "the server took the request and did not begin to answer within 1 s; try "
                     "again later, or with a larger --stall-timeout"));
  const std::string tls = "https://127.0.0.1:" + std::to_string(silent.port());
  EXPECT_EQ(Check(tls, {"--connect-timeout", "1"}),
            NoAnswer(tls,
                     "the server took the connection and did not answer the TLS handshake within 1 s; look "
                     "whether the server speaks https on this port, or try again later"));
  const FullPort full;
  const std::string url = "http://127.0.0.1:" + std::to_string(full.port());
  EXPECT_THAT(Check(url, {"--connect-timeout", "1"}),
              AllOf(StartsWith("vtdirect: cannot connect to " + url), HasSubstr("within 1 s; look whether")));
}

TEST_F(UnusableServer, ThatIsNotReadyIsToldByItsStatusAndItsWords) {
  Serve({"--fault", "GET *OrvetGW*=503"});
  EXPECT_THAT(Check(server().url()), AllOf(StartsWith("vtdirect: no usable answer from " + server().url() +
                                                      ": the server is not ready to work (HTTP 503)"),
                                           EndsWith("; try again later\n")));
}

TEST_F(UnusableServer, ThatSpeaksHttpsIsToldToOneWhoAsksByHttp) {
  const std::string said = "The plain HTTP request was sent to HTTPS port";
  const RawServer server("HTTP/1.1 400 No\r\nContent-Length: " + std::to_string(said.size()) + "\r\n\r\n" +
                         said);
  const std::string port = std::to_string(server.port());
  EXPECT_EQ(Check("http://" + server.Authority()),
            NoAnswer("http://" + server.Authority(), "the server speaks https on port " + port +
                                                         ", and was asked by http; write https in place of "
                                                         "http in the server's address"));
}

TEST_F(UnusableServer, OffersNoWayToLogInThatIsKnown) {
  ScriptedServer closed([](Peer& peer, WireRequest&) { peer.Answer(401, "", "WWW-Authenticate: NTLM\r\n"); });
  environment_["VTDIRECT_USER"] = "anna";
  environment_["VTDIRECT_PASSWORD"] = "canary";
  const std::string err = Check(closed.Url(), {}, 4);
  EXPECT_THAT(err, HasSubstr("(the server offers only ways to log in that are not supported here: NTLM; ask "
                             "who runs the server to offer Basic, Digest, Negotiate or Bearer)"));
  EXPECT_THAT(err, Not(HasSubstr("canary")));
}

TEST_F(UnusableServer, IsToldWithTheProxyThatDoesNotLeadToIt) {
  ScriptedServer proxy([](Peer& peer, WireRequest&) { peer.Answer(407, "who?"); });
  environment_["VTDIRECT_PROXY_USER"] = "paula";
  environment_["VTDIRECT_PROXY_PASSWORD"] = "canary";
  for (const char* url : {"http://vantry.invalid/", "https://vantry.invalid/"}) {
    EXPECT_EQ(Check(url, {"--proxy", proxy.Url()}),
              CannotConnect(url,
                            "the proxy demands a login, or another one than it was given (HTTP 407); set "
                            "VTDIRECT_PROXY_USER and VTDIRECT_PROXY_PASSWORD"));
  }
}

/// The simulator behind certificates that the test makes.
class UnusableCertificate : public UnusableServer {
 protected:
  UnusableCertificate() {
    Serve();
    authority_ = MakeCertificate(Home(""), {"authority", ""});
  }
  std::string CheckWith(CertificateOrder order) {
    order.name = "server";
    if (order.authority.empty()) order.authority = "authority";
    MakeCertificate(Home(""), order);
    return CheckServer();
  }
  std::string CheckServer() {
    const std::string port = server().authority().substr(server().authority().find(':') + 1);
    const TlsFront front(Home(""), "server", std::stoi(port));
    url_ = front.Url();
    return Check(url_, {"--ca-file", authority_});
  }

  std::string authority_;
  std::string url_;
};

TEST_F(UnusableCertificate, IsToldWithItsDate) {
  const std::string err = CheckWith({"", "IP:127.0.0.1", -30, -3});
  EXPECT_EQ(err, NoAnswer(url_, "the server's certificate expired on " + DayText(-3) +
                                    "; ask who runs the server for a new certificate, and look at this "
                                    "machine's date"));
}

TEST_F(UnusableCertificate, IsToldWithItsHosts) {
  const std::string err = CheckWith({"", "DNS:vantry.example"});
  EXPECT_EQ(err, NoAnswer(url_,
                          "the server's certificate is for vantry.example, and not for 127.0.0.1; write "
                          "the server's address with a name that the certificate is for"));
}

TEST_F(UnusableCertificate, OfTheSimulatorsOwnIsToldToOneWhoDoesNotTrustIt) {
  Serve({"--tls-self-signed", Home("tls")});
  EXPECT_EQ(
      Check(server().url()),
      NoAnswer(server().url(),
               "the server's certificate is signed by itself, and is not trusted here; name the file of "
               "that certificate, or of its authority, by --ca-file or ca_file, if you know it to be "
               "genuine"));
  EXPECT_EQ(Run({"--ca-file", Home("tls/cert.pem"), "check", server().url()}).status, 0);
  // By http the simulator says nothing at all.
  const std::string plain = "http" + server().url().substr(5);
  EXPECT_EQ(Check(plain), NoAnswer(plain,
                                   "the server closed the connection without an answer; try again; if "
                                   "it stays so, look whether the address should begin with https"));
}

TEST_F(UnusableCertificate, IsNotLookedAtWithoutAFileOfTrustedOnes) {
  MakeCertificate(Home(""), {"server", "IP:127.0.0.1", -1, 2, "authority"});
  authority_ = Home("empty.pem");
  WriteFile(authority_, "");
  const std::string err = CheckServer();
  EXPECT_EQ(err, CannotConnect(
                     url_, "the file of trusted certificates holds no certificate: " + authority_ +
                               "; name a PEM file with the certificates to trust by --ca-file or ca_file"));
}

class RefusedContent : public VtDirect {};

TEST_F(RefusedContent, IsNoContentThatBrokeOff) {
  Serve({"--fault", "GET *streams*=status:503:" + std::string(75, 'r')});
  const ProcessResult result = Run({"get", server().Uid("D1001"), "-o", "copy"});
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(result.err, "vtdirect: the content of " + server().Uid("D1001") +
                            " was not given: the server is not ready to work (HTTP 503): " +
                            std::string(75, 'r') + "; try again later\n");
}

TEST_F(RefusedContent, ThatBreaksOffOrStopsTellsWhich) {
  Serve({"--fault", "GET *streams*=stall:100"});
  const ProcessResult result = Run({"--stall-timeout", "1", "get", server().Uid("D1001"), "-o", "copy"});
  EXPECT_EQ(result.status, 7);
  EXPECT_THAT(result.err, HasSubstr(" broke off after 100 bytes of "));
  EXPECT_THAT(result.err,
              EndsWith(": the server stopped in the middle of its answer, for 1 s; try again later, "
                       "or with a larger --stall-timeout\n"));
}

}  // namespace vtdirect_test
