#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "tests/e2e/mount/mount_writing_fixture.h"

namespace vtdirect_test {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Not;

// Documents that are shown under another name than that in their paths: one beside a folder of its name, and one whose
// name is too long for a file.
class MountNames : public MountWriting {
 protected:
  static constexpr const char* root = "Products/Bike/Folders/";

  static std::string LongName() { return std::string(300, 'n') + ".lxz"; }
  static std::string LongPath() { return "//sim/" + std::string(frameFolder) + LongName(); }
  static std::string PathBeside() { return "//sim/" + std::string(root) + "Frame"; }
  void ServeLongName() {
    Serve();
    WriteFile(Here("a"), "FENLET before\n");
    ASSERT_EQ(Run({"put", "-q", "a", LongPath()}).err, "");
    ASSERT_EQ(Run({"checkout", "-q", LongPath()}).err, "");
  }
  void ServeDocumentBesideFolder() {
    WriteFile(Here("state.yaml"),
              "contexts: [{name: Bike, folders: [{name: Default, folders: [Frame]}]}]\n"
              "documents:\n"
              "  - {cadName: Frame, folder: Bike/Default, content: FENLET before}\n"
              "  - {cadName: fork.lxz, folder: Bike/Default/Frame, content: FENLET fork}\n");
    Serve({"--seed", "file:" + Here("state.yaml")});
    ASSERT_EQ(Run({"checkout", "-q", PathBeside()}).err, "");
  }
  [[nodiscard]] std::string LongFile() const {
    for (const std::string& name : Names(Tree(frameFolder))) {
      if (name.starts_with("nnn")) return Tree(frameFolder + name);
    }
    return "";
  }
  [[nodiscard]] std::string FileBeside() const { return Tree(std::string(root) + "Frame~"); }
};

TEST_F(MountNames, ThatAreCutAreThoseOfTheirDocumentsInARename) {
  ServeLongName();
  Mount({"--write"});
  const std::string file = LongFile();
  EXPECT_EQ(Shell("sed -i s/before/after/ '" + file + "'").err, "");
  EXPECT_EQ(OnServer(LongPath()), "FENLET after\n");
  EXPECT_EQ(Text(file), "FENLET after\n");
  EXPECT_THAT(Names(Tree(frameFolder)), testing::SizeIs(4));
  EXPECT_EQ(Run({"ls", "//sim/" + std::string(frameFolder)}).out,
            "fork.lxz\nframe.lxz\nwelding manual.xml\n" + LongName() + "\n");
  EXPECT_THAT(Names(Unstored()), IsEmpty());
}

TEST_F(MountNames, ThatAreCutAreFreeWhenTheirDocumentIsPutAside) {
  ServeLongName();
  Mount({"--write"});
  const std::string file = LongFile();
  const std::string backup = Tree(frameFolder) + "backup~";
  ASSERT_EQ(rename(file.c_str(), backup.c_str()), 0);
  EXPECT_EQ(open(file.c_str(), O_RDONLY | O_CLOEXEC), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(LongFile(), "");
  EXPECT_EQ(Shell("printf 'FENLET after\\n' >'" + file + "'").err, "");
  EXPECT_EQ(OnServer(LongPath()), "FENLET after\n");
  EXPECT_EQ(Text(backup), "FENLET before\n");
}

TEST_F(MountNames, BesideAFolderAreThoseOfTheirDocumentsInARename) {
  ServeDocumentBesideFolder();
  Mount({"--write"});
  ASSERT_THAT(Names(Tree(root)), Contains("Frame~"));
  EXPECT_EQ(Shell("sed -i s/before/after/ '" + FileBeside() + "'").err, "");
  EXPECT_EQ(OnServer(PathBeside()), "FENLET after");
  EXPECT_EQ(Text(FileBeside()), "FENLET after");
}

TEST_F(MountNames, OfAFolderStayItsOwnWhileADocumentOfItsNameWaits) {
  ServeDocumentBesideFolder();
  port_ = AtItsPort();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write", "--refresh", "0"});
  WriteFile(Here("edited"), "waiting");
  EXPECT_NE(Shell("cp edited '" + FileBeside() + "'").status, 0);
  EXPECT_TRUE(std::filesystem::is_directory(Tree(std::string(root) + "Frame")));
  EXPECT_EQ(Text(Tree(std::string(root) + "Frame/fork.lxz")), "FENLET fork");
  EXPECT_EQ(Text(FileBeside()), "waiting");
  // The next mount has seen no listing yet.
  ASSERT_EQ(Run({"unmount", Tree()}).status, 0);
  EXPECT_EQ(WaitForMount().status, 0);
  Mount({"--write"});
  EXPECT_EQ(Text(Tree(std::string(root) + "Frame/fork.lxz")), "FENLET fork");
  EXPECT_EQ(Text(FileBeside()), "waiting");
  EXPECT_THAT(Names(Tree(root)), Not(Contains("Frame~~")));
}

}  // namespace
}  // namespace vtdirect_test
