#include "hosts/cli/doctor/seen_way.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {
namespace {

du::http::ObservedExchange Answered(int status) {
  du::http::ObservedExchange exchange;
  exchange.url = "https://plm.example/vt/servlet/OrvetGW";
  exchange.status = status;
  exchange.peer = "192.0.2.7";
  exchange.newConnection = true;
  exchange.times.connect = 12'000;
  exchange.times.wait = 34'900;
  exchange.turns = {
      {"GET /vt/servlet/OrvetGW HTTP/1.1\r\nHost: plm.example", "HTTP/1.1 " + std::to_string(status) + " X"}};
  return exchange;
}

constexpr long now = 1'790'000'000;  // 2026-09-21

}  // namespace

TEST(SeenWay, TellsWhoAnsweredAndHowFast) {
  const auto finding = ConnectionSeen({Answered(200)});
  ASSERT_TRUE(finding);
  EXPECT_EQ(finding->seen, "192.0.2.7, connected within 12 ms, answered within 34 ms");
  du::http::ObservedExchange proxied = Answered(200);
  proxied.turns.insert(proxied.turns.begin(), {"CONNECT plm.example:443 HTTP/1.1", "HTTP/1.1 200 OK"});
  EXPECT_EQ(ConnectionSeen({proxied})->seen,
            "a proxy at 192.0.2.7, connected within 12 ms, answered within 34 ms");
  proxied = Answered(200);
  proxied.turns[0].requestHead = "GET http://plm.example/vt/servlet/OrvetGW HTTP/1.1";
  EXPECT_EQ(ConnectionSeen({proxied})->seen.substr(0, 7), "a proxy");
  EXPECT_FALSE(ConnectionSeen({Answered(0)}));
}

TEST(SeenWay, TellsWhoseCertificateItIsAndWarnsBeforeItsEnd) {
  du::http::ObservedExchange exchange = Answered(200);
  exchange.certificates = {
      {"CN = plm.example", "CN = Company CA", "Sep  1 00:00:00 2026 GMT", "Sep 21 00:00:00 2027 GMT"},
      {"CN = Company CA", "CN = Root", "", ""}};
  const auto good = CertificateSeen({exchange}, now);
  ASSERT_TRUE(good);
  EXPECT_EQ(good->state, ExaminedStep::State::Ok);
  EXPECT_EQ(good->seen, "CN = plm.example, issued by CN = Company CA, valid until 2027-09-21");
  exchange.certificates[0].notAfter = "Oct  1 14:13:20 2026 GMT";
  const auto soon = CertificateSeen({exchange}, now);
  EXPECT_EQ(soon->state, ExaminedStep::State::Warning);
  EXPECT_EQ(soon->advice, "it ends within 10 days; tell whoever runs the server");
  EXPECT_FALSE(CertificateSeen({Answered(200)}, now));
}

TEST(SeenWay, TellsWhichLoginWasTaken) {
  EXPECT_EQ(LoginSeen({Answered(200)}).seen, "the server asked for none");
  EXPECT_FALSE(LoginWasTaken({Answered(200)}));
  du::http::ObservedExchange taken = Answered(200);
  taken.turns = {{"GET / HTTP/1.1\r\nHost: h", "HTTP/1.1 401 No"},
                 {"GET / HTTP/1.1\r\nauthorization: Digest username=\"joe\"", "HTTP/1.1 200 OK"}};
  EXPECT_EQ(LoginSeen({taken}).seen, "the server took the login (Digest)");
  EXPECT_TRUE(LoginWasTaken({taken}));
  du::http::ObservedExchange refused = Answered(401);
  refused.turns = {{"GET / HTTP/1.1\r\nAuthorization: Basic abc", "HTTP/1.1 401 No"}};
  EXPECT_EQ(LoginSeen({refused}).state, ExaminedStep::State::Failed);
  EXPECT_EQ(LoginSeen({refused}).seen, "the server refused the login (Basic)");
  EXPECT_EQ(LoginSeen({Answered(401)}).seen, "the server demands a login, and there was none to give");
  EXPECT_FALSE(LoginWasTaken({refused}));
}

TEST(SeenWay, ReadsTheVersionThatTheServerTells) {
  du::http::ObservedExchange exchange = Answered(200);
  exchange.answerBody =
      "A:b\nServerMajorVersion:12\r\nServerMinorVersion:1\nServerServicepackVersion:2\n"
      "ServerCPSVersion:4\nCodebaseURL:https://plm.example\n";
  EXPECT_EQ(VersionSeen({exchange}), "12.1.2.4");
  exchange.answerBody = "ServerMajorVersion:12;rm\n";
  EXPECT_EQ(VersionSeen({exchange}), "");
  EXPECT_EQ(VersionSeen({Answered(404)}), "");
}

TEST(SeenWay, NamesTheServicesWithTheirVersions) {
  du::http::ObservedExchange admin = Answered(200);
  admin.url = "https://plm.example/vt/servlet/odata/DataAdmin/$metadata";
  admin.answerBody = "<Annotation Term=\"Core.SchemaVersion\">\n<String>5</String></Annotation>";
  du::http::ObservedExchange documents = Answered(200);
  documents.url = "https://plm.example/vt/servlet/odata/DynamicDocMgmt/$metadata";
  documents.answerBody = "<Schema/>";
  du::http::ObservedExchange missing = Answered(404);
  missing.url = "https://plm.example/vt/servlet/odata/CADDocumentMgmt/$metadata";
  EXPECT_EQ(ServicesSeen({documents, admin, missing, admin}), "DataAdmin 5, DynamicDocMgmt");
  EXPECT_EQ(ServicesSeen({Answered(200)}), "");
}

}  // namespace vtdirect_cli
