#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>

#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/work_folder/work_folder_fixture.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {

class PullCommand : public WorkFolderTest {};

TEST_F(PullCommand, FetchesWhatIsNewerNewAndMissing) {
  Clone();
  StoreElsewhere("newer");
  WriteFile(Home("new.lxz"), "new");
  ASSERT_EQ(RunElsewhere({"put", Home("new.lxz"), framePath}).status, 0);
  std::filesystem::remove(Here("Frame/frame.lxz"));
  EXPECT_EQ(St("Frame"),
            "newer\tB.1\tB.2\t\tfork.lxz\nmissing\tA.3\tA.3\t\tframe.lxz\nnew\t\tA.1\t\tnew.lxz\n");
  const ProcessResult result = RunIn("Frame", {"pull"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(ReadFile(Fork()), "newer");
  EXPECT_EQ(ReadFile(Here("Frame/new.lxz")), "new");
  EXPECT_EQ(ReadFile(Here("Frame/frame.lxz")), DocumentOf(server(), "D1002").bytes);
  EXPECT_EQ(St("Frame"), "");
}

TEST_F(PullCommand, NeverReplacesAModification) {
  Clone();
  StoreElsewhere("newer");
  WriteFile(Fork(), "mine");
  const ProcessResult result = RunIn("Frame", {"pull"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err,
              HasSubstr("fork.lxz was changed here, and the server has version B.2; it is left as it is"));
  EXPECT_EQ(ReadFile(Fork()), "mine");
  EXPECT_EQ(St("Frame"), "both\tB.1\tB.2\t\tfork.lxz\n");
}

// Size and time tell nothing against whoever sets them back. What is replaced is compared byte by byte.
TEST_F(PullCommand, TellsItsFailuresOnceMoreAfterTheSummary) {
  Clone();
  WriteFile(Fork(), "mine");
  StoreElsewhere("theirs");
  const std::string failure =
      "fork.lxz was changed here, and the server has version B.2; it is left as it is; vtdirect diff shows "
      "your changes, and vtdirect revert keeps them beside it before you pull again\n";
  const std::string once = "vtdirect: " + failure + "vtdirect: 0 of 1 files fetched, 0 bytes\n";
  EXPECT_EQ(RunIn("Frame", {"pull"}).err, once) << "of one file, once is enough";
  const std::string bytes = ReadFile(Here("Frame/frame.lxz"));
  std::filesystem::remove(Here("Frame/frame.lxz"));
  EXPECT_THAT(RunIn("Frame", {"pull"}).err,
              HasSubstr("vtdirect: 1 of 2 files fetched, " + std::to_string(bytes.size()) +
                        " bytes\nvtdirect: 1 of 2 failed:\nvtdirect:   " + failure));
}

TEST_F(PullCommand, SaysThatNothingIsNewer) {
  Clone();
  const ProcessResult result = RunIn("Frame", {"pull"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "vtdirect: nothing is newer on the server\n");
}

TEST_F(PullCommand, SeesAModificationThatSizeAndTimeHide) {
  Clone();
  const std::string mine = ChangeUnseen();
  StoreElsewhere("newer");
  EXPECT_EQ(RunIn("Frame", {"pull"}).status, 1);
  EXPECT_EQ(ReadFile(Fork()), mine);
}

TEST_F(PullCommand, LeavesAFileAloneThatDidNotComeFromTheServer) {
  Clone();
  WriteFile(Home("new.lxz"), "theirs");
  ASSERT_EQ(RunElsewhere({"put", Home("new.lxz"), framePath}).status, 0);
  WriteFile(Here("Frame/new.lxz"), "mine");
  EXPECT_EQ(St("Frame"), "in-the-way\t\tA.1\t\tnew.lxz\n");
  EXPECT_EQ(RunIn("Frame", {"pull"}).status, 1);
  EXPECT_EQ(ReadFile(Here("Frame/new.lxz")), "mine");
  // The same bytes are in nobody's way.
  WriteFile(Here("Frame/new.lxz"), "theirs");
  EXPECT_EQ(RunIn("Frame", {"pull"}).out, "known\tnew.lxz\n");
  EXPECT_EQ(St("Frame"), "");
}

TEST_F(PullCommand, LeavesAWriteProtectedFileAndALinkAlone) {
  Clone();
  StoreElsewhere("newer");
  ASSERT_EQ(chmod(Fork().c_str(), 0444), 0);
  EXPECT_EQ(RunIn("Frame", {"pull"}).status, 1);
  EXPECT_THAT(ReadFile(Fork()), HasSubstr(forkHead));
  std::filesystem::remove(Fork());
  WriteFile(Here("target"), "mine");
  std::filesystem::create_symlink(Here("target"), Fork());
  EXPECT_EQ(RunIn("Frame", {"pull"}).status, 1);
  EXPECT_TRUE(std::filesystem::is_symlink(Fork()));
  EXPECT_EQ(ReadFile(Here("target")), "mine");
}

TEST_F(PullCommand, AsksForNoDocumentThatHasNotChanged) {
  Serve();
  ASSERT_EQ(Run({"clone", bikePath, "bike"}).status, 0);
  std::filesystem::remove(Here("bike/no content.lxz"));
  const std::size_t before = server().Log().size();
  EXPECT_EQ(RunIn("bike/Frame", {"pull"}).status, 0);
  const std::string log = server().Log().substr(before);
  EXPECT_THAT(log, Not(HasSubstr("/dkm/documents/D1001")));
  EXPECT_THAT(log, Not(HasSubstr("/content/streams/")));
  // Two at most for each of the eight folders, the service documents, the search for the first folder, and the one
  // document without a content.
  EXPECT_LE(std::count(log.begin(), log.end(), '\n'), 8 * 2 + 3 + 1 + 4) << log;
}

TEST_F(PullCommand, KeepsWhatTheServerDoesNotHaveAnyMore) {
  Clone();
  std::filesystem::rename(Here("Frame"), Here("moved"));
  EXPECT_EQ(St("moved"), "") << "a work folder can be moved";
}

// What a signal keeps from being asked for is not known, and so not gone.
TEST_F(PullCommand, TakesNothingForGoneWhenItIsInterrupted) {
  Serve();
  ASSERT_EQ(Run({"clone", bikePath, "bike"}).status, 0);
  Restart({"--fault", "GET *SubFolder:211*FolderContents*=stall"});
  const std::size_t before = server().Log().size();
  const auto process = StartIn("bike", {"pull", "--parallel", "1"});
  ASSERT_TRUE(
      WaitUntil([&] { return server().Log().substr(before).find("FolderContents") != std::string::npos; }));
  process->Signal(SIGINT);
  const ProcessResult result = process->Wait();
  EXPECT_EQ(result.status, 130);
  EXPECT_THAT(result.err, Not(HasSubstr("not on the server any more")));
  Restart({});
  EXPECT_EQ(RunIn("bike", {"pull"}).err.find("not on the server"), std::string::npos);
}

TEST_F(PullCommand, TellsAFolderThatCannotBeListed) {
  Serve();
  ASSERT_EQ(Run({"clone", bikePath, "bike"}).status, 0);
  Restart({"--fault", "GET *SubFolder:211*FolderContents*=503"});
  WriteFile(Here("bike/Frame/fork.lxz"), "mine");
  const ProcessResult st = RunIn("bike", {"st"});
  EXPECT_EQ(st.status, 11);
  EXPECT_THAT(st.err, HasSubstr("cannot list //sim/Products/Trekking Bike/Folders/Frame/"));
  EXPECT_THAT(st.out, HasSubstr("modified\tB.1\t\t\tFrame/fork.lxz\n"));
  EXPECT_THAT(st.out, Not(HasSubstr("gone")));
  EXPECT_EQ(RunIn("bike", {"pull"}).status, 11);
  EXPECT_EQ(ReadFile(Here("bike/Frame/fork.lxz")), "mine");
}

TEST_F(PullCommand, LetsNoOtherWorkMeanwhile) {
  Clone();
  const int lock = open(Here("Frame/.vtdirect/lock").c_str(), O_RDWR);
  ASSERT_EQ(flock(lock, LOCK_EX), 0);
  for (const char* command : {"pull", "commit"}) {
    const ProcessResult result = RunIn("Frame", {command});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("another vtdirect is at work in this work folder"));
  }
  EXPECT_EQ(St("Frame"), "");
  close(lock);
}

TEST_F(PullCommand, RefusesOutsideOfAWorkFolderAndWithAnotherServer) {
  Clone();
  for (const char* command : {"st", "pull", "commit"}) {
    const ProcessResult result = Run({command});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("the current directory is not in a work folder"));
  }
  const ProcessResult other = RunIn("Frame", {"--server", "sim=http://127.0.0.1:9/", "pull"});
  EXPECT_EQ(other.status, 2);
  EXPECT_THAT(other.err, HasSubstr("leads to"));
  const ProcessResult unlisted =
      Process({VTDIRECT_PROGRAM, "st"}, {environment_, Here("Frame"), "", 0}).Wait();
  EXPECT_EQ(unlisted.status, 9);
  const std::string host = server().url().substr(std::string("http://").size());
  EXPECT_THAT(unlisted.err,
              HasSubstr("; list it in the configuration file, or by --server sim=URL; its URL is https://" +
                        host + ", or the same with http\n"));
}

// Without a length, half a content looks whole: only the size in the document's record tells.
TEST_F(PullCommand, KeepsTheOldFileWhenAContentIsShorterThanItsRecordSays) {
  Clone();
  const std::string old = ReadFile(Fork());
  StoreElsewhere("newer by much");
  Meddler halver([](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    const std::string answer = forward();
    if (request.target.find("/streams/") == std::string::npos) return peer.Send(answer);
    peer.Send("HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n\r\nnewer");
  });
  environment_["http_proxy"] = halver.Url();
  const ProcessResult result = RunIn("Frame", {"pull"});
  environment_.erase("http_proxy");
  EXPECT_NE(result.status, 0);
  EXPECT_THAT(result.err, HasSubstr("fork.lxz"));
  EXPECT_EQ(ReadFile(Fork()), old);
  EXPECT_EQ(RunIn("Frame", {"pull"}).status, 0);
  EXPECT_EQ(ReadFile(Fork()), "newer by much");
}

}  // namespace vtdirect_test
