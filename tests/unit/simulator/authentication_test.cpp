#include "simulator/wire/authentication.h"

#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

const std::vector<UserCredentials> kUsers{{"anna", "pw"}, {"bruno", "p:w"}};

TEST(Base64, IsDecodedWithAndWithoutPadding) {
  EXPECT_EQ(DecodeBase64("YW5uYTpwdw=="), "anna:pw");
  EXPECT_EQ(DecodeBase64("YW5uYTpwdw"), "anna:pw");
  EXPECT_EQ(DecodeBase64(""), "");
  EXPECT_EQ(DecodeBase64("YW5u*"), std::nullopt);
}

TEST(Authentication, LetsInKnownUsersWithTheirPasswordAlone) {
  EXPECT_EQ(Authenticate("Basic YW5uYTpwdw==", kUsers), "anna");        // anna:pw
  EXPECT_EQ(Authenticate("basic YW5uYTpwdw==", kUsers), "anna");        // the scheme's case doesn't count
  EXPECT_EQ(Authenticate("Basic YnJ1bm86cDp3", kUsers), "bruno");       // bruno:p:w, a password with a colon
  EXPECT_EQ(Authenticate("Basic YW5uYTpubw==", kUsers), std::nullopt);  // anna:no
  EXPECT_EQ(Authenticate("Bearer YW5uYTpwdw==", kUsers), std::nullopt);
  EXPECT_EQ(Authenticate("Basic", kUsers), std::nullopt);
  EXPECT_EQ(Authenticate("", kUsers), std::nullopt);
}

TEST(Authentication, OpenServerBelievesAnyNameAndKnowsAnnaOtherwise) {
  EXPECT_EQ(Authenticate("", {}), "anna");
  EXPECT_EQ(Authenticate("Basic YnJ1bm86cDp3", {}), "bruno");
  EXPECT_EQ(Authenticate("Basic ***", {}), "anna");
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
