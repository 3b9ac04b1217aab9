#include <gmock/gmock.h>

#include <filesystem>

#include "tests/e2e/work_folder/work_folder_fixture.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {

class NamesOfWorkFiles : public WorkFolderTest {};

TEST_F(NamesOfWorkFiles, DoNotCheckInWhatLeavesAnEditOut) {
  Clone();
  ASSERT_EQ(RunIn("Frame", {"checkout", "fork.lxz"}).status, 0);
  const std::string edited = ChangeUnseen();
  const ProcessResult result = RunIn("Frame", {"checkin", "fork.lxz"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "vtdirect: fork.lxz was changed here, and checkin does not send that; nothing was checked in; "
            "\"vtdirect commit 'fork.lxz'\" stores and checks it in\n");
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(RunIn("Frame", {"checkin", "--dry-run", "fork.lxz"}).status, 1);
  EXPECT_NE(HolderOf("D1001"), "");
  EXPECT_EQ(RunIn("Frame", {"commit", "fork.lxz"}).out, "committed\tB.2\tfork.lxz\n");
  EXPECT_EQ(ForkOnServer(), edited);
}

TEST_F(NamesOfWorkFiles, AreKeptAsTheVersionThatTheyAreAfterACheckin) {
  Clone();
  ASSERT_EQ(RunIn("Frame", {"checkout", "fork.lxz"}).status, 0);
  const ProcessResult result = RunIn("Frame", {"checkin", "fork.lxz"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(St("Frame"), "");
  EXPECT_THAT(RunIn("Frame", {"st", "--all"}).out, HasSubstr("same\tB.2\tB.2\t\tfork.lxz\n"));
}

TEST_F(NamesOfWorkFiles, AreNotTakenForAVersionThatHasOtherBytes) {
  Clone();
  ASSERT_EQ(RunIn("Frame", {"checkout", "fork.lxz"}).status, 0);
  WriteFile(Home("other.lxz"), "stored from elsewhere");
  ASSERT_EQ(Run({"put", Home("other.lxz"), forkPath}).status, 0);
  const ProcessResult result = RunIn("Frame", {"checkin", "fork.lxz"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr("fork.lxz does not have the content of that version"));
  EXPECT_EQ(St("Frame"), "newer\tB.1\tB.2\t\tfork.lxz\n");
  EXPECT_EQ(RunIn("Frame", {"pull"}).status, 0);
  EXPECT_EQ(ReadFile(Fork()), "stored from elsewhere");
}

TEST_F(NamesOfWorkFiles, AreEditedInTheDirectory) {
  Clone();
  environment_["VISUAL"] = "true";
  const ProcessResult result = RunIn("Frame", {"edit", "fork.lxz"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err,
            "vtdirect: fork.lxz is a file of this work folder, and edit works on a copy of its own; nothing "
            "was done; edit the file here, then \"vtdirect commit 'fork.lxz'\" sends it\n");
  EXPECT_EQ(RunIn("Frame", {"edit", forkPath}).status, 0) << "the address is no name";
}

TEST_F(NamesOfWorkFiles, AreNotReplacedByAGet) {
  Clone();
  StoreElsewhere("theirs");
  const std::string before = ReadFile(Fork());
  for (const std::string& address : {std::string("fork.lxz"), std::string(forkPath)}) {
    const ProcessResult result = RunIn("Frame", {"get", address});
    EXPECT_EQ(result.status, 8);
    EXPECT_THAT(result.err, HasSubstr("fork.lxz is a file of a work folder, and is not replaced; nothing was "
                                      "fetched; \"vtdirect pull\" brings it up to date, "));
    EXPECT_THAT(result.err, Not(HasSubstr("--force")));
  }
  EXPECT_EQ(ReadFile(Fork()), before);
  EXPECT_EQ(RunIn("Frame", {"get", forkPath, "-o", "-"}).out, "theirs");
}

TEST_F(NamesOfWorkFiles, AreNotStoredOverTheirOwnDocumentByAPut) {
  Clone();
  WriteFile(Fork(), "mine");
  const ProcessResult result = RunIn("Frame", {"put", "fork.lxz", "fork.lxz"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(
      result.err,
      "vtdirect: fork.lxz is a file of this work folder; nothing was sent; \"vtdirect commit 'fork.lxz'\" "
      "stores and checks it in\n");
  EXPECT_EQ(St("Frame"), "modified\tB.1\tB.1\t\tfork.lxz\n");
}

/// A directory stands for the folder that it was made for, where a command only looks.
class NamesOfWorkDirectories : public WorkFolderTest {
 protected:
  void CloneBike() {
    Serve();
    ASSERT_EQ(Run({"clone", bikePath, "Bike"}).status, 0);
  }
};

TEST_F(NamesOfWorkDirectories, AreListed) {
  CloneBike();
  const std::string folders = Run({"ls", bikePath}).out;
  const std::string frame = Run({"ls", framePath}).out;
  EXPECT_EQ(RunIn("Bike", {"ls", "."}).out, folders);
  EXPECT_EQ(RunIn("Bike", {"ls", "Frame"}).out, frame);
  EXPECT_EQ(RunIn("Bike", {"ls", "Frame/"}).out, frame);
  EXPECT_EQ(RunIn("Bike/Frame", {"ls", "."}).out, frame);
  EXPECT_EQ(RunIn("Bike/Frame", {"ls", ".."}).out, folders);
  EXPECT_EQ(RunIn("Bike/Frame", {"ls", Here("Bike/Frame")}).out, frame);
  EXPECT_EQ(RunIn("Bike", {"tree", "Frame"}).out, Run({"tree", framePath}).out);
  EXPECT_EQ(RunIn("Bike", {"find", ".", "--name", "fork*"}).out, std::string(forkPath) + "\n");
  EXPECT_THAT(RunIn("Bike", {"ls", "Frame/fork.lxz"}).err, HasSubstr("is a document"));
}

TEST_F(NamesOfWorkDirectories, AreNoAddressesWhereSomethingIsChangedOrNothingIsKnown) {
  CloneBike();
  WriteFile(Here("Bike/Frame/fork.lxz"), "mine");
  for (const std::vector<std::string>& words : {std::vector<std::string>{"put", "Frame/fork.lxz", "Frame/"},
                                                {"checkin", "-r", "Frame"},
                                                {"undo", "-r", "."},
                                                {"checkout", "-r", "."},
                                                {"clone", ".", "copy"}}) {
    const ProcessResult result = RunIn("Bike", words);
    EXPECT_EQ(result.status, 2) << words.front() << result.err;
    EXPECT_THAT(result.err, HasSubstr("is neither a path")) << words.front();
  }
  std::filesystem::create_directory(Here("Bike/mine"));
  EXPECT_EQ(RunIn("Bike", {"ls", "mine"}).status, 2);
  EXPECT_EQ(RunIn("Bike", {"ls", Here("")}).status, 2) << "above the work folder";
  EXPECT_EQ(RunIn("Bike", {"ls", ".vtdirect"}).status, 2);
}

// The directory's own server has no part in storing its files on another one, with which it shares no proxy.
TEST_F(NamesOfWorkFiles, OfAWorkFolderThatIsStoredElsewhereAreOnlyFiles) {
  Serve();
  ASSERT_EQ(Run({"clone", bikePath}).status, 0);
  const std::string other = "http://localhost" + server().url().substr(server().url().rfind(':'));
  WriteHome(".config/vtdirect/config",
            "[server sim]\nurl = " + server().url() + "\nproxy = http://127.0.0.1:" +
                std::to_string(UnusedPort()) + "\n[server other]\nurl = " + other + "\nproxy = none\n",
            0600);
  const ProcessResult result =
      RunIn("Folders", {"put", "--dry-run", "-r", "Frame", "//other/Products/Trekking Bike/Folders/Frame/"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("fork.lxz"));
}

TEST_F(NamesOfWorkFiles, AreNotMixedUpWithServersByAFileThatIsCalledAsOne) {
  Serve();
  WriteFile(Here("other"), "new content");
  WriteHome(".config/vtdirect/config",
            "[server sim]\nurl = " + server().url() +
                "\nproxy = none\n[server other]\nurl = "
                "http://127.0.0.1:" +
                std::to_string(UnusedPort()) + "/\nproxy = http://127.0.0.1:" + std::to_string(UnusedPort()) +
                "\n",
            0600);
  const ProcessResult result = Run({"put", "--dry-run", "other", "//sim/?id=D1001"});
  EXPECT_EQ(result.status, 0) << result.err;
}

}  // namespace vtdirect_test
