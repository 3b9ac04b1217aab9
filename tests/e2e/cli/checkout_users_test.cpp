#include <gmock/gmock.h>

#include "tests/e2e/cli/checkout_fixture.h"

using testing::HasSubstr;

namespace vtdirect_test {

/// A server that knows two users, each with a home of their own unless a test says otherwise.
class CheckoutByTwo : public CheckoutTest {
 protected:
  void SetUp() override { Serve({"--user", "anna:a", "--user", "bruno:b"}); }

  ProcessResult RunAs(const std::string& user, const std::vector<std::string>& words) {
    environment_["VTDIRECT_USER"] = user;
    environment_["VTDIRECT_PASSWORD"] = user.substr(0, 1);
    if (!oneHome_) environment_["XDG_STATE_HOME"] = Home(user);
    return Run(words);
  }

  std::string CheckOutAs(const std::string& user, const std::string& address) {
    const ProcessResult result = RunAs(user, {"checkout", address});
    EXPECT_EQ(result.status, 0) << result.err;
    return result.out.substr(0, result.out.find('\n'));
  }

  void ExpectRefused(const std::string& user, const std::vector<std::string>& words, const std::string& err) {
    const ProcessResult result = RunAs(user, words);
    EXPECT_EQ(result.status, 1) << testing::PrintToString(words);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "vtdirect: " + err + "\n");
  }

  bool oneHome_ = false;
};

TEST_F(CheckoutByTwo, IsRefusedToOneWhileTheOtherHasIt) {
  const std::string uid = CheckOutAs("anna", kForkPath);
  const std::string path = kForkPath;
  ExpectRefused("bruno", {"checkout", path},
                path +
                    " is checked out by anna; nothing was changed; it can be checked out when that checkout "
                    "has ended");
  for (const std::string& address : {path, uid}) {
    for (const char* command : {"checkin", "undo"}) {
      ExpectRefused(
          "bruno", {command, address},
          address + " is checked out by anna; nothing was changed; only they can end that checkout");
    }
  }
  EXPECT_EQ(RunAs("anna", {"verify", path}).out, uid + "\n");
}

TEST_F(CheckoutByTwo, ShowsTheOtherWhoHoldsIt) {
  CheckOutAs("anna", kForkPath);
  EXPECT_EQ(RunAs("bruno", {"status", kForkPath}).out,
            "up-to-date\tB.1\tB.1\tby-other (anna)\t" + std::string(kForkPath) + "\n");
  const ProcessResult verify = RunAs("bruno", {"verify", kForkPath});
  EXPECT_EQ(verify.status, 1);
  EXPECT_EQ(verify.out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(verify.err, "vtdirect: " + std::string(kForkPath) + " is checked out by anna\n");
}

TEST_F(CheckoutByTwo, GoesFromOneToTheOther) {
  CheckOutAs("anna", kForkPath);
  ASSERT_EQ(RunAs("anna", {"checkin", kForkPath}).status, 0);
  EXPECT_THAT(RunAs("bruno", {"status", kForkPath}).out, HasSubstr("up-to-date\tB.2\tB.2\tnone\t"));
  CheckOutAs("bruno", kForkPath);
  EXPECT_EQ(RunAs("anna", {"checkout", kForkPath}).status, 1);
  ASSERT_EQ(RunAs("bruno", {"undo", kForkPath}).status, 0);
  EXPECT_THAT(RunAs("anna", {"status", kForkPath}).out, HasSubstr("up-to-date\tB.2\tB.2\tnone\t"));
  CheckOutAs("anna", kForkPath);
}

TEST_F(CheckoutByTwo, IsNotTakenForGoneByTheOtherInOneHome) {
  oneHome_ = true;
  const std::string uid = CheckOutAs("anna", kForkPath);
  const std::string before = Book();
  EXPECT_NE(before, "");
  const ProcessResult verify = RunAs("bruno", {"verify", kForkPath});
  EXPECT_EQ(verify.status, 1);
  EXPECT_EQ(verify.out, "");
  EXPECT_THAT(verify.err, HasSubstr("is kept for anna, and you are somebody else at the server"));
  for (const char* command : {"checkin", "undo", "checkout"}) {
    EXPECT_THAT(RunAs("bruno", {command, kForkPath}).err, HasSubstr("is checked out by anna")) << command;
  }
  EXPECT_EQ(Book(), before);
  EXPECT_EQ(RunAs("anna", {"verify", kForkPath}).out, uid + "\n");
}

TEST_F(CheckoutByTwo, IsDroppedWhenTheOtherHasTakenItOver) {
  const std::string uid = CheckOutAs("anna", kForkPath);
  oneHome_ = true;
  environment_["XDG_STATE_HOME"] = Home("elsewhere");
  ASSERT_EQ(RunAs("anna", {"undo", uid}).status, 0);
  oneHome_ = false;
  const std::string brunos = CheckOutAs("bruno", kForkPath);

  const ProcessResult verify = RunAs("anna", {"verify", kForkPath});
  EXPECT_EQ(verify.status, 1);
  EXPECT_EQ(verify.out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(verify.err,
            "vtdirect: " + std::string(kForkPath) +
                " is checked out by bruno; the checkout that was kept does not stand any more, and "
                "is dropped\n");
  EXPECT_EQ(RunAs("anna", {"checkouts"}).out, "");
  EXPECT_EQ(RunAs("bruno", {"verify", kForkPath}).out, brunos + "\n");
}

TEST_F(CheckoutByTwo, IsShownByTheServerToItsHolderAlone) {
  const std::string uid = CheckOutAs("anna", kForkPath);
  EXPECT_THAT(RunAs("anna", {"checkouts", "--on", "sim"}).out, HasSubstr(uid));
  const ProcessResult brunos = RunAs("bruno", {"checkouts", "--on", "sim"});
  EXPECT_EQ(brunos.status, 0) << brunos.err;
  EXPECT_EQ(brunos.out, "");
}

TEST_F(CheckoutByTwo, AsksForCredentialsFirst) {
  for (const char* command : {"checkout", "checkin", "undo", "verify"}) {
    const ProcessResult result = Run({"--no-prompt", command, kForkPath});
    EXPECT_EQ(result.status, 4) << command;
    EXPECT_EQ(result.out, "");
  }
}

}  // namespace vtdirect_test
