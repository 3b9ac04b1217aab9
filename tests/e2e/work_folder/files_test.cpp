#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <sstream>

#include "tests/e2e/cli/terminal_session.h"
#include "tests/e2e/work_folder/work_folder_fixture.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace vtdirect_test {

/// revert, diff and log, and names of files in place of addresses.
class WorkFiles : public WorkFolderTest {};

TEST_F(WorkFiles, AreRevertedWithTheEditBesideThem) {
  Clone();
  const std::string original = ReadFile(Fork());
  WriteFile(Fork(), "first");
  const ProcessResult result = RunIn("Frame", {"revert", "fork.lxz"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "fork.lxz.edited\n");
  EXPECT_EQ(ReadFile(Fork()), original);
  EXPECT_EQ(ReadFile(Here("Frame/fork.lxz.edited")), "first");
  WriteFile(Fork(), "second");
  EXPECT_EQ(RunIn("Frame", {"revert", "fork.lxz"}).out, "fork.lxz.edited-2\n");
  EXPECT_EQ(ReadFile(Here("Frame/fork.lxz.edited")), "first");
  EXPECT_EQ(ReadFile(Here("Frame/fork.lxz.edited-2")), "second");
  EXPECT_EQ(RunIn("Frame", {"revert", "fork.lxz"}).out, "") << "there is nothing to put back";
}

// A tool that sets times back hides a change from st. Who names the file knows better.
TEST_F(WorkFiles, AreReadWhenTheyAreNamed) {
  Clone();
  const std::string original = ReadFile(Fork());
  const std::string mine = ChangeUnseen();
  EXPECT_EQ(St("Frame"), "");
  EXPECT_THAT(RunIn("Frame", {"--json", "diff", "fork.lxz"}).out, HasSubstr("\"differs\":true"));
  EXPECT_EQ(RunIn("Frame", {"revert", "fork.lxz"}).out, "fork.lxz.edited\n");
  EXPECT_EQ(ReadFile(Here("Frame/fork.lxz.edited")), mine);
  EXPECT_EQ(ReadFile(Fork()), original);
  ASSERT_EQ(ChangeUnseen(), mine);
  const ProcessResult commit = RunIn("Frame", {"commit", "fork.lxz"});
  EXPECT_EQ(commit.status, 0) << commit.err;
  EXPECT_EQ(ForkOnServer(), mine);
}

TEST_F(WorkFiles, AreRevertedToTheVersionThatTheyCameFrom) {
  Clone();
  const std::string original = ReadFile(Fork());
  StoreElsewhere("theirs");
  WriteFile(Fork(), "mine");
  EXPECT_EQ(RunIn("Frame", {"revert", "fork.lxz"}).status, 0);
  EXPECT_EQ(ReadFile(Fork()), original);
  EXPECT_THAT(St("Frame"), StartsWith("newer\tB.1\tB.2\t\tfork.lxz\n"));
}

TEST_F(WorkFiles, StayAsTheyAreWhenNothingCanBeFetched) {
  Clone();
  WriteFile(Fork(), "mine");
  Restart({"--fault", "GET *content/streams*=503"});
  EXPECT_NE(RunIn("Frame", {"revert", "fork.lxz"}).status, 0);
  EXPECT_EQ(ReadFile(Fork()), "mine");
  EXPECT_FALSE(std::filesystem::exists(Here("Frame/fork.lxz.edited")));
}

TEST_F(WorkFiles, ShowWhatWasChangedInThem) {
  Clone();
  EXPECT_EQ(RunIn("Frame", {"diff", "fork.lxz"}).out, "");
  WriteFile(Fork(), ReadFile(Fork()) + "one more line\n");
  const ProcessResult result = RunIn("Frame", {"diff", "fork.lxz"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, StartsWith("--- fork.lxz (version B.1)\n+++ fork.lxz\n@@ "));
  EXPECT_THAT(result.out, HasSubstr("\n+one more line\n"));
  // The same without a name, which stands for all that was changed.
  EXPECT_EQ(RunIn("Frame", {"diff"}).out, result.out);
  environment_["VTDIRECT_DIFF"] = "printf '%s|' two words;cat";
  EXPECT_EQ(RunIn("Frame", {"diff", "fork.lxz"}).out,
            "two|words|" + DocumentOf(server(), "D1001").bytes + ReadFile(Fork()));
  environment_["VTDIRECT_DIFF"] = "no-such-tool";
  EXPECT_EQ(RunIn("Frame", {"diff", "fork.lxz"}).status, 1);
}

TEST_F(WorkFiles, TellTheVersionsOfTheirDocuments) {
  Clone();
  StoreElsewhere("theirs");
  const ProcessResult result = RunIn("Frame", {"log", "fork.lxz"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, StartsWith("B.2\t"));
  EXPECT_THAT(result.out,
              HasSubstr("\tlatest\nB.1\t" + server().Uid("D1001") + "&file=/fork.lxz\there\nA.2\t"));
}

TEST_F(WorkFiles, StandForTheirDocumentsInOtherCommands) {
  Clone();
  std::filesystem::create_directory(Here("Frame/below"));
  EXPECT_EQ(RunIn("Frame", {"uid", "fork.lxz"}).out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(RunIn("Frame/below", {"uid", "../fork.lxz"}).out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(RunIn("Frame", {"uid", Fork()}).out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(RunIn("Frame", {"uid", "nothing.lxz"}).status, 2);
}

TEST_F(WorkFiles, AreCalledAsTheCurrentDirectoryHasThem) {
  Clone();
  std::filesystem::create_directory(Here("Frame/below"));
  WriteFile(Fork(), ReadFile(Fork()) + "one more line\n");
  WriteFile(Here("Frame/below/new"), "new");
  EXPECT_EQ(St("Frame/below"), "unknown\t\t\t\tnew\nmodified\tB.1\tB.1\t\t../fork.lxz\n");
  EXPECT_THAT(RunIn("Frame/below", {"st", "--json"}).out, HasSubstr("\"file\":\"fork.lxz\""))
      << "a program finds the path below the work folder";
  EXPECT_THAT(RunIn("Frame/below", {"diff"}).out,
              StartsWith("--- ../fork.lxz (version B.1)\n+++ ../fork.lxz\n@@ "));
  EXPECT_EQ(RunIn("Frame/below", {"commit", "../fork.lxz"}).out, "committed\tB.2\t../fork.lxz\n");
  WriteFile(Fork(), "mine");
  const ProcessResult reverted = RunIn("Frame/below", {"revert", "../fork.lxz"});
  EXPECT_EQ(reverted.out, "../fork.lxz.edited\n");
  EXPECT_THAT(reverted.err, HasSubstr("../fork.lxz is version B.2 again"));
  std::filesystem::remove(Fork());
  EXPECT_EQ(RunIn("Frame/below", {"pull"}).out, "fetched\t../fork.lxz\n");
}

TEST_F(WorkFiles, ThatDoNotDifferAreNotedForPeopleAlone) {
  Clone();
  for (const char* command : {"st", "diff"}) {
    EXPECT_EQ(RunIn("Frame", {command}).err, "");
    TerminalSession session({"--server", "sim=" + server().url(), command}, environment_, Here("Frame"));
    EXPECT_TRUE(session.Sees("vtdirect: nothing differs\r\n")) << session.screen();
    EXPECT_EQ(session.Wait(), 0);
  }
}

TEST_F(WorkFiles, AreFoundByNobodyAndPeopleAreToldSo) {
  Serve();
  const std::vector<std::pair<std::vector<std::string>, std::string>> empty = {
      {{"find", framePath, "--name", "no such"}, "no document matches"},
      {{"checkouts"}, "no checkouts are kept; \"vtdirect checkouts --on NICK\" asks a server"},
      {{"checkouts", "--on", "sim"}, "you have no working copies there"},
      {{"recover"}, "every change is confirmed"},
  };
  for (const auto& [command, note] : empty) {
    const ProcessResult piped = Run(command);
    EXPECT_EQ(piped.status, 0) << note;
    EXPECT_EQ(piped.out + piped.err, "") << note;
    std::vector<std::string> words = {"--server", "sim=" + server().url()};
    words.insert(words.end(), command.begin(), command.end());
    TerminalSession session(words, environment_, Here(""));
    EXPECT_TRUE(session.Sees("vtdirect: " + note + "\r\n")) << session.screen();
    EXPECT_EQ(session.Wait(), 0) << note;
  }
}

// The change of a command that is at work is neither confirmed nor this one's to settle.
TEST_F(WorkFiles, AreNotCalledConfirmedWhileAnotherCommandIsAtWork) {
  Serve();
  const std::string state = ReadFile("/proc/self/stat");
  std::istringstream words(state.substr(state.rfind(')') + 1));
  std::string started;
  for (int word = 0; word < 20; ++word) words >> started;
  WriteHome(".local/state/vtdirect/journal",
            "vtdirect-journal 1\n" + std::to_string(getpid()) + ":" + started +
                "\t2026-01-31T09:00:00Z\tcheckin\t//sim/?id=D1001\t//sim/?id=D1001\t\t\n",
            0600);
  TerminalSession session({"--server", "sim=" + server().url(), "recover"}, environment_, Here(""));
  EXPECT_TRUE(session.Sees("nothing is open but what commands that are at work have begun\r\n"))
      << session.screen();
  EXPECT_EQ(session.Wait(), 0);
}

}  // namespace vtdirect_test
