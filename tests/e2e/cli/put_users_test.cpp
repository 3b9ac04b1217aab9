#include <gmock/gmock.h>

#include "tests/e2e/cli/put_fixture.h"

using testing::HasSubstr;

namespace vtdirect_test {
namespace {

const std::string frameFolder = "//sim/Products/Trekking Bike/Folders/Frame/";
const std::string drivetrainFolder = "//sim/Products/Trekking Bike/Folders/Drivetrain/";

}  // namespace

/// A server that knows two users, and takes contents on a port that the user has named as one with the same login.
class PutByTwo : public PutTest {
 protected:
  void SetUp() override {
    const std::string port = std::to_string(UnusedPort());
    Serve({"--user", "anna:a", "--user", "bruno:b", "--upload-port", port});
    uploads_ = "http://127.0.0.1:" + port + "/";
    WriteFile(Here("f"), "content");
  }

  ProcessResult RunAs(const std::string& user, std::vector<std::string> words) {
    environment_["VTDIRECT_USER"] = user;
    environment_["VTDIRECT_PASSWORD"] = user.substr(0, 1);
    environment_["XDG_STATE_HOME"] = Home(user);
    WriteHome(".config/vtdirect/config",
              "[server sim]\nurl = " + server().url() +
                  "\nlogin_also_for = uploads\n[server uploads]\nurl = " + uploads_ + "\n",
              0600);
    return Run(words);
  }

  std::string uploads_;
};

TEST_F(PutByTwo, ShowsToOneWhatTheOtherStores) {
  ASSERT_EQ(RunAs("bruno", {"put", "f", frameFolder}).status, 0);
  EXPECT_EQ(RunAs("anna", {"get", frameFolder + "f", "-o", "-"}).out, "content");
  WriteFile(Here("f"), "anna's content");
  ASSERT_EQ(RunAs("anna", {"put", "f", frameFolder}).status, 0);
  EXPECT_EQ(RunAs("bruno", {"get", frameFolder + "f", "-o", "-"}).out, "anna's content");
  EXPECT_EQ(RunAs("bruno", {"get", frameFolder + "f|A.1", "-o", "-"}).out, "content");
}

TEST_F(PutByTwo, KeepsOneOutOfWhatTheOtherHasCheckedOut) {
  const ProcessResult brunos = RunAs("bruno", {"put", "f", drivetrainFolder + "crank.lxz"});
  EXPECT_EQ(brunos.status, 1);
  EXPECT_THAT(brunos.err, HasSubstr("is checked out by anna; nothing was sent"));
  EXPECT_EQ(RunAs("bruno", {"put", "f", "//sim/?id=D1026"}).status, 6);
  const ProcessResult annas = RunAs(
      "anna", {"put", "f", "//sim/Products/Trekking Bike/Workspaces/Anna's bench/crank.lxz", "--checkin"});
  EXPECT_EQ(annas.status, 0) << annas.err;
  WriteFile(Here("f"), "bruno's content");
  EXPECT_EQ(RunAs("bruno", {"put", "f", drivetrainFolder + "crank.lxz"}).status, 0);
  EXPECT_EQ(RunAs("anna", {"get", drivetrainFolder + "crank.lxz|A.2", "-o", "-"}).out, "content");
  EXPECT_EQ(RunAs("anna", {"get", drivetrainFolder + "crank.lxz", "-o", "-"}).out, "bruno's content");
}

TEST_F(PutByTwo, GivesNoCredentialsToAnUploadServerThatNobodyHasNamed) {
  environment_["VTDIRECT_USER"] = "anna";
  environment_["VTDIRECT_PASSWORD"] = "a";
  const ProcessResult result = Run({"put", "f", frameFolder});
  EXPECT_EQ(result.status, 4);
  EXPECT_THAT(result.err, HasSubstr(uploads_.substr(0, uploads_.size() - 1) + " demands credentials"));
  EXPECT_THAT(result.err, HasSubstr("; nothing was created; "));
}

TEST_F(PutByTwo, TellsThatAPasswordIsWrong) {
  environment_["VTDIRECT_USER"] = "anna";
  environment_["VTDIRECT_PASSWORD"] = "wrong";
  const ProcessResult result = Run({"put", "f", frameFolder});
  EXPECT_EQ(result.status, 4);
  EXPECT_THAT(result.err, HasSubstr("refused the credentials"));
}

}  // namespace vtdirect_test
