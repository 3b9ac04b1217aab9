#include "tests/e2e/platform/server_with_obstacle.h"

#include <openssl/ssl.h>

#include "tests/e2e/platform/certificate_maker.h"
#include "tests/e2e/platform/raw_server.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/platform/tls_front.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/unused_port.h"

namespace vtdirect_test {
namespace {

using Detail = du::http::FailureDetail;

std::string WithLength(const std::string& line, const std::string& body) {
  return "HTTP/1.1 " + line + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// A server behind a certificate made by this order, when the "authority" is trusted.
ServerWithObstacle Certified(const std::string& directory, CertificateOrder order,
                             const TlsDemand& demand = {}) {
  ServerWithObstacle made;
  made.authorityFile = MakeCertificate(directory, {"authority", ""});
  order.name = "server";
  MakeCertificate(directory, order);
  const auto server = std::make_shared<RawServer>(WithLength("404 No", ""));
  const auto front = std::make_shared<TlsFront>(directory, "server", server->port(), demand);
  made.url = front->Url();
  made.parts = {server, front};
  return made;
}

CertificateOrder OfTheAuthority(const std::string& hosts = "IP:127.0.0.1") {
  return {"", hosts, -1, 2, "authority"};
}

ServerWithObstacle Behind(const std::string& file, const std::string& text, const std::string& directory) {
  ServerWithObstacle made = Certified(directory, OfTheAuthority());
  made.authorityFile = directory + "/" + file;
  WriteFile(made.authorityFile, text);
  return made;
}

ServerWithObstacle Raw(const std::string& scheme, const std::string& bytes) {
  const auto server = std::make_shared<RawServer>(bytes);
  ServerWithObstacle made;
  made.url = scheme + "://" + server->Authority();
  made.parts = {server};
  return made;
}

ServerWithObstacle ThroughProxy(int status) {
  const auto proxy =
      std::make_shared<ScriptedServer>([status](Peer& peer, WireRequest&) { peer.Answer(status, "no"); });
  ServerWithObstacle made;
  made.url = "https://vantry.invalid";
  made.proxy = proxy->Url();
  made.parts = {proxy};
  return made;
}

ServerWithObstacle At(const std::string& url) {
  ServerWithObstacle made;
  made.url = url;
  return made;
}

ServerWithObstacle Saying(ServerWithObstacle made, Detail detail, const std::string& sentence) {
  made.detail = detail;
  made.sentence = sentence;
  return made;
}

std::string PortOf(const ServerWithObstacle& server) {
  return server.url.substr(server.url.rfind(':') + 1);
}

ServerWithObstacle MakeCertificateObstacle(Obstacle obstacle, const std::string& directory) {
  switch (obstacle) {
    case Obstacle::ExpiredCertificate:
      return Saying(Certified(directory, {"", "IP:127.0.0.1", -30, -3, "authority"}),
                    Detail::CertificateExpired, "The server's certificate expired on " + DayText(-3));
    case Obstacle::CertificateOfAnotherHost:
      return Saying(Certified(directory, OfTheAuthority("DNS:vantry.example")),
                    Detail::CertificateOfOtherHost,
                    "The server's certificate is for vantry.example, and not for 127.0.0.1");
    case Obstacle::SelfSignedCertificate:
      return Saying(Certified(directory, {}), Detail::CertificateSelfSigned,
                    "The server's certificate is signed by itself, and is not trusted here");
    case Obstacle::UnknownAuthority:
      MakeCertificate(directory, {"stranger", ""});
      return Saying(Certified(directory, {"", "IP:127.0.0.1", -1, 2, "stranger"}), Detail::AuthorityUnknown,
                    "The server's certificate comes from an authority that is not trusted here");
    case Obstacle::OldTls:
      return Saying(Certified(directory, OfTheAuthority(), {"", TLS1_1_VERSION}), Detail::TlsTooOld,
                    "The server speaks no version of TLS from 1.2 on");
    default:
      break;
  }
  MakeCertificate(directory, {"client"});
  return Saying(Certified(directory, OfTheAuthority(), {directory + "/client.pem", 0}),
                Detail::ClientCertificateWanted,
                "The server demands a client certificate, and none is set for it");
}

ServerWithObstacle MakeFileObstacle(bool isEmpty, const std::string& directory) {
  const std::string broken = "-----BEGIN CERTIFICATE-----\nbroken\n-----END CERTIFICATE-----\n";
  ServerWithObstacle made = Behind("trusted.pem", isEmpty ? "" : broken, directory);
  return Saying(made, isEmpty ? Detail::AuthorityFileEmpty : Detail::AuthorityFileBroken,
                std::string("The file of trusted certificates holds ") +
                    (isEmpty ? "no certificate: " : "a broken certificate: ") + made.authorityFile);
}

ServerWithObstacle MakePortObstacle(Obstacle obstacle) {
  if (obstacle == Obstacle::HttpsAskedByHttp) {
    const auto made = Raw("http", WithLength("400 No", "The plain HTTP request was sent to HTTPS port"));
    return Saying(made, Detail::WantsHttps,
                  "The server speaks https on port " + PortOf(made) + ", and was asked by http");
  }
  if (obstacle == Obstacle::HttpAskedByHttps) {
    const auto made = Raw("https", WithLength("400 No", ""));
    return Saying(made, Detail::WantsHttp,
                  "The server does not speak TLS on port " + PortOf(made) + ", and was asked by https");
  }
  const std::string port = std::to_string(UnusedPort());
  return Saying(At("http://127.0.0.1:" + port), Detail::PortRefused,
                "The machine 127.0.0.1 refuses connections on port " + port);
}

}  // namespace

ServerWithObstacle MakeServerWith(Obstacle obstacle, const std::string& directory) {
  // Longer than a part of a name may be, so that no name server is asked.
  const std::string name(70, 'n');
  switch (obstacle) {
    case Obstacle::EmptyAuthorityFile:
    case Obstacle::BrokenAuthorityFile:
      return MakeFileObstacle(obstacle == Obstacle::EmptyAuthorityFile, directory);
    case Obstacle::HttpsAskedByHttp:
    case Obstacle::HttpAskedByHttps:
    case Obstacle::RefusedPort:
      return MakePortObstacle(obstacle);
    case Obstacle::ProxyThatRefuses:
      return Saying(ThroughProxy(407), Detail::ProxyWantsLogin,
                    "The proxy demands a login, or another one than it was given (HTTP 407)");
    case Obstacle::ProxyThatCannot:
      return Saying(ThroughProxy(502), Detail::GatewayFailed,
                    "The proxy or gateway in front of the server can't reach it (HTTP 502)");
    case Obstacle::UnknownName:
      return Saying(At("http://" + name), Detail::NameUnknown, "The name " + name + " is not known");
    case Obstacle::DeadRoute:
      // The address of all of this machine: nobody can connect to all, and nothing leaves.
      return Saying(At("http://127.255.255.255"), Detail::RouteDead,
                    "No way leads to 127.255.255.255: Network is unreachable");
    default:
      return MakeCertificateObstacle(obstacle, directory);
  }
}

const std::vector<NamedObstacle>& AllObstacles() {
  static const std::vector<NamedObstacle> all{
      {"ExpiredCertificate", Obstacle::ExpiredCertificate},
      {"CertificateOfAnotherHost", Obstacle::CertificateOfAnotherHost},
      {"SelfSignedCertificate", Obstacle::SelfSignedCertificate},
      {"UnknownAuthority", Obstacle::UnknownAuthority},
      {"EmptyAuthorityFile", Obstacle::EmptyAuthorityFile},
      {"BrokenAuthorityFile", Obstacle::BrokenAuthorityFile},
      {"OldTls", Obstacle::OldTls},
      {"HttpsAskedByHttp", Obstacle::HttpsAskedByHttp},
      {"HttpAskedByHttps", Obstacle::HttpAskedByHttps},
      {"CertificateDemanded", Obstacle::CertificateDemanded},
      {"ProxyThatRefuses", Obstacle::ProxyThatRefuses},
      {"ProxyThatCannot", Obstacle::ProxyThatCannot},
      {"UnknownName", Obstacle::UnknownName},
      {"RefusedPort", Obstacle::RefusedPort},
      {"DeadRoute", Obstacle::DeadRoute}};
  return all;
}

}  // namespace vtdirect_test
