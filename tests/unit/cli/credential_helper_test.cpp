#include "hosts/cli/servers/credential_helper.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>

#include "tests/support/temporary_directory.h"

namespace vtdirect_cli {
namespace {

const HelperFields about = {{"protocol", "https"}, {"host", "plm.example:8443"}, {"username", "anna"}};

// As the program has it: a helper may end before it has read what it is told.
class CredentialHelperTest : public testing::Test {
 protected:
  CredentialHelperTest() { signal(SIGPIPE, SIG_IGN); }

  // Why it gives no answer that can be used.
  static std::string FaultOf(const CredentialHelper& helper) {
    const auto answer = helper.Get(about);
    return answer ? "" : answer.failure().message;
  }
};

}  // namespace

TEST(HelperAnswer, IsLinesOfKeyAndValueUpToAnEmptyOne) {
  EXPECT_EQ(ReadHelperAnswer("username=anna\r\npassword=a=b \n\nrest"),
            (HelperFields{{"username", "anna"}, {"password", "a=b "}}));
  EXPECT_EQ(ReadHelperAnswer(""), HelperFields{});
  EXPECT_EQ(ReadHelperAnswer("username"), std::nullopt);
  EXPECT_EQ(ReadHelperAnswer(std::string("password=a\0b", 12)), std::nullopt);
  EXPECT_EQ(ValueOf({{"password", "1"}, {"password", "2"}}, "password"), "2");
}

TEST_F(CredentialHelperTest, IsToldAndAnswersAsGitsHelpersDo) {
  const vtdirect_test::TemporaryDirectory directory;
  const std::string log = directory.File("log");
  const CredentialHelper helper("f() { { echo \"$1\"; cat; } > " + log + "; echo password=p; }; f", 5);
  const auto answer = helper.Get(about);
  ASSERT_TRUE(answer);
  EXPECT_EQ(*answer, (HelperFields{{"password", "p"}}));
  EXPECT_EQ(vtdirect_test::ReadFile(log), "get\nprotocol=https\nhost=plm.example:8443\nusername=anna\n\n");
  EXPECT_EQ(helper.Store({{"host", "h"}, {"password", "p"}}), "");
  EXPECT_EQ(vtdirect_test::ReadFile(log), "store\nhost=h\npassword=p\n\n");
  EXPECT_EQ(helper.Erase({{"host", "h"}}), "");
  EXPECT_EQ(vtdirect_test::ReadFile(log), "erase\nhost=h\n\n");
}

TEST_F(CredentialHelperTest, ThatReadsNothingAndKnowsNothingIsNoFault) {
  const auto answer = CredentialHelper("exit 3; :", 5).Get(about);
  ASSERT_TRUE(answer);
  EXPECT_EQ(*answer, HelperFields{});
}

TEST_F(CredentialHelperTest, ThatHangsIsEndedWithAllThatItStarted) {
  const auto start = std::chrono::steady_clock::now();
  const vtdirect_test::TemporaryDirectory directory;
  const CredentialHelper helper("sh -c 'sleep 60; touch " + directory.File("late") + "'; :", 1);
  EXPECT_EQ(FaultOf(helper), "the credential helper has not answered \"get\" within 1 s and was ended");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST_F(CredentialHelperTest, ThatPrintsNonsenseIsNotBelievedAndNotRepeated) {
  EXPECT_EQ(FaultOf(CredentialHelper("echo secret; :", 5)),
            "the credential helper has printed what is no answer; it is to print lines of KEY=VALUE");
  EXPECT_EQ(FaultOf(CredentialHelper("yes a=b; :", 5)),
            "the credential helper prints more than an answer can hold and was ended");
}

TEST_F(CredentialHelperTest, IsToldNoValueThatWouldBeTwo) {
  const vtdirect_test::TemporaryDirectory directory;
  const CredentialHelper helper("cat > " + directory.File("log") + "; :", 5);
  EXPECT_EQ(helper.Store({{"username", "a\nhost=other"}}),
            "the credential helper can't be told a name or a password that holds a line feed");
}

}  // namespace vtdirect_cli
