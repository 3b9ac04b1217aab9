#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tests/e2e/mount/mount_writing_fixture.h"

namespace vtdirect_test {
namespace {

using testing::ElementsAre;

// What editors do when they save: each ends with its text on the server, and with nothing else there.
class Editors : public MountWriting {
 protected:
  void ExpectStored(const std::string& text) {
    EXPECT_EQ(OnServer(Path()), text);
    EXPECT_EQ(Text(Fork()), text);
    EXPECT_EQ(Run({"ls", "//sim/" + std::string(frameFolder)}).out,
              "fork.lxz\nframe.lxz\nwelding manual.xml\n");
    EXPECT_EQ(Run({"recover"}).out, "");
  }
  // The content of the fork with "EDITED " before its first line.
  [[nodiscard]] std::string Edited() const { return "EDITED " + server().Get(forkContent); }
  [[nodiscard]] ProcessResult Emacs(const std::string& settings) {
    return Shell(
        "emacs -Q --batch --eval '(progn (setq make-backup-files t backup-enable-predicate (lambda (_) t)) " +
        settings + " (find-file \"'\"$TREE/" + std::string(forkAddress) +
        "\"'\") (insert \"EDITED \") (save-buffer))'");
  }
  // nano wants a terminal. Keys are pressed when it has read the file.
  [[nodiscard]] ProcessResult Nano(const std::string& options) {
    return Shell(
        "(for i in $(seq 500); do grep -q 'Read .* lines' screen 2>/dev/null && break; sleep 0.02; done; "
        "printf 'EDITED \\017\\r\\030') | TERM=xterm script -qefc \"nano --ignorercfiles " +
        options + " '$TREE/" + std::string(forkAddress) + "'\" screen");
  }
  [[nodiscard]] static int Make(const std::string& file, const std::string& text, int flags) {
    const int descriptor = open(file.c_str(), flags | O_CLOEXEC, 0600);
    if (descriptor < 0) return errno;
    const bool isWritten = write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    const int error = !isWritten || fsync(descriptor) != 0 ? errno : 0;
    return close(descriptor) != 0 && error == 0 ? errno : error;
  }
};

TEST_F(Editors, EmacsMakesABackupByRenaming) {
  if (Shell("command -v emacs").status != 0) GTEST_SKIP() << "there is no emacs";
  MountAndCheckOut();
  const auto result = Emacs("(setq backup-by-copying nil)");
  EXPECT_EQ(result.status, 0) << result.err;
  ExpectStored(Edited());
  // The backup is there until the mount ends, and on this machine alone.
  EXPECT_EQ(Text(Fork() + "~"), server().Get(forkContent));
}

TEST_F(Editors, EmacsMakesABackupByCopying) {
  if (Shell("command -v emacs").status != 0) GTEST_SKIP() << "there is no emacs";
  MountAndCheckOut();
  const auto result = Emacs("(setq backup-by-copying t)");
  EXPECT_EQ(result.status, 0) << result.err;
  ExpectStored(Edited());
  EXPECT_EQ(Text(Fork() + "~"), server().Get(forkContent));
}

TEST_F(Editors, NanoWritesInPlace) {
  if (Shell("command -v nano && command -v script").status != 0) GTEST_SKIP() << "there is no nano";
  MountAndCheckOut();
  const auto result = Nano("");
  EXPECT_EQ(result.status, 0) << result.err << result.out;
  ExpectStored(Edited());
}

TEST_F(Editors, NanoMakesABackupAndALock) {
  if (Shell("command -v nano && command -v script").status != 0) GTEST_SKIP() << "there is no nano";
  MountAndCheckOut();
  const auto result = Nano("--backup --locking");
  EXPECT_EQ(result.status, 0) << result.err << result.out;
  ExpectStored(Edited());
  EXPECT_EQ(Text(Fork() + "~"), server().Get(forkContent));
  EXPECT_THAT(Names(Tree(frameFolder)),
              ElementsAre("fork.lxz", "fork.lxz~", "frame.lxz", "welding manual.xml"));
}

// The steps of LibreOffice, by their system calls: it is too large to be installed for a test.
TEST_F(Editors, PerlEditsInPlaceByRenaming) {
  if (Shell("command -v perl").status != 0) GTEST_SKIP() << "there is no perl";
  MountAndCheckOut();
  EXPECT_EQ(Shell("perl -pi -e 's/fork/FORK/' '" + Fork() + "'").err, "");
  EXPECT_THAT(OnServer(Path()), testing::HasSubstr("name FORK.lxz\n"));
  EXPECT_EQ(Run({"ls", "//sim/" + std::string(frameFolder)}).out,
            "fork.lxz\nframe.lxz\nwelding manual.xml\n");
}

TEST_F(Editors, PatchRenamesItsFileOntoTheDocument) {
  if (Shell("command -v patch").status != 0) GTEST_SKIP() << "there is no patch";
  MountAndCheckOut();
  WriteFile(Here("diff"),
            "--- a\n+++ b\n@@ -1,3 +1,3 @@\n FENLET DRAWING\n-name fork.lxz\n+name FORK.lxz\n version B.1\n");
  const auto result = Shell("patch '" + Fork() + "' <diff");
  EXPECT_EQ(result.status, 0) << result.out << result.err;
  EXPECT_THAT(OnServer(Path()), testing::HasSubstr("name FORK.lxz\n"));
  EXPECT_EQ(Run({"ls", "//sim/" + std::string(frameFolder)}).out,
            "fork.lxz\nframe.lxz\nwelding manual.xml\n");
}

TEST_F(Editors, LibreOfficeSavesByRenamingItsFileOntoTheDocument) {
  MountAndCheckOut();
  const std::string frame = Tree(frameFolder);
  const std::string lock = frame + ".~lock.fork.lxz#";
  const std::string temporary = frame + "lu4711ab.tmp";
  ASSERT_EQ(Make(lock, "anna,host;", O_RDWR | O_CREAT | O_EXCL), 0);
  // It opens the document for writing, locks it, reads it, and closes it unchanged.
  const int document = open(Fork().c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(document, 0) << errno;
  struct flock whole = {};
  whole.l_type = F_WRLCK;
  EXPECT_EQ(fcntl(document, F_SETLK, &whole), 0);
  char start[16] = "";
  EXPECT_EQ(pread(document, start, 14, 0), 14);
  EXPECT_STREQ(start, "FENLET DRAWING");
  const std::size_t before = Asked("\"method\":\"POST\"");
  EXPECT_EQ(close(document), 0);
  EXPECT_EQ(Asked("\"method\":\"POST\""), before);
  ASSERT_EQ(Make(temporary, "FENLET by office\n", O_RDWR | O_CREAT | O_EXCL), 0);
  ASSERT_EQ(chmod(temporary.c_str(), 0644), 0);
  ASSERT_EQ(rename(temporary.c_str(), Fork().c_str()), 0) << errno;
  ASSERT_EQ(unlink(lock.c_str()), 0);
  ExpectStored("FENLET by office\n");
  EXPECT_THAT(Names(frame), ElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
}

TEST_F(Editors, LibreOfficeSavesByABackupAndByWritingOverTheDocument) {
  MountAndCheckOut();
  const std::string backup = Tree(frameFolder) + "lu4711cd.tmp";
  ASSERT_EQ(Make(backup, Text(Fork()), O_RDWR | O_CREAT | O_EXCL), 0);
  const int document = open(Fork().c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(document, 0) << errno;
  ASSERT_EQ(ftruncate(document, 0), 0);
  ASSERT_EQ(pwrite(document, "FENLET by ", 10, 0), 10);
  ASSERT_EQ(pwrite(document, "office\n", 7, 10), 7);
  ASSERT_EQ(close(document), 0);
  ASSERT_EQ(unlink(backup.c_str()), 0);
  ExpectStored("FENLET by office\n");
  EXPECT_THAT(Names(Tree(frameFolder)), ElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
}

}  // namespace
}  // namespace vtdirect_test
