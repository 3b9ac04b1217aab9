#include "public/upload_job.h"
#include "public/vt_direct_manager.h"
#include "tests/unit/public/fake_server.h"

// A server that can be written to and offers no checkout.
namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

constexpr const char* uidOfD1 = "korvufenloom-vt://plm.example/vt/?id=D1";
constexpr const char* uidOfCopy = "korvufenloom-vt://plm.example/vt/?id=D1|W77|D2|T";

class ServerWithoutCheckout : public FakeServerTest {
 protected:
  ServerWithoutCheckout() { answers.yes = false; }
};

TEST_F(ServerWithoutCheckout, ChecksNothingOutOrInAndSaysNothing) {
  EXPECT_EQ(Checkout(uidOfD1), "");
  EXPECT_EQ(Checkin(uidOfCopy), "");
  EXPECT_EQ(UndoCheckout(uidOfCopy), "");
  EXPECT_EQ(answers.calls, Lines(3, "GetCheckoutServer"));
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(ServerWithoutCheckout, HasNoStatusAndSaysNothing) {
  std::string user = "before";
  std::string uid = "before";
  EXPECT_EQ(GetCheckoutStatus(uidOfD1, &user), CheckoutUnsupported);
  EXPECT_EQ(VerifyCheckout(uidOfCopy, uid), CheckoutUnsupported);
  EXPECT_FALSE(IsCheckoutSupported(uidOfD1));
  EXPECT_EQ(user, "before");
  EXPECT_EQ(uid, "");
  EXPECT_EQ(answers.calls, Lines(3, "GetCheckoutServer"));
  EXPECT_TRUE(trace.lines().empty());
}

// Without a state, nothing says that the object has a working copy.
TEST_F(ServerWithoutCheckout, IteratesWhatLooksLikeACheckout) {
  int code = -1;
  EXPECT_FALSE(Upload(
      FileTypeGeneral, uidOfCopy, "/x", [&](StatusCode status, const char*) { code = status; }, {}, nullptr,
      true));
  EXPECT_EQ(answers.calls, (Lines{"TestConnection", "GetCheckoutServer", "UploadIteration"}));
  EXPECT_EQ(code, StatusUpdateFailed);
}

// A working copy that was there when the upload was prepared, on a server that offers no checkout any more.
TEST_F(ServerWithoutCheckout, StoresIntoNoCheckout) {
  lxservices::cms_interface::UploadJob job;
  job.server = TableNow().servers[plmKey];
  job.id = "D1|W77|D2|T";
  job.checkedOut = true;
  Lines told;
  const auto status = [&](StatusCode code, const char* uid) {
    told.push_back(std::to_string(code) + (uid == nullptr ? "" : uid));
  };
  EXPECT_FALSE(RunUploadJob(job, status, {}));
  EXPECT_EQ(answers.calls, Lines{"GetCheckoutServer"});
  EXPECT_EQ(told, Lines{"9"});
}

TEST_F(ServerWithoutCheckout, CreatesWhatHasNoIdWhateverElseIsSaid) {
  lxservices::cms_interface::UploadJob job;
  job.server = TableNow().servers[plmKey];
  job.checkedOut = true;
  EXPECT_FALSE(RunUploadJob(job, {}, {}));
  EXPECT_EQ(answers.calls, Lines{"UploadNew"});
}

}  // namespace
}  // namespace vtdirect_test
