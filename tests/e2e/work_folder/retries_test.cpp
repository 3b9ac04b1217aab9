#include <filesystem>

#include "tests/e2e/work_folder/work_folder_fixture.h"

namespace vtdirect_test {

class WorkFolderRetries : public WorkFolderTest {};

TEST_F(WorkFolderRetries, BringWhatBrokeOffOnce) {
  Serve({"--fault", "GET *content/streams/*=cut:10*1", "--fault", "GET *FolderContents*=503*1"});
  const ProcessResult result = Run({"clone", framePath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(St("Frame"), "");
}

TEST_F(WorkFolderRetries, EndWhenTheyAreToldSo) {
  Serve({"--fault", "GET *content/streams/*=cut:10*1"});
  EXPECT_NE(Run({"clone", framePath, "--retries", "0"}).status, 0);
  const ProcessResult pulled = RunIn("Frame", {"pull", "--retries", "0"});
  EXPECT_EQ(pulled.status, 0) << pulled.err;
  EXPECT_EQ(St("Frame"), "");
  EXPECT_EQ(RunIn("Frame", {"pull", "--retries", "x"}).status, 2);
}

class WorkFolderDryRun : public WorkFolderTest {};

TEST_F(WorkFolderDryRun, TellsWhatWouldBeSentAndSendsNothing) {
  Clone();
  WriteFile(Fork(), "mine");
  const ProcessResult result = RunIn("Frame", {"commit", "--dry-run"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "would-commit\tB.1\tfork.lxz\n");
  EXPECT_NE(ForkOnServer(), "mine");
  EXPECT_EQ(HolderOf("D1001"), "");
  StoreElsewhere("theirs");
  const ProcessResult conflict = RunIn("Frame", {"commit", "--dry-run"});
  EXPECT_EQ(conflict.status, 1);
  EXPECT_EQ(conflict.out, "");
}

TEST_F(WorkFolderDryRun, TellsWhatWouldBeFetchedAndFetchesNothing) {
  Clone();
  std::filesystem::remove(Here("Frame/frame.lxz"));
  WriteFile(Fork(), "mine");
  StoreElsewhere("theirs");
  const ProcessResult result = RunIn("Frame", {"pull", "--dry-run"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "would-leave\tfork.lxz\nwould-fetch\tframe.lxz\n");
  EXPECT_FALSE(std::filesystem::exists(Here("Frame/frame.lxz")));
  EXPECT_EQ(ReadFile(Fork()), "mine");
}

TEST_F(WorkFolderDryRun, TellsWhatAWorkFolderWouldHoldAndMakesNone) {
  Serve();
  const ProcessResult result = Run({"clone", "--dry-run", framePath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "would-fetch\tfork.lxz\nwould-fetch\tframe.lxz\nwould-fetch\twelding manual.xml\n");
  EXPECT_TRUE(HereNames().empty());
  EXPECT_EQ(Run({"clone", "--dry-run", std::string(framePath) + "No such/"}).status, 6);
  std::filesystem::create_directory(Here("Frame"));
  WriteFile(Here("Frame/other"), "mine");
  EXPECT_EQ(Run({"clone", "--dry-run", framePath}).status, 8);
}

TEST_F(WorkFolderDryRun, TellsWhatWouldBePutBackAndLeavesIt) {
  Clone();
  WriteFile(Fork(), "mine");
  const ProcessResult result = RunIn("Frame", {"revert", "--dry-run", "fork.lxz", "frame.lxz"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "would revert\tB.1\tfork.lxz\n");
  EXPECT_EQ(ReadFile(Fork()), "mine");
  EXPECT_FALSE(std::filesystem::exists(Fork() + ".edited"));
}

}  // namespace vtdirect_test
