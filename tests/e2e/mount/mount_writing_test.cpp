#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "tests/e2e/mount/mount_writing_fixture.h"

namespace vtdirect_test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST_F(MountWriting, StoresACheckedOutDocumentWhenItIsClosed) {
  MountAndCheckOut();
  const std::string before = server().Get(forkContent);
  EXPECT_EQ(Text(Fork()), before);
  EXPECT_EQ(Shell("printf 'FENLET edited\\n' >\"$TREE/" + std::string(forkAddress) + "\"").err, "");
  EXPECT_EQ(Text(Fork()), "FENLET edited\n");
  EXPECT_EQ(OnServer(Path()), "FENLET edited\n");
  EXPECT_EQ(Shell("printf 'more\\n' >>\"$TREE/" + std::string(forkAddress) + "\"").err, "");
  EXPECT_EQ(OnServer(Path()), "FENLET edited\nmore\n");
  EXPECT_THAT(Names(Unstored()), IsEmpty());
  // The check-in stays a decision.
  EXPECT_EQ(server().Get(forkContent), before);
  ASSERT_EQ(Run({"checkin", "-q", Fork()}).status, 0);
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_EQ(Text(Fork()), "FENLET edited\nmore\n");
  EXPECT_EQ(open(Fork().c_str(), O_WRONLY | O_CLOEXEC), -1);
}

