#include "tests/wire/public/uploads/upload_front_fixture.h"

// The stores that have a say in the check-in.
namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

const std::string stored = R"({"id":"D1001","revision":"A","iteration":"1"})";
const Lines storeLines{probeLine,
                       DocumentLine("D1001"),
                       DocumentLine("D1002"),
                       Get(noncePath),
                       Post(factoryPath),
                       uploadLine,
                       Post(workspacesPath + "/W77/store")};

class StoringWithAWish : public UploadFrontTest {
 protected:
  StoreOptions Options(CheckInWish wish, FileType kind = FileTypeFenlet) {
    StoreOptions options;
    options.kind = kind;
    options.checkIn = wish;
    options.status = Status();
    return options;
  }
  void ExpectNoCheckIn(const StoreOptions& options) {
    ThenTemporaryCheckout();
    ThenStore();
    transport.Then(200, stored);
    EXPECT_TRUE(Store(temporaryUid.c_str(), mainPath.c_str(), options));
    EXPECT_EQ(transport.lines(), Join(storeLines, {DocumentLine("D1001")}));
    EXPECT_EQ(statuses, Lines{"0 " + temporaryUid});
  }
  void ExpectCheckIn(const StoreOptions& options) {
    ThenTemporaryCheckout();
    ThenStore();
    transport.Then(200, storedDocument).Then(200);
    EXPECT_TRUE(Store(temporaryUid.c_str(), mainPath.c_str(), options));
    EXPECT_EQ(transport.lines(), Join(storeLines, {Post(workspacesPath + "/W77/checkin"),
                                                   Post(workspacesPath + "/W77/delete")}));
    EXPECT_EQ(statuses, Lines{"0 " + storedUid});
  }
};

TEST_F(StoringWithAWish, ForNoCheckInLeavesAFenletDocumentInItsTemporaryWorkspace) {
  ExpectNoCheckIn(Options(CheckInWish::NoCheckIn));
}

TEST_F(StoringWithAWish, ForNoneOfItsOwnChecksAFenletDocumentInAsUploadDoes) {
  ExpectCheckIn(Options(CheckInWish::ByAddress));
}

TEST_F(StoringWithAWish, ForNoneOfItsOwnLeavesAPlainDocumentAsUploadDoes) {
  ExpectNoCheckIn(Options(CheckInWish::ByAddress, FileTypeGeneral));
}

TEST_F(StoringWithAWish, ForACheckInChecksAPlainDocumentIn) {
  ExpectCheckIn(Options(CheckInWish::CheckIn, FileTypeUgc));
}

TEST_F(StoringWithAWish, ByATaskDoesTheSame) {
  ThenTemporaryCheckout();
  ThenStore();
  transport.Then(200, stored);
  EXPECT_TRUE(StoreAsync(temporaryUid.c_str(), mainPath.c_str(), Options(CheckInWish::NoCheckIn)));
  EXPECT_EQ(transport.lines(), Join(storeLines, {DocumentLine("D1001")}));
}

TEST_F(StoringWithAWish, SendsViewableAndMetadataOfAFenletDocument) {
  WriteFile(directory.File("local/view"), "VIEW");
  WriteFile(directory.File("local/vcs"), "VCS");
  const std::string viewable = directory.File("local/view");
  const std::string vcs = directory.File("local/vcs");
  StoreOptions options = Options(CheckInWish::NoCheckIn);
  options.viewablePath = viewable.c_str();
  options.vcsPath = vcs.c_str();
  ThenTemporaryCheckout();
  transport.Then(200, R"({"id":"D1002"})");
  ThenNonce();
  transport.Then(200, Ticket(3)).Then(200, Receipts(3)).Then(200, "[]").Then(200, stored);
  EXPECT_TRUE(Store(temporaryUid.c_str(), mainPath.c_str(), options));
  const std::string body = transport.requests()[5].body.value_or("");
  for (const char* content : {"MAIN", "VIEW", "VCS"}) EXPECT_NE(body.find(content), std::string::npos);
}

TEST_F(StoringWithAWish, WithoutALocalFileFailsWithoutARequest) {
  EXPECT_FALSE(Store(temporaryUid.c_str(), nullptr, Options(CheckInWish::NoCheckIn)));
  EXPECT_EQ(statuses, Lines{"9 (null)"});
  EXPECT_TRUE(transport.lines().empty());
}

}  // namespace
}  // namespace vtdirect_test
