#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "tests/e2e/cli/terminal_session.h"
#include "tests/e2e/work_folder/work_folder_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;

namespace vtdirect_test {
namespace {

std::vector<std::string> FilesIn(const std::string& directory) {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
    const std::string path = entry.path().string().substr(directory.size() + 1);
    if (entry.is_regular_file() && !path.starts_with(".vtdirect")) files.push_back(path);
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

class CloneCommand : public WorkFolderTest {};

TEST_F(CloneCommand, BringsEveryDocumentByItsNameInAPath) {
  Clone();
  EXPECT_THAT(FilesIn(Here("Frame")), ElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
  EXPECT_EQ(ReadFile(Fork()), DocumentOf(server(), "D1001").bytes);
  EXPECT_EQ(ReadFile(Here("Frame/frame.lxz")), DocumentOf(server(), "D1002").bytes);
  EXPECT_EQ(ReadFile(Here("Frame/welding manual.xml")), DocumentOf(server(), "D1028").bytes);
  EXPECT_EQ(St("Frame"), "");
}

TEST_F(CloneCommand, BringsFoldersBelowAndNamesThatNoDiskTakes) {
  Serve();
  const ProcessResult result = Run({"clone", bikePath, "bike", "--parallel", "8"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(FilesIn(Here("bike")),
              IsSupersetOf({"Frame/fork.lxz", "Drivetrain/Chains/chain.lxz", "Drivetrain/O'Ring 12mm.lxz",
                            "Drivetrain/odd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz",
                            "Größen & Maße/Größentabelle Rahmen.lxz"}));
  EXPECT_EQ(ReadFile(Here("bike/Drivetrain/odd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz")),
            DocumentOf(server(), "D1007").bytes);
}

// A document without a content has no file. That is no failure of anybody's, and it is said.
TEST_F(CloneCommand, SaysWhichDocumentHasNoContent) {
  Serve();
  const ProcessResult result = Run({"clone", bikePath, "bike"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.err, HasSubstr("no content.lxz has no content on the server yet"));
  EXPECT_FALSE(std::filesystem::exists(Here("bike/no content.lxz")));
  EXPECT_THAT(St("bike"), HasSubstr("no content.lxz"));
}

TEST_F(CloneCommand, LeavesNothingWhenTheFolderIsNotThere) {
  Serve();
  EXPECT_EQ(Run({"clone", "//sim/Products/Trekking Bike/Folders/NoSuch/"}).status, 6);
  EXPECT_EQ(Run({"clone", "//sim/Products/NoSuch/"}).status, 6);
  EXPECT_EQ(Run({"clone", "//nowhere/Products/"}).status, 9);
  EXPECT_EQ(Run({"clone", framePath, "--parallel", "0"}).status, 2);
  EXPECT_THAT(HereNames(), IsEmpty());
}

TEST_F(CloneCommand, TakesNoDirectoryOfSomebodysFiles) {
  Serve();
  std::filesystem::create_directory(Here("full"));
  WriteFile(Here("full/mine"), "mine");
  EXPECT_EQ(Run({"clone", framePath, "full"}).status, 8);
  EXPECT_THAT(FilesIn(Here("full")), ElementsAre("mine"));
  EXPECT_FALSE(std::filesystem::exists(Here("full/.vtdirect")));
  std::filesystem::create_directory(Here("empty"));
  EXPECT_EQ(Run({"clone", framePath, "empty"}).status, 0);
  const ProcessResult again = Run({"clone", framePath, "empty"});
  EXPECT_EQ(again.status, 8);
  EXPECT_THAT(again.err, HasSubstr("is a work folder already"));
}

// Each of many connections meets a server that wants credentials; they are taken from one place, once.
TEST_F(CloneCommand, LogsInOnManyThreads) {
  environment_["VTDIRECT_USER"] = "anna";
  environment_["VTDIRECT_PASSWORD"] = "a";
  Serve({"--user", "anna:a"});
  const ProcessResult result = Run({"clone", bikePath, "bike", "--parallel", "8"});
  EXPECT_EQ(result.status, 0) << result.err;
  environment_["VTDIRECT_PASSWORD"] = "wrong";
  EXPECT_EQ(Run({"clone", bikePath, "other", "--parallel", "8"}).status, 4);
  EXPECT_FALSE(std::filesystem::exists(Here("other")));
}

TEST_F(CloneCommand, TellsEachFileToAProgram) {
  Serve();
  const ProcessResult result = Run({"clone", framePath, "--json"});
  EXPECT_THAT(result.out,
              HasSubstr("\"command\":\"clone\",\"action\":\"fetched\",\"file\":\"fork.lxz\",\"path\":\"" +
                        std::string(forkPath) + "\""));
  EXPECT_THAT(result.out, HasSubstr("\"uid\":\"" + server().Uid("D1001") + "&file=/fork.lxz\""));
}

TEST_F(CloneCommand, TellsHowFarItHasComeOnATerminal) {
  Serve({"--fault", "GET *content/streams/*=delay:200"});
  TerminalSession session({"--server", "sim=" + server().url(), "clone", framePath}, environment_, Here(""));
  EXPECT_TRUE(session.Sees("0 of 3 files  0 B")) << session.screen();
  EXPECT_TRUE(session.Sees("fork.lxz")) << session.screen();
  EXPECT_EQ(session.Wait(), 0);
  // What was found is on a line of its own, and the line of progress is gone at the end.
  EXPECT_THAT(session.screen(), HasSubstr("\r\x1B[Kfetched\tfork.lxz\r\n"));
  EXPECT_THAT(session.screen(), HasSubstr("\r\nvtdirect: 3 of 3 files fetched, "));
}

/// Servers of every generation, of which the older ones tell no versions in a listing.
class CloneFrom : public WorkFolderTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Generations, CloneFrom, testing::Values("schema5", "schema4", "schema1", "gateway"),
                         [](const auto& test) { return std::string(test.param); });

TEST_P(CloneFrom, BringsTheSame) {
  environment_["FENLOOM_REST_SNXGW_NOW_ESCAPES"] = "1";
  const std::string generation = GetParam();
  std::vector<std::string> options = {"--generation", generation};
  if (!generation.starts_with("schema4") && generation != "schema5")
    options.emplace_back("--gateway-escapes");
  Clone(options);
  EXPECT_THAT(FilesIn(Here("Frame")), ElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
  EXPECT_EQ(ReadFile(Fork()), DocumentOf(server(), "D1001").bytes);
  EXPECT_EQ(St("Frame"), "");
  EXPECT_THAT(RunIn("Frame", {"log", "fork.lxz"}).out, HasSubstr("B.1\t" + server().Uid("D1001")));
  StoreElsewhere("newer");
  EXPECT_EQ(St("Frame"), "newer\tB.1\tB.2\t\tfork.lxz\n");
  EXPECT_EQ(RunIn("Frame", {"pull"}).status, 0);
  EXPECT_EQ(ReadFile(Fork()), "newer");
}

}  // namespace vtdirect_test
