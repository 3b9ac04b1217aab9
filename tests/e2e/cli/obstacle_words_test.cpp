#include <gmock/gmock.h>

#include <cctype>

#include "tests/e2e/cli/vtdirect_fixture.h"
#include "tests/e2e/platform/server_with_obstacle.h"

using testing::HasSubstr;

namespace vtdirect_test {

/// What a user reads of an obstacle on the way to the server: what it is, and what to do next.
class ObstacleWords : public VtDirect, public testing::WithParamInterface<NamedObstacle> {
 protected:
  static std::string NextStep(Obstacle obstacle) {
    switch (obstacle) {
      case Obstacle::ExpiredCertificate:
        return "ask who runs the server for a new certificate, and look at this machine's date";
      case Obstacle::CertificateOfAnotherHost:
        return "write the server's address with a name that the certificate is for";
      case Obstacle::SelfSignedCertificate:
      case Obstacle::UnknownAuthority:
        return "name the file of that certificate, or of its authority, by --ca-file or ca_file, if you know "
               "it to be "
               "genuine";
      case Obstacle::EmptyAuthorityFile:
      case Obstacle::BrokenAuthorityFile:
        return "name a PEM file with the certificates to trust by --ca-file or ca_file";
      case Obstacle::OldTls:
        return "ask who runs the server to offer TLS 1.2 or newer";
      case Obstacle::HttpsAskedByHttp:
        return "write https in place of http in the server's address";
      case Obstacle::HttpAskedByHttps:
        return "look whether the port is right; write http in place of https only where nobody can listen in";
      case Obstacle::CertificateDemanded:
        return "name yours by --client-cert and --client-key, or client_cert and client_key";
      case Obstacle::ProxyThatRefuses:
        return "set VTDIRECT_PROXY_USER and VTDIRECT_PROXY_PASSWORD";
      case Obstacle::ProxyThatCannot:
        return "try again later; if it stays so, ask who runs the server or the proxy";
      case Obstacle::UnknownName:
        return "look whether the server's name is spelt right, and whether this machine has a network";
      case Obstacle::RefusedPort:
        return "look whether the server runs, and whether its address has the right port";
      case Obstacle::DeadRoute:
        return "look whether this machine has a network, and whether the server needs a VPN or a proxy";
    }
    return "";
  }
};

INSTANTIATE_TEST_SUITE_P(Of, ObstacleWords, testing::ValuesIn(AllObstacles()),
                         [](const auto& row) { return row.param.name; });

TEST_P(ObstacleWords, AreInTheMessageWithTheNextStepAndInTheTrace) {
  const ServerWithObstacle way = MakeServerWith(GetParam().obstacle, Home(""));
  std::vector<std::string> words = {"--trace", "3", "--no-prompt", "--connect-timeout", "2"};
  if (!way.authorityFile.empty()) words.insert(words.end(), {"--ca-file", way.authorityFile});
  if (!way.proxy.empty()) words.insert(words.end(), {"--proxy", way.proxy});
  words.insert(words.end(), {"check", way.url});
  const ProcessResult result = Run(words);
  EXPECT_EQ(result.status, 3) << result.err;
  std::string inner = way.sentence;
  inner[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(inner[0])));
  EXPECT_THAT(result.err, HasSubstr(": " + inner + "; " + NextStep(GetParam().obstacle) + "\n"));
  EXPECT_THAT(result.err, HasSubstr("Transport: " + way.url + ": " + way.sentence + ".\n"));
}

}  // namespace vtdirect_test
