#include <gmock/gmock.h>

#include <filesystem>

#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/work_folder/work_folder_fixture.h"

namespace vtdirect_test {

/// A server on which two documents of one folder have one name. The simulator has none of that kind, so a proxy calls
/// documents another way. The new text is as long as the old one, since the head of the answer tells its length.
class WorkFolderNamesakes : public WorkFolderTest {
 protected:
  struct Renaming {
    std::string from;
    std::string to;
  };

  ProcessResult RunWith(const std::string& directory, const std::vector<std::string>& words,
                        const std::vector<Renaming>& renamings) {
    const Meddler meddler([&](Peer& peer, const WireRequest&, const Meddler::Forward& forward) {
      std::string answer = forward();
      for (const Renaming& renaming : renamings) Replace(answer, renaming);
      peer.Send(answer);
    });
    environment_["http_proxy"] = meddler.Url();
    ProcessResult result = RunIn(directory, words);
    environment_.erase("http_proxy");
    return result;
  }

 private:
  static void Replace(std::string& answer, const Renaming& renaming) {
    ASSERT_EQ(renaming.from.size(), renaming.to.size());
    for (std::size_t at = answer.find(renaming.from); at != std::string::npos;
         at = answer.find(renaming.from, at)) {
      answer.replace(at, renaming.from.size(), renaming.to);
    }
  }
};

// D1028 is called as D1001 is, and then D1001 gets another name. Between them is a document of another one, since the
// rows of one name that follow each other are taken for one document.
TEST_F(WorkFolderNamesakes, KeepTheirFilesWhenOneOfThemIsCalledAnotherWay) {
  Serve();
  const std::string first = DocumentOf(server(), "D1001").bytes;
  const std::string second = DocumentOf(server(), "D1028").bytes;
  const std::string secondFile = "fork%(0000100028).lxz";
  const Renaming renaming = {"\"welding manual.xml\"", "\"fork.lxz\"          "};
  const ProcessResult clone = RunWith("", {"clone", framePath}, {renaming});
  ASSERT_EQ(clone.status, 0) << clone.err;
  EXPECT_EQ(ReadFile(Fork()), first);
  EXPECT_EQ(ReadFile(Here("Frame/" + secondFile)), second);

  WriteFile(Here("Frame/" + secondFile), "mine");
  const std::vector<Renaming> later = {{"\"fork.lxz\"", "\"ford.lxz\""}, renaming};
  EXPECT_EQ(RunWith("Frame", {"st"}, later).out,
            "new\t\tB.1\t\tford.lxz\nmodified\tA.1\tA.1\t\t" + secondFile + "\ngone\tB.1\t\t\tfork.lxz\n");
  EXPECT_EQ(RunWith("Frame", {"pull"}, later).status, 0);
  EXPECT_EQ(ReadFile(Fork()), first);
  EXPECT_EQ(ReadFile(Here("Frame/ford.lxz")), first);
  EXPECT_EQ(ReadFile(Here("Frame/" + secondFile)), "mine");
  EXPECT_THAT(RunWith("Frame", {"log", secondFile}, later).out, testing::StartsWith("A.1\t"));
  EXPECT_EQ(RunWith("Frame", {"commit", "--dry-run"}, later).out, "would-commit\tA.1\t" + secondFile + "\n");
}

// A name with a dot in front is escaped on the disk.
TEST_F(WorkFolderNamesakes, AreDirectoriesOfOtherNamesThanTheirFolders) {
  Serve();
  const std::vector<Renaming> dotted = {{"\"Frame\"", "\".rame\""}};
  const ProcessResult clone = RunWith("", {"clone", bikePath, "Bike"}, dotted);
  ASSERT_EQ(clone.status, 0) << clone.err;
  ASSERT_TRUE(std::filesystem::exists(Here("Bike/%2erame/fork.lxz")));
  const ProcessResult result = RunWith("Bike", {"ls", "%2erame"}, dotted);
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, Run({"ls", framePath}).out);
}

}  // namespace vtdirect_test
