#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <ostream>
#include <tuple>

#include "platform/http_settings.h"
#include "public/vt_direct_manager.h"
#include "tests/e2e/cli/simulator.h"
#include "tests/support/temporary_directory.h"

// A server whose connections die, at one request of a flow after the other, with the library's own transport.
namespace vtdirect_test {
namespace {

using namespace VtDirectManager;
using testing::IsEmpty;

const std::string documents = "/servlet/rest/v1/dkm/documents";
const std::string workspaces = "/servlet/rest/v1/dkm/workspaces";

/// A server with the demo, at home, and the process's place for temporary files, which is to be empty after
/// each operation.
class BrokenTransfer : public testing::Test {
 protected:
  BrokenTransfer() {
    du::http::TransportSettings settings;
    settings.stallTimeoutSeconds = 1;
    settings.firstByteTimeoutSeconds = 1;
    settings.firstByteAfterBodyTimeoutSeconds = 1;
    du::http::SetTransportSettings(settings);
    WriteFile(mainPath_, std::string(300'000, 'm'));
  }

  void Start(const std::vector<std::string>& faults) {
    std::vector<std::string> options{"--large", "4096"};
    for (const std::string& fault : faults) options.insert(options.end(), {"--fault", fault});
    simulator_ = std::make_unique<Simulator>(home_.path(), options);
    UpdateServerList({{"plm", simulator_->url()}});
  }
  [[nodiscard]] std::string Uid(const std::string& id) const { return simulator_->Uid(id); }

  // Gives the last status: its code, or -1 for none.
  int UploadTo(const std::string& address, ProgressCallback progress = {}) {
    int code = -1;
    (void)Upload(
        address.c_str(), mainPath_.c_str(), "", {}, [&](StatusCode status, const char*) { code = status; },
        std::move(progress), nullptr, false);
    ExpectNothingBehind();
    return code;
  }
  std::string CheckOut(const std::string& id) {
    const std::string uid = Checkout(Uid(id).c_str());
    ExpectNothingBehind();
    return uid;
  }
  [[nodiscard]] bool HasTemporaryWorkspace() const {
    const std::string list = simulator_->Get(workspaces + "?contextId=OR%3Avn.product.Product%3A101");
    return list.find("FenloomTMP") != std::string::npos;
  }
  void ExpectNothingBehind() const { EXPECT_THAT(temporary_.Entries(), IsEmpty()); }

 private:
  TemporaryDirectory home_;
  TemporaryDirectory temporary_;  // the later one counts
  std::string mainPath_ = home_.File("main.fnl");
  std::unique_ptr<Simulator> simulator_;
};

/// How a connection dies, and at which request of an iteration.
struct Death {
  const char* name;
  const char* action;
};
struct DeathRow {
  const char* name;
  const char* requests;
};
void PrintTo(const Death& death, std::ostream* out) {
  *out << death.action;
}
void PrintTo(const DeathRow& row, std::ostream* out) {
  *out << row.requests;
}
constexpr Death deaths[] = {{"ClosedWithoutAByte", "drop"},
                            {"CutInItsBody", "cut:3"},
                            {"CutInItsChunks", "chunked-cut:3"},
                            {"Silent", "stall"}};
constexpr DeathRow requests[] = {{"TheRead", "GET */dkm/documents/D1003"},
                                 {"TheNonce", "GET */security/csrf"},
                                 {"TheTicket", "POST */creationFactory"},
                                 {"TheUpload", "POST *upload*"},
                                 {"ThePosting", "POST */dkm/documents"}};

class BrokenIteration : public BrokenTransfer,
                        public testing::WithParamInterface<std::tuple<DeathRow, Death>> {};

INSTANTIATE_TEST_SUITE_P(At, BrokenIteration,
                         testing::Combine(testing::ValuesIn(requests), testing::ValuesIn(deaths)),
                         [](const auto& row) {
                           return std::string(std::get<0>(row.param).name) + std::get<1>(row.param).name;
                         });

// Without its nonce the transfer goes on, and the server refuses it.
TEST_P(BrokenIteration, FailsAndLeavesNothing) {
  const auto& [request, death] = GetParam();
  Start({std::string(request.requests) + "=" + death.action});
  EXPECT_EQ(UploadTo(Uid("D1003")), StatusUpdateFailed);
}

TEST_F(BrokenTransfer, SucceedsOnceTheServerLives) {
  // A dropped request that was sent on a connection from before may have been sent a second time.
  Start({"POST */creationFactory=drop*2", "POST *upload*=cut:3*1", "POST */dkm/documents=503*1"});
  int failures = 0;
  while (failures < 5 && UploadTo(Uid("D1003")) != StatusOk) ++failures;
  EXPECT_GE(failures, 3);
  EXPECT_LE(failures, 4);
}

TEST_F(BrokenTransfer, OfANewDocumentLeavesNothing) {
  setenv("FENLOOM_LANGUAGE", "en", 1);
  const std::string path = "//plm/Products/Trekking Bike/Folders/Frame/new.fnl";
  Start({"POST */dkm/documents=drop*2"});
  int failures = 0;
  for (int code = UploadTo(path); failures < 3 && code != StatusOk; code = UploadTo(path)) {
    EXPECT_EQ(code, StatusCreateFailed);
    EXPECT_FALSE(FileExists(path.c_str()));
    ++failures;
  }
  EXPECT_GE(failures, 1);
  EXPECT_TRUE(FileExists(path.c_str()));
}

TEST_F(BrokenTransfer, OfAStoreLeavesTheCheckout) {
  Start({"POST *store=drop"});
  const std::string copy = CheckOut("D1003");
  ASSERT_NE(copy, "");
  EXPECT_EQ(UploadTo(copy), StatusCheckedOutUpdateFailed);
  EXPECT_EQ(GetCheckoutStatus(copy.c_str(), nullptr), CheckoutInTempWorkspace);
  EXPECT_TRUE(HasTemporaryWorkspace());
}

TEST_F(BrokenTransfer, OfACheckinLeavesTheCheckout) {
  Start({"POST *checkin=drop"});
  const std::string copy = CheckOut("D1003");
  EXPECT_EQ(Checkin(copy.c_str()), "");
  ExpectNothingBehind();
  EXPECT_EQ(GetCheckoutStatus(copy.c_str(), nullptr), CheckoutInTempWorkspace);
}

TEST_F(BrokenTransfer, OfACheckoutLeavesNoWorkspace) {
  Start({"POST */checkout=drop"});
  EXPECT_EQ(CheckOut("D1003"), "");
  EXPECT_FALSE(HasTemporaryWorkspace());
}

// The deletion of the workspace is what frees the document.
TEST_F(BrokenTransfer, OfAnUndoFreesTheDocument) {
  Start({"POST *undocheckout=drop"});
  const std::string copy = CheckOut("D1003");
  EXPECT_EQ(UndoCheckout(copy.c_str()), Uid("D1003") + "&file=/gear.lxz");
  ExpectNothingBehind();
  EXPECT_EQ(GetCheckoutStatus(Uid("D1003").c_str(), nullptr), CheckoutNone);
  EXPECT_FALSE(HasTemporaryWorkspace());
}

TEST_F(BrokenTransfer, OfADeletionDoesNotUndoTheCheckin) {
  Start({"POST *delete=drop"});
  const std::string copy = CheckOut("D1003");
  const std::string uid = Checkin(copy.c_str());
  ExpectNothingBehind();
  EXPECT_NE(uid, "");
  EXPECT_EQ(GetCheckoutStatus(uid.c_str(), nullptr), CheckoutNone);
  EXPECT_TRUE(HasTemporaryWorkspace());
}

TEST_F(BrokenTransfer, ThatTheHostCancelsLeavesNothing) {
  Start({});
  EXPECT_EQ(UploadTo(Uid("D1003"), [](std::size_t, std::size_t) { return false; }), StatusUpdateFailed);
  EXPECT_EQ(UploadTo(Uid("D1003")), StatusOk);
}

TEST_F(BrokenTransfer, ToAServerThatIsGoneLeavesNothing) {
  Start({"* *=drop"});
  EXPECT_EQ(UploadTo(Uid("D1003")), StatusConnectFailed);
  EXPECT_EQ(CheckOut("D1003"), "");
}

}  // namespace
}  // namespace vtdirect_test