TEST_F(MountWriting, RefusesADocumentThatIsNotCheckedOut) {
  Serve();
  Mount({"--write"});
  struct stat status = {};
  ASSERT_EQ(stat(Fork().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode, S_IFREG | 0444U);
  EXPECT_EQ(open(Fork().c_str(), O_WRONLY | O_CLOEXEC), -1);
  EXPECT_EQ(errno, EACCES);
  EXPECT_EQ(Shell("cd \"$TREE/" + std::string(frameFolder) + "\" && sed -i s/fork/FORK/ fork.lxz").status, 4);
  EXPECT_EQ(Text(Fork()), server().Get(forkContent));
}

TEST_F(MountWriting, ChecksOutByItselfWhenToldTo) {
  Serve();
  Mount({"--write", "--auto-checkout"});
  EXPECT_EQ(Shell("printf 'FENLET edited\\n' >\"$TREE/" + std::string(forkAddress) + "\"").err, "");
  EXPECT_EQ(OnServer(Path()), "FENLET edited\n");
  EXPECT_THAT(Run({"checkouts"}).out, HasSubstr("fork.lxz"));
}

// What the mount has seen of the document before may be older than what it checks out.
TEST_F(MountWriting, BeginsWithTheIterationThatItChecksOut) {
  Serve();
  Mount({"--write", "--auto-checkout", "--refresh", "3600"});
  EXPECT_EQ(Text(Fork()), server().Get(forkContent));
  WriteFile(Here("edited"), "FENLET of a colleague\n");
  CheckOut();
  ASSERT_EQ(Run({"put", "-q", "edited", Path()}).status, 0);
  ASSERT_EQ(Run({"checkin", "-q", Path()}).status, 0);
  EXPECT_EQ(Shell("printf 'more\\n' >>\"$TREE/" + std::string(forkAddress) + "\"").err, "");
  EXPECT_EQ(OnServer(Path()), "FENLET of a colleague\nmore\n");
}

TEST_F(MountWriting, ShowsWhatIsWrittenAfterADuplicateWasClosed) {
  MountAndCheckOut();
  const int descriptor = open(Fork().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  ASSERT_GE(descriptor, 0);
  ASSERT_EQ(write(descriptor, "one\n", 4), 4);
  EXPECT_EQ(close(dup(descriptor)), 0);
  EXPECT_EQ(OnServer(Path()), "one\n");
  EXPECT_EQ(write(descriptor, "two\n", 4), 4);
  EXPECT_EQ(Text(Fork()), "one\ntwo\n");
  EXPECT_EQ(close(descriptor), 0);
  EXPECT_EQ(OnServer(Path()), "one\ntwo\n");
}

// What is put by somebody else shows after a while, and what is appended comes after all of it.
TEST_F(MountWriting, AppendsAfterWhatSomebodyElseHasPut) {
  Serve();
  CheckOut();
  Mount({"--write", "--refresh", "3600"});
  for (const std::string& put : {std::string(9000, 'l'), std::string("short")}) {
    EXPECT_GT(Shell("stat -c %s '" + Fork() + "'").out.size(), 1U);
    WriteFile(Here("put"), put);
    ASSERT_EQ(Run({"put", "-q", "put", Path()}).status, 0);
    EXPECT_EQ(Shell("(printf one; printf two) >>'" + Fork() + "'").err, "");
    EXPECT_EQ(OnServer(Path()), put + "onetwo");
    EXPECT_EQ(Text(Fork()), put + "onetwo");
  }
}

TEST_F(MountWriting, KnowsTheLengthOfWhatIsOpenedForWriting) {
  Serve();
  CheckOut();
  Mount({"--write", "--refresh", "3600"});
  struct stat status = {};
  ASSERT_EQ(stat(Fork().c_str(), &status), 0);
  WriteFile(Here("put"), std::string(9000, 'l'));
  ASSERT_EQ(Run({"put", "-q", "put", Path()}).status, 0);
  const int descriptor = open(Fork().c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(descriptor, 0);
  EXPECT_EQ(lseek(descriptor, 0, SEEK_END), 9000);
  EXPECT_EQ(close(descriptor), 0);
}

TEST_F(MountWriting, StoresWhatTwoProgramsWriteToOneDocument) {
  MountAndCheckOut();
  const int one = open(Fork().c_str(), O_RDWR | O_TRUNC | O_CLOEXEC);
  const int other = open(Fork().c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(one, 0);
  ASSERT_GE(other, 0);
  EXPECT_EQ(pwrite(one, "one ", 4, 0), 4);
  EXPECT_EQ(pwrite(other, "other ", 6, 4), 6);
  EXPECT_EQ(close(one), 0);
  EXPECT_EQ(OnServer(Path()), "one other ");
  EXPECT_EQ(pwrite(other, "more", 4, 10), 4);
  EXPECT_EQ(close(other), 0);
  EXPECT_EQ(OnServer(Path()), "one other more");
}

TEST_F(MountWriting, MakesANewFileADocument) {
  Serve();
  Mount({"--write"});
  WriteFile(Here("new.lxz"), "FENLET new\n");
  EXPECT_EQ(Shell("cp new.lxz \"$TREE/" + std::string(frameFolder) + "\"").err, "");
  EXPECT_EQ(Text(Tree(std::string(frameFolder) + "new.lxz")), "FENLET new\n");
  EXPECT_EQ(OnServer("//sim/" + std::string(frameFolder) + "new.lxz"), "FENLET new\n");
  EXPECT_THAT(Names(Tree(frameFolder)), Contains("new.lxz"));
  // There is no place for a document among the contexts.
  EXPECT_NE(Shell("cp new.lxz \"$TREE/Products/\"").status, 0);
  EXPECT_THAT(Names(Unstored()), IsEmpty());
}

TEST_F(MountWriting, StoresAFileThatSeveralProcessesWriteWhenTheLastHasClosedIt) {
  Serve();
  Mount({"--write"});
  const std::string line =
      "(/bin/echo one; /bin/echo two) >\"$TREE/" + std::string(frameFolder) + "new.lxz\"";
  EXPECT_EQ(Shell(line).err, "");
  EXPECT_EQ(OnServer("//sim/" + std::string(frameFolder) + "new.lxz"), "one\ntwo\n");
  EXPECT_THAT(Names(Unstored()), IsEmpty());
}

// The program that opened it goes on to have it open, as a shell does after "exec 3>FILE".
TEST_F(MountWriting, SaysThatAFileWaitsForTheProgramThatOpenedIt) {
  Serve();
  Mount({"--write", "--log", Home("log")});
  const std::string made = Tree(std::string(frameFolder) + "new.lxz");
  const int descriptor = open(made.c_str(), O_WRONLY | O_CREAT, 0644);
  ASSERT_GE(descriptor, 0);
  EXPECT_EQ(Shell("/bin/echo one >&" + std::to_string(descriptor)).err, "");
  EXPECT_THAT(ReadFile(Home("log")),
              HasSubstr("new.lxz is stored when the last program that has it open closes it"));
  EXPECT_THAT(Run({"recover"}).out, HasSubstr("not closed"));
  EXPECT_EQ(Text(made), "one\n");
  EXPECT_EQ(close(descriptor), 0);
  EXPECT_EQ(OnServer("//sim/" + std::string(frameFolder) + "new.lxz"), "one\n");
}

// A shell closes a duplicate after each line. The document is made of the first, and gets the others in one iteration.
TEST_F(MountWriting, StoresAgainWhatItHasMadeADocumentOf) {
  Serve();
  Mount({"--write"});
  const std::string document = "//sim/" + std::string(frameFolder) + "new.lxz";
  EXPECT_EQ(Shell("exec 3>'" + Tree(std::string(frameFolder) + "new.lxz") +
                  "'; echo one >&3; echo two >&3; echo three >&3; exec 3>&-")
                .err,
            "");
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  EXPECT_EQ(OnServer(document), "one\ntwo\nthree\n");
  EXPECT_EQ(Shell("ls '" + Tree(std::string(frameFolder) + ".versions/new.lxz") + "' | wc -l").out, "2\n");
}

// Somebody else has made an iteration of it meanwhile, which must stay the newest.
TEST_F(MountWriting, StoresNothingOverANewerIterationOfWhatItHasMade) {
  Serve();
  Mount({"--write"});
  const std::string document = "//sim/" + std::string(frameFolder) + "new.lxz";
  const std::string made = Tree(std::string(frameFolder) + "new.lxz");
  const int descriptor = open(made.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
  ASSERT_GE(descriptor, 0);
  ASSERT_EQ(write(descriptor, "one\n", 4), 4);
  ASSERT_EQ(close(dup(descriptor)), 0);
  WriteFile(Here("newer"), "FENLET newer\n");
  ASSERT_EQ(Run({"put", "-q", "newer", document}).status, 0);
  ASSERT_EQ(write(descriptor, "two\n", 4), 4);
  ASSERT_EQ(close(descriptor), 0);
  EXPECT_TRUE(
      WaitUntil([this] { return Run({"recover"}).out.find("not checked out here") != std::string::npos; }));
  EXPECT_EQ(OnServer(document), "FENLET newer\n");
}

TEST_F(MountWriting, MakesNoIterationOfADocumentThatIsNotCheckedOutAnyMore) {
  MountAndCheckOut();
  const int descriptor = open(Fork().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  ASSERT_GE(descriptor, 0);
  ASSERT_EQ(write(descriptor, "FENLET edited\n", 14), 14);
  ASSERT_EQ(Run({"undo", "-q", Path()}).status, 0);
  EXPECT_EQ(close(descriptor), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_THAT(OnServer(Path()), testing::StartsWith(forkHead));
  EXPECT_THAT(Run({"recover"}).out, HasSubstr("not checked out"));
}

TEST_F(MountWriting, LetsSedEditInPlace) {
  MountAndCheckOut();
  WriteFile(Here("local.lxz"), server().Get(forkContent));
  const auto result = Shell("sed -i s/fork/FORK/ local.lxz \"$TREE/" + std::string(forkAddress) + "\"");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(Text(Fork()), ReadFile(Here("local.lxz")));
  EXPECT_EQ(OnServer(Path()), ReadFile(Here("local.lxz")));
  EXPECT_THAT(Names(Unstored()), IsEmpty());
}

TEST_F(MountWriting, LetsVimEdit) {
  if (Shell("command -v vim").status != 0) GTEST_SKIP() << "there is no vim";
  MountAndCheckOut();
  WriteFile(Here("local.lxz"), server().Get(forkContent));
  const auto result = Shell("vim -es -u NONE -c '%s/fork/FORK/' -c 'wq' \"$TREE/" + std::string(forkAddress) +
                            "\" && vim -es -u NONE -c '%s/fork/FORK/' -c 'wq' local.lxz");
  EXPECT_EQ(result.status, 0) << result.err << result.out;
  EXPECT_THAT(ReadFile(Here("local.lxz")), HasSubstr("FORK"));
  EXPECT_EQ(OnServer(Path()), ReadFile(Here("local.lxz")));
  EXPECT_THAT(Names(Tree(frameFolder)), testing::ElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
}

TEST_F(MountWriting, LetsRsyncRenameItsFileOntoADocument) {
  if (Shell("command -v rsync").status != 0) GTEST_SKIP() << "there is no rsync";
  MountAndCheckOut();
  WriteFile(Here("fork.lxz"), "FENLET by rsync\n");
  const auto result = Shell("rsync fork.lxz \"$TREE/" + std::string(forkAddress) + "\"");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(OnServer(Path()), "FENLET by rsync\n");
}

TEST_F(MountWriting, KeepsScratchFilesOnThisMachine) {
  Serve();
  Mount({"--write", "--scratch", "*.wip"});
  const auto result =
      Shell("cd \"$TREE/" + std::string(frameFolder) +
            "\" && echo 1 >.a.swp && echo 2 >a.lxz~ && echo 3 >a.wip && cat .a.swp a.lxz~ a.wip && "
            "mv a.wip b.wip && ls -A && rm .a.swp a.lxz~ b.wip && ls -A | wc -l");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "1\n2\n3\n.a.swp\na.lxz~\nb.wip\nfork.lxz\nframe.lxz\nwelding manual.xml\n3\n");
  EXPECT_EQ(Run({"ls", "//sim/" + std::string(frameFolder)}).out,
            "fork.lxz\nframe.lxz\nwelding manual.xml\n");
  EXPECT_EQ(Asked("POST"), 0U);
}

TEST_F(MountWriting, BringsDocumentsToTheServerWhoseNamesLookLikeThoseOfPrograms) {
  Serve();
  Mount({"--write"});
  for (const char* name : {"sediments", ".project.config", "4913"}) {
    EXPECT_EQ(Shell("cp /etc/hostname '" + Tree(std::string(frameFolder) + name) + "'").err, "") << name;
    EXPECT_EQ(OnServer("//sim/" + std::string(frameFolder) + name), ReadFile("/etc/hostname")) << name;
  }
}

TEST_F(MountWriting, StoresWhatIsRenamedOntoADocumentWhoseNameLooksLikeAProgramsFile) {
  Serve();
  const std::string plan = "//sim/" + std::string(frameFolder) + "plan.tmp";
  WriteFile(Here("a"), "FENLET plan\n");
  ASSERT_EQ(Run({"put", "-q", "a", plan}).status, 0);
  ASSERT_EQ(Run({"checkout", "-q", plan}).status, 0);
  Mount({"--write"});
  const std::string tree = Tree(std::string(frameFolder) + "plan.tmp");
  EXPECT_EQ(Shell("printf edited >'" + tree + "~' && mv '" + tree + "~' '" + tree + "'").err, "");
  EXPECT_EQ(OnServer(plan), "edited");
}

TEST_F(MountWriting, StoresWhatEditorsKeepHereWhenToldTo) {
  Serve();
  Mount({"--write", "--no-usual-scratch", "--scratch", "*.wip"});
  const std::string frame = Tree(frameFolder);
  EXPECT_EQ(Shell("cp /etc/hostname '" + frame + "a~' && cp /etc/hostname '" + frame + "a.wip'").err, "");
  EXPECT_EQ(OnServer("//sim/" + std::string(frameFolder) + "a~"), ReadFile("/etc/hostname"));
  EXPECT_EQ(Run({"ls", "//sim/" + std::string(frameFolder)}).out,
            "fork.lxz\nframe.lxz\nwelding manual.xml\na~\n");
}

TEST_F(MountWriting, RenamesToAFreeNameAloneWhenToldSo) {
  Serve();
  Mount({"--write"});
  ASSERT_EQ(Shell("cd \"$TREE/" + std::string(frameFolder) + "\" && echo 1 >a~ && echo 2 >b~").err, "");
  const auto rename = [](const std::string& from, const std::string& to) {
    return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0 ? 0 : errno;
  };
  const std::string frame = Tree(frameFolder);
  EXPECT_EQ(rename(frame + "a~", frame + "b~"), EEXIST);
  EXPECT_EQ(rename(frame + "a~", frame + "fork.lxz"), EEXIST);
  EXPECT_EQ(rename(frame + "a~", frame + "c~"), 0);
  EXPECT_EQ(Text(frame + "c~"), "1\n");
}

TEST_F(MountWriting, RefusesWhatTheServerDoesNotHave) {
  MountAndCheckOut();
  const std::string frame = Tree(std::string(frameFolder) + "frame.lxz");
  const std::string other = Tree(std::string(frameFolder) + "other.lxz");
  const auto error = [](int result) { return result == 0 ? 0 : errno; };
  EXPECT_EQ(error(unlink(frame.c_str())), EPERM);
  EXPECT_EQ(error(rename(frame.c_str(), other.c_str())), EPERM);
  EXPECT_EQ(error(chmod(frame.c_str(), 0600)), EPERM);
  EXPECT_EQ(error(mkdir(other.c_str(), 0700)), EPERM);
  EXPECT_EQ(error(rmdir(Tree(frameFolder).c_str())), EPERM);
  EXPECT_EQ(error(symlink("a", other.c_str())), EPERM);
  EXPECT_EQ(error(link(frame.c_str(), other.c_str())), EPERM);
  EXPECT_EQ(error(truncate(frame.c_str(), 0)), EACCES);
  EXPECT_THAT(Names(Tree(frameFolder)), Not(Contains("other.lxz")));
}

TEST_F(MountWriting, StoresALengthThatIsGivenToADocumentByItsName) {
  MountAndCheckOut();
  EXPECT_EQ(truncate(Fork().c_str(), 6), 0);
  EXPECT_EQ(OnServer(Path()), "FENLET");
  EXPECT_EQ(truncate(Fork().c_str(), 0), 0);
  EXPECT_EQ(OnServer(Path()), "");
  EXPECT_EQ(Text(Fork()), "");
  EXPECT_THAT(Names(Unstored()), IsEmpty());
}

TEST_F(MountWriting, KeepsWhatItCouldNotStoreAndTriesAgain) {
  Serve();
  CheckOut();
  const auto port = AtItsPort();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write"});
  const int descriptor = open(Fork().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  ASSERT_GE(descriptor, 0);
  ASSERT_EQ(write(descriptor, "FENLET edited\n", 14), 14);
  EXPECT_EQ(close(descriptor), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(Text(Fork()), "FENLET edited\n");
  const auto listed = Run({"recover"});
  EXPECT_EQ(listed.status, 11);
  EXPECT_THAT(listed.out, HasSubstr("mount\t" + Path()));
  Serve(port);
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  EXPECT_EQ(OnServer(Path()), "FENLET edited\n");
}

TEST_F(MountWriting, TellsAtASyncThatWhatWasClosedCouldNotBeStored) {
  MountAndCheckOut();
  const auto port = AtItsPort();
  const int opened = open(Fork().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  ASSERT_GE(opened, 0);
  StopServer();
  ASSERT_EQ(write(opened, "one\n", 4), 4);
  EXPECT_EQ(fsync(opened), 0) << "it was not tried to store it";
  EXPECT_EQ(close(dup(opened)), -1);
  EXPECT_EQ(fsync(opened), -1);
  EXPECT_EQ(errno, EIO);
  ASSERT_EQ(write(opened, "two\n", 4), 4);
  EXPECT_EQ(fsync(opened), 0);
  Serve(port);
  EXPECT_EQ(close(opened), 0);
  EXPECT_EQ(OnServer(Path()), "one\ntwo\n");
}

TEST_F(MountWriting, StoresAfterAKillWhatWasClosedBefore) {
  Serve();
  CheckOut();
  const auto port = AtItsPort();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write"});
  EXPECT_NE(Shell("cp /etc/hostname \"$TREE/" + std::string(forkAddress) + "\"").status, 0);
  // One that was not closed is told of, and not stored.
  const int half =
      ::open(Tree(std::string(frameFolder) + "half.lxz").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_GE(half, 0);
  ASSERT_EQ(write(half, "half", 4), 4);
  SignalMount(SIGKILL);
  EXPECT_EQ(WaitForMount().status, -SIGKILL);
  close(half);
  Serve(port);
  EXPECT_EQ(Run({"recover"}).status, 11);
  Mount({"--write"});
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).size() == 2; }));
  EXPECT_EQ(OnServer(Path()), ReadFile("/etc/hostname"));
  EXPECT_THAT(Run({"recover"}).out, HasSubstr("half.lxz"));
  EXPECT_THAT(Names(Tree(frameFolder)), Not(Contains("half.lxz")));
  EXPECT_EQ(Shell("rm -rf \"$(dirname ~)\"/temporary/vtdirect-*; ls \"$TREE\" >/dev/null").status, 0);
}

}  // namespace
}  // namespace vtdirect_test
