#include "simulator/wire/authentication.h"

#include "simulator/wire/authenticator.h"
#include "simulator/wire/digest.h"

#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

TEST(Base64, IsDecodedWithAndWithoutPadding) {
  EXPECT_EQ(DecodeBase64("YW5uYTpwdw=="), "anna:pw");
  EXPECT_EQ(DecodeBase64("YW5uYTpwdw"), "anna:pw");
  EXPECT_EQ(DecodeBase64(""), "");
  EXPECT_EQ(DecodeBase64("YW5u*"), std::nullopt);
}

TEST(Base64, IsEncodedWithPadding) {
  EXPECT_EQ(EncodeBase64(""), "");
  EXPECT_EQ(EncodeBase64("a"), "YQ==");
  EXPECT_EQ(EncodeBase64("an"), "YW4=");
  EXPECT_EQ(EncodeBase64("ann"), "YW5u");
  EXPECT_EQ(EncodeBase64("\xFF\xEF\x00"), "/+8=");
  EXPECT_EQ(EncodeBase64(std::string_view("\xFF\xEF\x00", 3)), "/+8A");
}

/// Who comes in with an Authorization header.
std::string Who(const UserDirectory& users, std::string_view authorization, bool digest = false) {
  return Authenticator(users, digest).UserOf({"GET", "/", authorization});
}

TEST(Authentication, LetsInKnownUsersWithTheirPasswordAlone) {
  const UserDirectory users({{"anna", "pw"}, {"bruno", "p:w"}}, {});
  EXPECT_EQ(Who(users, "Basic YW5uYTpwdw=="), "anna");   // anna:pw
  EXPECT_EQ(Who(users, "basic YW5uYTpwdw=="), "anna");   // the scheme's case doesn't count
  EXPECT_EQ(Who(users, "Basic YnJ1bm86cDp3"), "bruno");  // bruno:p:w, a password with a colon
  EXPECT_EQ(Who(users, "Basic YW5uYTpubw=="), "");       // anna:no
  EXPECT_EQ(Who(users, "Bearer YW5uYTpwdw=="), "");
  EXPECT_EQ(Who(users, "Basic"), "");
  EXPECT_EQ(Who(users, ""), "");
}

TEST(Authentication, OpenServerBelievesAnyNameAndKnowsAnnaOtherwise) {
  const UserDirectory open({}, {});
  EXPECT_EQ(Who(open, ""), "anna");
  EXPECT_EQ(Who(open, "Basic YnJ1bm86cDp3"), "bruno");
  EXPECT_EQ(Who(open, "Basic ***"), "anna");
}

TEST(Authentication, TokenLetsItsUserIn) {
  const UserDirectory users({{"anna", "pw"}}, {{"robot", "t0ken"}});
  EXPECT_EQ(Who(users, "Bearer t0ken"), "robot");
  EXPECT_EQ(Who(users, "Bearer other"), "");
  EXPECT_EQ(Who(users, "Basic YW5uYTpwdw=="), "anna");
  const auto headers = Authenticator(users, false).Challenge("").headers;
  ASSERT_EQ(headers.size(), 2U);
  EXPECT_EQ(headers[1].second, "Bearer realm=\"vantry-sim\"");
  const UserDirectory tokens({}, {{"robot", "t0ken"}});
  EXPECT_EQ(Who(tokens, ""), "");
  EXPECT_EQ(Authenticator(tokens, false).Challenge("").headers.size(), 1U);
}

TEST(Authentication, UsersComeAndGo) {
  UserDirectory users({{"anna", "pw"}}, {});
  users.SetPassword("bruno", "p:w");
  users.AddToken("bruno", "t0ken");
  EXPECT_EQ(Who(users, "Basic YnJ1bm86cDp3"), "bruno");
  EXPECT_EQ(Who(users, "Bearer t0ken"), "bruno");
  EXPECT_EQ(users.List().size(), 2U);
  EXPECT_TRUE(users.Remove("bruno"));
  EXPECT_FALSE(users.Remove("bruno"));
  EXPECT_EQ(Who(users, "Basic YnJ1bm86cDp3"), "");
  EXPECT_EQ(Who(users, "Bearer t0ken"), "");
  EXPECT_TRUE(users.Remove("anna"));
  // A server that nobody may enter any longer doesn't let everybody in.
  EXPECT_FALSE(users.open());
  EXPECT_EQ(Who(users, ""), "");
  users.Reset();
  EXPECT_EQ(Who(users, "Basic YW5uYTpwdw=="), "anna");
}

