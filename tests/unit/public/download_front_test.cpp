#include <functional>
#include <utility>

#include "public/vt_direct_manager.h"
#include "tests/unit/public/fake_server.h"

namespace {

using namespace VtDirectManager;
using namespace vtdirect_test;

constexpr const char* uidOfD1 = "korvufenloom-vt://plm.example/vt/?id=D1";
constexpr const char* resultUid = "korvufenloom-vt://plm.example/vt/?id=D1&file=/fork.lxz";

std::vector<std::function<void()>> queue;

bool Enqueue(std::function<void()> task) {
  queue.push_back(std::move(task));
  return true;
}

bool Refuse(std::function<void()>) {
  return false;
}

class DownloadFront : public FakeServerTest {
 protected:
  DownloadFront() {
    answers.idsByPath["a"] = "D1";
    answers.downloaded.id = "D1";
    answers.downloaded.cadName = "fork.lxz";
  }
  StatusCallback Status() {
    return [this](StatusCode code, const char* text) {
      statuses.push_back(std::to_string(code) + " " + (text != nullptr ? text : "(null)"));
    };
  }

  std::string uid = "before";
  Lines statuses;
};

using FileDownload = DownloadFront;
using FileDownloadTask = DownloadFront;
using DownloadUrl = DownloadFront;

TEST_F(FileDownload, OfAPathReportsTheUid) {
  EXPECT_TRUE(GetFile("//plm/a", "/tmp/copy", uid, Status(), {}));
  EXPECT_EQ(uid, resultUid);
  EXPECT_EQ(statuses, Lines{std::string("0 ") + resultUid});
  EXPECT_EQ(answers.calls, (Lines{"ResolvePath(a)", "GetFile(D1 /tmp/copy)"}));
  EXPECT_EQ(trace.lines(), (Traces{{0, "VtDirect", "Downloading //plm/a\n"},
                                   {0, "VtDirect", "Downloading //plm/a succeeded\n"}}));
}

TEST_F(FileDownload, OfAUidAndOfAPathByIdWalkNoPath) {
  EXPECT_TRUE(GetFile(uidOfD1, "/tmp/copy", uid, {}, {}));
  EXPECT_TRUE(GetFile("//plm/?id=D1&x=1", "/tmp/copy", uid, {}, {}));
  EXPECT_EQ(answers.calls, (Lines{"GetFile(D1 /tmp/copy)", "GetFile(D1 /tmp/copy)"}));
}

TEST_F(FileDownload, TracesTheBeginBeforeAnythingElse) {
  EXPECT_FALSE(GetFile("//nobody/a", "/tmp/copy", uid, Status(), {}));
  EXPECT_EQ(trace.lines(), (Traces{{0, "VtDirect", "Downloading //nobody/a\n"},
                                   {3, "VtDirect", "Failed to connect to server path //nobody/a\n"},
                                   {3, "VtDirect", "Failed to download //nobody/a\n"}}));
}

TEST_F(FileDownload, WithoutAServerReportsTheReasonAndThenTheEnd) {
  EXPECT_FALSE(GetFile("//nobody/a", "/tmp/copy", uid, Status(), {}));
  EXPECT_EQ(statuses, (Lines{"1 (null)", "10 (null)"}));
  EXPECT_EQ(uid, "before");
}

TEST_F(FileDownload, WithoutAnObjectReportsTheEndAlone) {
  EXPECT_FALSE(GetFile("//plm/missing", "/tmp/copy", uid, Status(), {}));
  EXPECT_EQ(statuses, Lines{"10 (null)"});
  EXPECT_EQ(answers.calls, Lines{"ResolvePath(missing)"});
  EXPECT_EQ(trace.lines(), (Traces{{0, "VtDirect", "Downloading //plm/missing\n"},
                                   {3, "VtDirect", "Failed to download //plm/missing\n"}}));
}

TEST_F(FileDownload, ThatFailsReportsTheEndAlone) {
  answers.downloads = false;
  EXPECT_FALSE(GetFile("//plm/a", "/tmp/copy", uid, Status(), {}));
  EXPECT_EQ(statuses, Lines{"10 (null)"});
  EXPECT_EQ(uid, "before");
}

TEST_F(FileDownload, DoesNotProbeTheServer) {
  answers.reachable = false;
  EXPECT_TRUE(GetFile("//plm/a", "/tmp/copy", uid, {}, {}));
}

TEST_F(FileDownload, WorksWithEmptyCallbacks) {
  EXPECT_TRUE(GetFile("//plm/a", "/tmp/copy", uid, {}, {}));
  EXPECT_FALSE(answers.progress);
  answers.downloads = false;
  EXPECT_FALSE(GetFile("//plm/a", "/tmp/copy", uid, {}, {}));
  EXPECT_FALSE(GetFile("//nobody/a", "/tmp/copy", uid, {}, {}));
}

TEST_F(FileDownload, HandsProgressOnWithItsArgumentsAndItsResult) {
  std::vector<std::size_t> reports;
  EXPECT_TRUE(GetFile("//plm/a", "/tmp/copy", uid, {}, [&reports](std::size_t done, std::size_t total) {
    reports.insert(reports.end(), {done, total});
    return done == 3;
  }));
  EXPECT_TRUE(answers.progress(3, 9));
  EXPECT_FALSE(answers.progress(4, 9));
  EXPECT_EQ(reports, (std::vector<std::size_t>{3, 9, 4, 9}));
}

TEST_F(FileDownload, MayWriteTheUidOverTheAddress) {
  uid = uidOfD1;
  EXPECT_TRUE(GetFile(uid.c_str(), "/tmp/copy", uid, {}, {}));
  EXPECT_EQ(uid, resultUid);
  EXPECT_EQ(trace.lines().back(),
            (TraceLine{0, "VtDirect", std::string("Downloading ") + uidOfD1 + " succeeded\n"}));
}

TEST_F(FileDownload, SurvivesAServerThatIsDroppedMeanwhile) {
  const auto drop = [](StatusCode, const char*) { UpdateServerList({}); };
  EXPECT_TRUE(GetFile("//plm/a", "/tmp/copy", uid, drop, {}));
  EXPECT_EQ(uid, resultUid);
}

TEST_F(FileDownloadTask, FinishesWithinTheCallWithoutARunner) {
  EXPECT_TRUE(GetFileAsync("//plm/a", "/tmp/copy", Status(), {}));
  EXPECT_EQ(statuses, Lines{std::string("0 ") + resultUid});
  EXPECT_EQ(answers.calls, (Lines{"TestConnection", "ResolvePath(a)", "GetFile(D1 /tmp/copy)"}));
}

TEST_F(FileDownloadTask, ThatFailsWithinTheCallWasAcceptedAllTheSame) {
  answers.downloads = false;
  EXPECT_TRUE(GetFileAsync("//plm/a", "/tmp/copy", Status(), {}));
  EXPECT_EQ(statuses, Lines{"10 (null)"});
}

TEST_F(FileDownloadTask, OfAnUnknownNicknameReportsOnce) {
  EXPECT_FALSE(GetFileAsync("//nobody/a", "/tmp/copy", Status(), {}));
  EXPECT_EQ(statuses, Lines{"1 (null)"});
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to connect to server path //nobody/a\n"}}));
}

TEST_F(FileDownloadTask, OfAServerThatDoesNotAnswerReportsOnce) {
  answers.reachable = false;
  RegisterTaskRunner(Enqueue);
  EXPECT_FALSE(GetFileAsync("//plm/a", "/tmp/copy", Status(), {}));
  EXPECT_EQ(statuses, Lines{"1 (null)"});
  EXPECT_EQ(answers.calls, Lines{"TestConnection"});
  EXPECT_TRUE(queue.empty());
}

TEST_F(FileDownloadTask, ThatTheRunnerRefusesCallsNothingBackAndIsDropped) {
  RegisterTaskRunner(Refuse);
  auto token = std::make_shared<int>(0);
  EXPECT_FALSE(GetFileAsync("//plm/a", "/tmp/copy", [token](StatusCode, const char*) { ++*token; }, {}));
  EXPECT_EQ(*token, 0);
  EXPECT_EQ(token.use_count(), 1);
  EXPECT_EQ(answers.calls, Lines{"TestConnection"});
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(FileDownloadTask, RunsWhenTheRunnerLikesWithCopiesOfItsTexts) {
  RegisterTaskRunner(Enqueue);
  {
    std::string path = "//plm/a";
    std::string localPath = "/tmp/copy";
    EXPECT_TRUE(GetFileAsync(path.c_str(), localPath.c_str(), Status(), {}));
    path.assign(path.size(), 'x');
    localPath.assign(localPath.size(), 'x');
  }
  EXPECT_TRUE(statuses.empty());
  ASSERT_EQ(queue.size(), 1u);
  queue.front()();
  EXPECT_EQ(statuses, Lines{std::string("0 ") + resultUid});
  EXPECT_EQ(answers.calls.back(), "GetFile(D1 /tmp/copy)");
}

TEST_F(FileDownloadTask, MayFindItsServerGoneWhenItRuns) {
  RegisterTaskRunner(Enqueue);
  EXPECT_TRUE(GetFileAsync("//plm/a", "/tmp/copy", Status(), {}));
  UpdateServerList({});
  queue.front()();
  EXPECT_EQ(statuses, (Lines{"1 (null)", "10 (null)"}));
}

TEST_F(FileDownloadTask, HandsProgressOn) {
  EXPECT_TRUE(
      GetFileAsync("//plm/a", "/tmp/copy", {}, [](std::size_t, std::size_t total) { return total == 9; }));
  EXPECT_TRUE(answers.progress(1, 9));
  EXPECT_FALSE(answers.progress(1, 8));
}

TEST_F(FileDownloadTask, TakesANullLocalPathForNone) {
  EXPECT_TRUE(GetFileAsync("//plm/a", nullptr, {}, {}));
  EXPECT_EQ(answers.calls.back(), "GetFile(D1 )");
}

TEST_F(FileDownload, TakesANullLocalPathForNone) {
  EXPECT_TRUE(GetFile("//plm/a", nullptr, uid, {}, {}));
  EXPECT_EQ(answers.calls.back(), "GetFile(D1 )");
}

TEST_F(DownloadUrl, IsThatOfTheFirstContent) {
  answers.contents = {{"fork 1.lxz", "https://files.example/1", "S1:17"},
                      {"x", "https://files.example/2", "S2:1"}};
  std::string url;
  std::string key;
  EXPECT_TRUE(GetFileDownloadURL(uidOfD1, url, &key));
  EXPECT_EQ(url, "https://files.example/1");
  EXPECT_EQ(key, "_lxvdccache:korvufenloom-vt%3A%2F%2Fplm.example%2Fvt%2F://S1%3A17&file=/fork%201.lxz");
  EXPECT_EQ(answers.calls, Lines{"ReadDetails(D1 contents)"});
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(DownloadUrl, IsGivenWithoutAKey) {
  answers.contents = {{"f", "https://files.example/1", "S1:17"}};
  std::string url;
  EXPECT_TRUE(GetFileDownloadURL(uidOfD1, url, nullptr));
  EXPECT_EQ(url, "https://files.example/1");
}

TEST_F(DownloadUrl, OfAPathIsThatOfItsObject) {
  std::string url;
  EXPECT_TRUE(GetFileDownloadURL("//plm/a", url, nullptr));
  EXPECT_EQ(answers.calls, (Lines{"ResolvePath(a)", "ReadDetails(D1 contents)"}));
}

TEST_F(DownloadUrl, OfAnObjectWithoutContentIsEmptyAndLeavesTheKeyAlone) {
  std::string url = "before";
  std::string key = "before";
  EXPECT_TRUE(GetFileDownloadURL(uidOfD1, url, &key));
  EXPECT_EQ(url, "");
  EXPECT_EQ(key, "before");
}

TEST_F(DownloadUrl, OfAContentWithoutAUrlIsEmptyAndHasAKey) {
  answers.contents = {{"f", "", "S1:17"}};
  std::string url = "before";
  std::string key;
  EXPECT_TRUE(GetFileDownloadURL(uidOfD1, url, &key));
  EXPECT_EQ(url, "");
  EXPECT_EQ(key, "_lxvdccache:korvufenloom-vt%3A%2F%2Fplm.example%2Fvt%2F://S1%3A17&file=/f");
}

TEST_F(DownloadUrl, FailsWithItsOutputsUntouched) {
  std::string url = "before";
  std::string key = "before";
  EXPECT_FALSE(GetFileDownloadURL("//plm/missing", url, &key));
  EXPECT_FALSE(GetFileDownloadURL("//nobody/a", url, &key));
  answers.contents = {{"f", "https://files.example/1", "S1:17"}};
  answers.detailsStatus = lxservices::cms_interface::ConnectionFailed;
  EXPECT_FALSE(GetFileDownloadURL(uidOfD1, url, &key));
  EXPECT_EQ(url + key, "beforebefore");
}

}  // namespace
