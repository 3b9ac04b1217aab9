#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <functional>

#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/work_folder/work_folder_fixture.h"

using testing::HasSubstr;

namespace vtdirect_test {

/// What others do in the middle of a command, on the server or in the same directory.
class WorkFolderAndOthers : public WorkFolderTest {
 protected:
  /// Whether others act before the server gets a request.
  using Moment = bool (*)(const WireRequest& request);

  /// Runs a command, and what others do right before the first request of such a kind.
  ProcessResult RunMeanwhile(const std::string& directory, const std::vector<std::string>& words,
                             Moment moment, const std::function<void()>& act) {
    std::atomic<bool> isStarted = false;
    std::atomic<bool> hasCome = false;
    const Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
      // The others start programs too, and those have no proxy.
      EXPECT_TRUE(WaitUntil([&isStarted] { return isStarted.load(); }));
      if (moment(request) && !hasCome.exchange(true)) act();
      peer.Send(forward());
    });
    environment_["http_proxy"] = meddler.Url();
    const auto running = StartIn(directory, words);
    environment_.erase("http_proxy");
    isStarted = true;
    ProcessResult result = running->Wait();
    EXPECT_TRUE(hasCome);
    return result;
  }

  static bool AtOnce(const WireRequest&) { return true; }
  static bool BeforeAWrite(const WireRequest& request) { return request.method != "GET"; }
};

// While one clone lists its folder, another one makes a work folder of the same directory, of another folder.
TEST_F(WorkFolderAndOthers, MakeOneWorkFolderOfADirectory) {
  Serve();
  ProcessResult other;
  const ProcessResult result = RunMeanwhile("", {"clone", bikePath, "both"}, AtOnce, [&] {
    other = Run({"clone", framePath, "both"});
  });
  EXPECT_EQ(other.status, 0) << other.err;
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err, HasSubstr("both is a work folder already"));
  EXPECT_EQ(St("both"), "");
  EXPECT_TRUE(std::filesystem::exists(Here("both/fork.lxz")));
  EXPECT_FALSE(std::filesystem::exists(Here("both/Frame")));
}

TEST_F(WorkFolderAndOthers, AreNotOverwrittenWhenTheyStoreAfterTheListing) {
  Clone();
  WriteFile(Fork(), "mine");
  const ProcessResult result =
      RunMeanwhile("Frame", {"commit"}, BeforeAWrite, [this] { StoreElsewhere("theirs"); });
  EXPECT_EQ(result.status, 1) << result.err;
  EXPECT_EQ(ForkOnServer(), "theirs");
  EXPECT_EQ(ReadFile(Fork()), "mine");
  EXPECT_EQ(HolderOf("D1001"), "");
}

}  // namespace vtdirect_test