// The example of RFC 7616, 3.9.1.
TEST(Digest, AnswerIsTheOneOfTheStandard) {
  const auto fields = ReadDigestFields(
      "username=\"Mufasa\", realm=\"http-auth@example.org\", uri=\"/dir/index.html\", algorithm=MD5, "
      "nonce=\"7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v\", nc=00000001, "
      "cnonce=\"f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ\", qop=auth, response=\"x\", "
      "opaque=\"FQhe/qaU925kfnzjCev0ciny7QMkPqMAFRtzCUYo5tdS\"");
  ASSERT_TRUE(fields);
  EXPECT_EQ(DigestResponse(DigestAlgorithm::Md5, *fields, "Circle of Life", "GET"),
            "8ca523f5e9506fed4657c9700eebdbec");
  EXPECT_EQ(DigestResponse(DigestAlgorithm::Sha256, *fields, "Circle of Life", "GET"),
            "753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1");
}

TEST(Digest, FieldsAreReadWhateverTheirForm) {
  const auto fields = ReadDigestFields(" a=1 ,B=\"x, \\\"y\\\"\",,c=");
  ASSERT_TRUE(fields);
  EXPECT_EQ(fields->at("a"), "1");
  EXPECT_EQ(fields->at("b"), "x, \"y\"");
  EXPECT_EQ(fields->at("c"), "");
  for (const char* broken : {"a", "=1", "a=\"x", "a=1,b", ",,="})
    EXPECT_FALSE(ReadDigestFields(broken)) << broken;
}

/// The answer of a client that knows the password to a challenge.
std::string Respond(const std::string& challenge, const std::string& uri, const std::string& password) {
  auto fields = ReadDigestFields(std::string_view(challenge).substr(7));
  (*fields)["username"] = "anna";
  (*fields)["uri"] = uri;
  (*fields)["nc"] = "00000001";
  (*fields)["cnonce"] = "c";
  const auto algorithm = (*fields)["algorithm"] == "MD5" ? DigestAlgorithm::Md5 : DigestAlgorithm::Sha256;
  (*fields)["response"] = DigestResponse(algorithm, *fields, password, "GET");
  std::string header = "Digest ";
  for (const auto& [name, value] : *fields) header.append(name).append("=\"").append(value).append("\", ");
  return header;
}

TEST(Authentication, DigestLetsInWhoKnowsThePasswordAndBasicNobody) {
  const UserDirectory users({{"anna", "pw"}}, {});
  const Authenticator authenticator(users, true);
  const auto headers = authenticator.Challenge("").headers;
  ASSERT_EQ(headers.size(), 2U);
  for (const auto& [name, challenge] : headers) {
    EXPECT_EQ(authenticator.UserOf({"GET", "/a?b=c", Respond(challenge, "/a?b=c", "pw")}), "anna")
        << challenge;
    EXPECT_EQ(authenticator.UserOf({"GET", "/a?b=c", Respond(challenge, "/a?b=c", "no")}), "");
    EXPECT_EQ(authenticator.UserOf({"GET", "/other", Respond(challenge, "/a?b=c", "pw")}), "");
    EXPECT_EQ(authenticator.UserOf({"POST", "/a?b=c", Respond(challenge, "/a?b=c", "pw")}), "");
    // Another server's nonce.
    EXPECT_EQ(Authenticator(users, true).UserOf({"GET", "/a", Respond(challenge, "/a", "pw")}), "");
  }
  EXPECT_EQ(authenticator.UserOf({"GET", "/", "Basic YW5uYTpwdw=="}), "");
}

TEST_F(SimulatorTest, RefusesWhomItDoesNotKnowWithAChallenge) {
  const Response response = Get("/servlet/OrvetGW", "");
  EXPECT_EQ(response.status, 401);
  ASSERT_EQ(response.headers.size(), 1U);
  EXPECT_EQ(response.headers[0].first, "WWW-Authenticate");
  EXPECT_EQ(response.headers[0].second, "Basic realm=\"vantry-sim\", charset=\"UTF-8\"");
}

}  // namespace
}  // namespace vantry_sim
