#include "public/vt_direct_manager.h"
#include "public/vt_direct_utils.h"
#include "tests/support/temporary_directory.h"
#include "tests/unit/public/fake_server.h"

// A null address gets the failure value of every exported function, and no trace.
namespace {

using namespace VtDirectManager;
using namespace vtdirect_test;

class NullAddress : public FakeServerTest {
 protected:
  void TearDown() override {
    EXPECT_TRUE(trace.lines().empty());
    EXPECT_TRUE(answers.calls.empty());
    EXPECT_TRUE(statuses.empty());
  }
  StatusCallback Status() {
    return [this](StatusCode code, const char*) { statuses.push_back(code); };
  }

  std::vector<int> statuses;
};

TEST_F(NullAddress, IsNoAddress) {
  EXPECT_FALSE(IsVFSPath(nullptr));
  EXPECT_FALSE(IsUID(nullptr));
  EXPECT_FALSE(IsManaged(nullptr));
}

TEST_F(NullAddress, HasNoOtherAddress) {
  EXPECT_EQ(GetUID(nullptr), "");
  EXPECT_EQ(GetVFSPathLatest(nullptr), "");
  EXPECT_EQ(GetVFSPathVersioned(nullptr), "");
  EXPECT_EQ(GetVFSFolderPath(nullptr), "");
  EXPECT_EQ(GetServerURL(nullptr), "");
  EXPECT_EQ(GetServerNickname(nullptr), "");
}

TEST_F(NullAddress, NamesNothing) {
  EXPECT_FALSE(FileExists(nullptr));
  EXPECT_EQ(GetFileName(nullptr), "");
}

TEST_F(NullAddress, CanDoNothing) {
  EXPECT_FALSE(CanPathShowDetails(nullptr));
  EXPECT_FALSE(CanPathShowVersions(nullptr));
  EXPECT_FALSE(IsPathWritable(nullptr));
  EXPECT_FALSE(IsCheckoutSupported(nullptr));
  EXPECT_FALSE(TranslationSupported(nullptr));
  EXPECT_FALSE(SupportsSeparatedSources(nullptr));
  EXPECT_FALSE(SupportsVCSMetadata(nullptr));
}

TEST_F(NullAddress, HasNoPage) {
  std::string url = "kept";
  EXPECT_FALSE(BrowserInfo(nullptr, url));
  EXPECT_EQ(url, "kept");
  EXPECT_EQ(VantryEditAttributesURL(nullptr), "");
}

TEST_F(NullAddress, HasNoDownloadUrl) {
  std::string url = "kept";
  std::string key = "kept";
  EXPECT_FALSE(GetFileDownloadURL(nullptr, url, &key));
  EXPECT_EQ(url + key, "keptkept");
}

TEST_F(NullAddress, StartsNoTask) {
  EXPECT_FALSE(GetFileAsync(nullptr, "/tmp/x", Status(), {}));
}

TEST_F(NullAddress, HasNoLocalCopy) {
  const TemporaryDirectory directory;
  EXPECT_EQ(VtDirectUtils::GetLocalFile(nullptr), nullptr);
}

TEST_F(NullAddress, OfAServerIsNotSupportedAndTouchesNoOutput) {
  StatusCode code = StatusFileTooLarge;
  std::string message = "kept";
  EXPECT_FALSE(ServerSupported(nullptr, &code, &message));
  EXPECT_EQ(code, StatusFileTooLarge);
  EXPECT_EQ(message, "kept");
  EXPECT_FALSE(ServerSupported(nullptr, nullptr, nullptr));
}

// A download reports the end of the operation in every case, and nothing else here.
TEST(NullDownload, FailsWithoutATraceAndReportsTheEnd) {
  const TraceRecorder trace;
  std::vector<int> statuses;
  std::string uid = "kept";
  EXPECT_FALSE(
      GetFile(nullptr, "/tmp/x", uid, [&](StatusCode code, const char*) { statuses.push_back(code); }, {}));
  EXPECT_EQ(uid, "kept");
  EXPECT_EQ(statuses, std::vector<int>{StatusDownloadFailed});
  EXPECT_TRUE(trace.lines().empty());
}

}  // namespace
