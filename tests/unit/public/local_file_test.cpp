#include "public/vt_direct_utils.h"

#include <stdlib.h>

#include <filesystem>

#include "tests/support/temporary_directory.h"
#include "tests/unit/public/fake_server.h"

namespace {

using namespace VtDirectUtils;
using namespace vtdirect_test;

class LocalFiles : public FakeServerTest {
 protected:
  LocalFiles() {
    answers.downloaded.id = "D1";
    answers.downloaded.cadName = "fork.lxz";
  }

  TemporaryDirectory directory;
};

using Holder = LocalFiles;
using LocalCopy = LocalFiles;

TEST_F(Holder, OfAHostsOwnFileLeavesItAlone) {
  WriteFile(directory.File("own"), "content");
  {
    LocalFileHolder holder(directory.File("own"), "", false);
    EXPECT_EQ(holder.GetLocalPath(), directory.File("own"));
    EXPECT_FALSE(holder.IsTemporary());
  }
  { const LocalFileHolder holder(directory.File("own"), "", true); }
  EXPECT_EQ(directory.Entries(), Lines{"own"});
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(Holder, RemovesAFile) {
  WriteFile(directory.File("copy"), "content");
  {
    LocalFileHolder holder(directory.File("copy"), directory.File("copy"), false);
    EXPECT_TRUE(holder.IsTemporary());
  }
  EXPECT_TRUE(directory.Entries().empty());
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(Holder, RemovesADirectoryWithWhatIsInIt) {
  std::filesystem::create_directories(directory.File("d/e"));
  WriteFile(directory.File("d/e/f"), "content");
  { const LocalFileHolder holder(directory.File("d/e/f"), directory.File("d"), true); }
  EXPECT_TRUE(directory.Entries().empty());
}

TEST_F(Holder, CopiesItsArguments) {
  std::string localPath = directory.File("own");
  LocalFileHolder holder(localPath, "", false);
  localPath.assign(localPath.size(), 'x');
  EXPECT_EQ(holder.GetLocalPath(), directory.File("own"));
}

TEST_F(Holder, TracesAFileThatItCannotRemove) {
  const std::string path = directory.File("missing");
  { const LocalFileHolder holder(path, path, false); }
  EXPECT_EQ(trace.lines(),
            (Traces{{3, "VtDirectUtils", "Failed to unlink file " + path + ": No such file or directory"}}));
}

TEST_F(Holder, TracesADirectoryThatItCannotRemove) {
  const std::string path = directory.File("missing");
  { const LocalFileHolder holder(path, path, true); }
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirectUtils", "Failed to delete path " + path}}));
}

TEST_F(Holder, RemovesNoDirectoryThatItTakesForAFile) {
  std::filesystem::create_directory(directory.File("d"));
  { const LocalFileHolder holder(directory.File("d"), directory.File("d"), false); }
  EXPECT_EQ(directory.Entries(), Lines{"d"});
  ASSERT_EQ(trace.lines().size(), 1u);
  EXPECT_TRUE(trace.lines().front().text.starts_with("Failed to unlink file " + directory.File("d") + ": "));
}

TEST_F(LocalCopy, LiesUnderItsEscapedNameInADirectoryOfItsOwn) {
  const auto holder = GetLocalFile("korvufenloom-vt://plm.example/vt/?id=D1&file=/a%7C%2Fb%20c.lxz");
  ASSERT_NE(holder, nullptr);
  const auto entries = directory.Entries();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_TRUE(entries.front().starts_with("fenloom")) << entries.front();
  EXPECT_TRUE(std::filesystem::is_directory(directory.File(entries.front())));
  EXPECT_EQ(holder->GetLocalPath(), directory.File(entries.front()) + "/a%7c%2fb c.lxz");
  EXPECT_TRUE(holder->IsTemporary());
  EXPECT_EQ(answers.calls, Lines{"GetFile(D1 " + holder->GetLocalPath() + ")"});
}

TEST_F(LocalCopy, GoesWithItsDirectory) {
  auto holder = GetLocalFile("korvufenloom-vt://plm.example/vt/?id=D1&file=/a");
  ASSERT_NE(holder, nullptr);
  WriteFile(holder->GetLocalPath(), "content");
  holder.reset();
  EXPECT_TRUE(directory.Entries().empty());
  for (const TraceLine& line : trace.lines()) EXPECT_EQ(line.type, 0) << line.text;
}

TEST_F(LocalCopy, ThatFailsLeavesNothingBehind) {
  answers.downloads = false;
  EXPECT_EQ(GetLocalFile("korvufenloom-vt://plm.example/vt/?id=D1&file=/a"), nullptr);
  EXPECT_TRUE(directory.Entries().empty());
}

TEST_F(LocalCopy, OfAnUnknownServerLeavesNothingBehind) {
  EXPECT_EQ(GetLocalFile("korvufenloom-vfs://nobody/a"), nullptr);
  EXPECT_TRUE(directory.Entries().empty());
}

// There is no holder yet that would remove the directory. That is how GetLocalFile works.
TEST_F(LocalCopy, WithoutANameLeavesItsDirectoryBehind) {
  EXPECT_EQ(GetLocalFile("korvufenloom-vfs://plm/P/C/F/a/"), nullptr);
  EXPECT_EQ(directory.Entries().size(), 1u);
  EXPECT_EQ(GetLocalFile("//plm/missing"), nullptr);
  EXPECT_EQ(directory.Entries().size(), 2u);
  for (const std::string& entry : directory.Entries()) EXPECT_TRUE(entry.starts_with("fenloom")) << entry;
}

TEST_F(LocalCopy, NeedsATemporaryDirectoryAndAsksNothingWithoutOne) {
  setenv("TMPDIR", directory.File("missing").c_str(), 1);
  EXPECT_EQ(GetLocalFile("korvufenloom-vt://plm.example/vt/?id=D1&file=/a"), nullptr);
  EXPECT_TRUE(answers.calls.empty());
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(LocalCopy, TakesItsNameFromTheServerWhenTheAddressHoldsNone) {
  answers.infos["D1"].cadName = "f?g";
  const auto holder = GetLocalFile("korvufenloom-vt://plm.example/vt/?id=D1");
  ASSERT_NE(holder, nullptr);
  EXPECT_TRUE(holder->GetLocalPath().ends_with("/f%3fg")) << holder->GetLocalPath();
}

TEST_F(LocalCopy, TracesTheDownload) {
  const char* uid = "korvufenloom-vt://plm.example/vt/?id=D1&file=/a";
  const auto holder = GetLocalFile(uid);
  EXPECT_EQ(trace.lines(), (Traces{{0, "VtDirect", std::string("Downloading ") + uid + "\n"},
                                   {0, "VtDirect", std::string("Downloading ") + uid + " succeeded\n"}}));
}

// A name that leads out of the directory is no way out: the file cannot be opened there.
TEST_F(LocalCopy, OfANameThatIsADirectoryStaysInsideOfItsOwn) {
  const auto holder = GetLocalFile("korvufenloom-vt://plm.example/vt/?id=D1&file=/..%2F..%2Fetc");
  ASSERT_NE(holder, nullptr);
  EXPECT_TRUE(holder->GetLocalPath().ends_with("/..%2f..%2fetc")) << holder->GetLocalPath();
}

}  // namespace
