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
  const std::string uid = CheckOutAs("anna", forkPath);
  const std::string path = forkPath;
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
  CheckOutAs("anna", forkPath);
  EXPECT_EQ(RunAs("bruno", {"status", forkPath}).out,
            "up-to-date\tB.1\tB.1\tby-other (anna)\t" + std::string(forkPath) + "\n");
  const ProcessResult verify = RunAs("bruno", {"verify", forkPath});
  EXPECT_EQ(verify.status, 1);
  EXPECT_EQ(verify.out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(verify.err, "vtdirect: " + std::string(forkPath) + " is checked out by anna\n");
}

TEST_F(CheckoutByTwo, GoesFromOneToTheOther) {
  CheckOutAs("anna", forkPath);
  ASSERT_EQ(RunAs("anna", {"checkin", forkPath}).status, 0);
  EXPECT_THAT(RunAs("bruno", {"status", forkPath}).out, HasSubstr("up-to-date\tB.2\tB.2\tnone\t"));
  CheckOutAs("bruno", forkPath);
  EXPECT_EQ(RunAs("anna", {"checkout", forkPath}).status, 1);
  ASSERT_EQ(RunAs("bruno", {"undo", forkPath}).status, 0);
  EXPECT_THAT(RunAs("anna", {"status", forkPath}).out, HasSubstr("up-to-date\tB.2\tB.2\tnone\t"));
  CheckOutAs("anna", forkPath);
}

TEST_F(CheckoutByTwo, IsNotTakenForGoneByTheOtherInOneHome) {
  oneHome_ = true;
  const std::string uid = CheckOutAs("anna", forkPath);
  const std::string before = Book();
  EXPECT_NE(before, "");
  const ProcessResult verify = RunAs("bruno", {"verify", forkPath});
  EXPECT_EQ(verify.status, 1);
  EXPECT_EQ(verify.out, "");
  EXPECT_THAT(verify.err, HasSubstr("is kept for anna, and you are somebody else at the server"));
  for (const char* command : {"checkin", "undo", "checkout"}) {
    EXPECT_THAT(RunAs("bruno", {command, forkPath}).err, HasSubstr("is checked out by anna")) << command;
  }
  EXPECT_EQ(Book(), before);
  EXPECT_EQ(RunAs("anna", {"verify", forkPath}).out, uid + "\n");
}

TEST_F(CheckoutByTwo, IsDroppedWhenTheOtherHasTakenItOver) {
  const std::string uid = CheckOutAs("anna", forkPath);
  oneHome_ = true;
  environment_["XDG_STATE_HOME"] = Home("elsewhere");
  ASSERT_EQ(RunAs("anna", {"undo", uid}).status, 0);
  oneHome_ = false;
  const std::string brunos = CheckOutAs("bruno", forkPath);

  const ProcessResult verify = RunAs("anna", {"verify", forkPath});
  EXPECT_EQ(verify.status, 1);
  EXPECT_EQ(verify.out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(verify.err, "vtdirect: " + std::string(forkPath) +
                            " is checked out by bruno; the checkout that was kept has ended, and "
                            "is dropped\n");
  EXPECT_EQ(RunAs("anna", {"checkouts"}).out, "");
  EXPECT_EQ(RunAs("bruno", {"verify", forkPath}).out, brunos + "\n");
}

TEST_F(CheckoutByTwo, IsShownByTheServerToItsHolderAlone) {
  const std::string uid = CheckOutAs("anna", forkPath);
  EXPECT_THAT(RunAs("anna", {"checkouts", "--on", "sim"}).out, HasSubstr(uid));
  const ProcessResult brunos = RunAs("bruno", {"checkouts", "--on", "sim"});
  EXPECT_EQ(brunos.status, 0) << brunos.err;
  EXPECT_EQ(brunos.out, "");
}

TEST_F(CheckoutByTwo, AsksForCredentialsFirst) {
  for (const char* command : {"checkout", "checkin", "undo", "verify"}) {
    const ProcessResult result = Run({"--no-prompt", command, forkPath});
    EXPECT_EQ(result.status, 4) << command;
    EXPECT_EQ(result.out, "");
  }
}

}  // namespace vtdirect_test
