#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "tests/e2e/mount/mount_writing_fixture.h"

namespace vtdirect_test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// What a mount must not lose, and never sends half, whatever ends in the middle.
class MountLosses : public MountWriting {
 protected:
  // Starts a program that writes the fork anew, and returns when the server has got the content and is silent.
  [[nodiscard]] std::unique_ptr<Process> StoreThatTheServerIsSilentAbout() {
    const int admin = UnusedPort();
    Serve();
    CheckOut();
    port_ = AtItsPort();
    Serve(AtItsPort({"--fault", "POST *content/upload*=stall", "--admin-port", std::to_string(admin)}));
    Mount({"--write", "--stall-timeout", "20"});
    WriteFile(Here("edited"), "FENLET edited\n");
    auto writer = std::make_unique<Process>(std::vector<std::string>{"/bin/cp", Here("edited"), Fork()},
                                            ProcessOptions{});
    server().Control("GET", "/requests?path=*content/upload*&state=arrived&count=1&wait=10000");
    return writer;
  }
  // Starts a program that has the mount do something after that store, and interrupts it while it waits for that.
  [[nodiscard]] ProcessResult InterruptedWhileItWaits(const std::string& line) {
    Process program({"/bin/sh", "-c", "echo $$; exec " + line},
                    ProcessOptions{environment_, Here(""), "", 0});
    EXPECT_TRUE(WaitUntil([&] {
      const std::string number = program.OutputSoFar();
      if (!number.ends_with('\n')) return false;
      const std::string process = "/proc/" + number.substr(0, number.size() - 1);
      return ReadFile(process + "/comm") == line.substr(0, line.find(' ')) + "\n" &&
             ReadFile(process + "/wchan").find("request_wait") != std::string::npos;
    }));
    program.Signal(SIGINT);
    return program.Wait();
  }
  // A small disk in the place of a directory. False where this user can't mount one.
  [[nodiscard]] bool MountSmallDisk(const std::string& directory, const std::string& size) {
    return Shell("mkdir -p '" + directory + "' && mount -t tmpfs -o mode=700,size=" + size + " none '" +
                 directory + "'")
               .status == 0;
  }
  void EndMountAndSmallDisk(const std::string& directory) {
    SignalMount(SIGTERM);
    EXPECT_EQ(WaitForMount().status, 0);
    EXPECT_EQ(Shell("umount '" + directory + "'").status, 0);
  }
};

TEST_F(MountLosses, AServerKilledInTheMiddleOfAContentCostsTheReaderAloneAndOnce) {
  Serve();
  port_ = AtItsPort();
  Serve(AtItsPort({"--fault", "GET *10010/*=stall:100"}));
  const std::string content = server().Get("/servlet/rest/v1/content/streams/10020/frame.lxz");
  Mount();
  Process reader({"/bin/cat", Fork()}, ProcessOptions{});
  EXPECT_TRUE(WaitUntil([this] { return !Names(Cache() + "/parts").empty(); }));
  StopServer();
  const auto result = reader.Wait();
  EXPECT_NE(result.status, 0);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("Input/output error"));
  Serve(port_);
  EXPECT_TRUE(WaitUntil([this] { return ErrorOfReading(Fork()) == 0; }));
  EXPECT_EQ(Text(Fork()), server().Get(forkContent));
  EXPECT_EQ(Text(Tree(std::string(frameFolder) + "frame.lxz")), content);
}

TEST_F(MountLosses, AServerKilledInTheMiddleOfAStoreLeavesTheBytesWaiting) {
  const auto writer = StoreThatTheServerIsSilentAbout();
  StopServer();
  const auto result = writer->Wait();
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("Input/output error"));
  EXPECT_THAT(Run({"recover"}).out, HasSubstr("mount\t" + Path()));
  EXPECT_EQ(Text(Fork()), "FENLET edited\n");
  Serve(port_);
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  EXPECT_EQ(OnServer(Path()), "FENLET edited\n");
}

TEST_F(MountLosses, AMountKilledInTheMiddleOfAStoreIsRecovered) {
  const auto writer = StoreThatTheServerIsSilentAbout();
  SignalMount(SIGKILL);
  EXPECT_EQ(WaitForMount().status, -SIGKILL);
  static_cast<void>(writer->Wait());
  StopServer();
  Serve(port_);
  const auto listed = Run({"recover"});
  EXPECT_EQ(listed.status, 11);
  EXPECT_THAT(listed.out, HasSubstr("mount\t" + Path()));
  EXPECT_THAT(OnServer(Path()), testing::StartsWith(forkHead));
  Mount({"--write"});
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  EXPECT_EQ(OnServer(Path()), "FENLET edited\n");
  EXPECT_EQ(Run({"recover"}).status, 0);
  ClearAwayTemporaryFiles();
}

TEST_F(MountLosses, AStoreWaitsForAConnectionNoLongerThanItsMountAndForAnAnswerLonger) {
  const auto writer = StoreThatTheServerIsSilentAbout();
  std::string command;
  for (const std::string& process : Names("/proc")) {
    std::error_code ignored;
    if (!std::filesystem::exists("/proc/" + process + "/cmdline", ignored)) continue;
    const std::string words = ReadFile("/proc/" + process + "/cmdline");
    if (words.find(Unstored() + "/") != std::string::npos) command = words;
  }
  const std::string limit(
      "--connect-timeout\0"
      "10\0",
      21);
  EXPECT_THAT(command, HasSubstr(limit));
  EXPECT_THAT(command, Not(HasSubstr("--stall-timeout")));
  // The list of servers may have changed since the mount began, and is read by this process anew.
  EXPECT_THAT(command, HasSubstr("--server" + std::string(1, '\0') + "sim=" + ServerUrl()));
  StopServer();
  static_cast<void>(writer->Wait());
}

// Each was told that nothing was done.
TEST_F(MountLosses, ProgramsThatWereInterruptedBeforeHaveRenamedAndRemovedNothing) {
  const auto writer = StoreThatTheServerIsSilentAbout();
  const std::string frame = Tree(frameFolder);
  for (const char* name : {"one~", "two~", "last~"}) WriteFile(frame + name, name);
  EXPECT_EQ(InterruptedWhileItWaits("rm -f '" + frame + "one~'").status, -SIGINT);
  EXPECT_EQ(InterruptedWhileItWaits("mv '" + frame + "two~' '" + frame + "moved~'").status, -SIGINT);
  StopServer();
  static_cast<void>(writer->Wait());
  // What is asked for after them is done after them.
  EXPECT_EQ(unlink((frame + "last~").c_str()), 0);
  EXPECT_EQ(Text(frame + "one~"), "one~");
  EXPECT_EQ(Text(frame + "two~"), "two~");
  EXPECT_EQ(access((frame + "moved~").c_str(), F_OK), -1);
}

// An empty file is stored after its close, and here after the store that takes so long.
TEST_F(MountLosses, WhatWasClosedWhileAnotherIsStoredIsRecovered) {
  const auto writer = StoreThatTheServerIsSilentAbout();
  const std::string name = std::string(frameFolder) + "new.lxz";
  const int descriptor = open(Tree(name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_GE(descriptor, 0);
  ASSERT_EQ(close(descriptor), 0);
  EXPECT_TRUE(WaitUntil([this] {
    const std::string listed = Run({"recover"}).out;
    return listed.find("new.lxz") != std::string::npos && listed.find("was not closed") == std::string::npos;
  }));
  SignalMount(SIGKILL);
  EXPECT_EQ(WaitForMount().status, -SIGKILL);
  static_cast<void>(writer->Wait());
  StopServer();
  Serve(port_);
  Mount({"--write"});
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  EXPECT_EQ(Run({"info", "//sim/" + name}).status, 0);
  ClearAwayTemporaryFiles();
}

// The server has it, and the program was told that it failed.
TEST_F(MountLosses, ANewDocumentWhoseAnswerWasLostDoesNotWaitForGood) {
  Serve({"--fault", "POST *dkm/documents*=lost-answer*1"});
  Mount({"--write"});
  const std::string name = std::string(frameFolder) + "new.lxz";
  EXPECT_NE(Shell("printf 'FENLET new\\n' >new && cp new '" + Tree(name) + "'").status, 0);
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  EXPECT_EQ(OnServer("//sim/" + name), "FENLET new\n");
  EXPECT_EQ(Shell("ls '" + Tree(std::string(frameFolder) + ".versions/new.lxz") + "' | wc -l").out, "1\n");
}

// Somebody else has made a document of that name and length, with other bytes.
TEST_F(MountLosses, ANewFileWaitsWhenTheDocumentOfItsNameIsAnothers) {
  Serve();
  Mount({"--write"});
  const std::string name = std::string(frameFolder) + "new.lxz";
  const int descriptor = open(Tree(name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_GE(descriptor, 0);
  ASSERT_EQ(write(descriptor, "FENLET one\n", 11), 11);
  WriteFile(Here("other"), "FENLET two\n");
  ASSERT_EQ(Run({"put", "-q", "other", "//sim/" + name}).status, 0);
  EXPECT_EQ(close(descriptor), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_THAT(Run({"recover"}).out, HasSubstr("there is a document of that name by now"));
  EXPECT_EQ(OnServer("//sim/" + name), "FENLET two\n");
}

// The kernel tells of the last close late, or never when the mount ends before.
TEST_F(MountLosses, AMountThatEndsLeavesNothingOfWhatProgramsHaveOpen) {
  Serve();
  Mount({"--write"});
  const std::string backup = Tree(std::string(frameFolder) + "a~");
  ASSERT_EQ(Shell("printf backup >'" + backup + "'").err, "");
  const int file = open(backup.c_str(), O_RDONLY | O_CLOEXEC);
  const int document = open(Fork().c_str(), O_RDONLY | O_CLOEXEC);
  const int directory = open(Tree(frameFolder).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  SignalMount(SIGTERM);
  EXPECT_EQ(WaitForMount().status, 0);
  EXPECT_THAT(Names(Unstored()), IsEmpty());
  for (const int descriptor : {file, document, directory}) close(descriptor);
}

TEST_F(MountLosses, AFullDiskFailsTheWriterAndNothingHalfIsStored) {
  const std::string disk = Home(".local/state/vtdirect/unstored");
  Serve();
  CheckOut();
  if (!MountSmallDisk(disk, "128k")) GTEST_SKIP() << "this user can mount no small disk";
  Mount({"--write", "--log", Home("log")});
  const auto large = Shell("dd if=/dev/zero bs=4096 count=256 status=none of='" + Fork() + "'");
  EXPECT_NE(large.status, 0);
  EXPECT_THAT(large.err, HasSubstr("No space left on device"));
  EXPECT_THAT(OnServer(Path()), testing::StartsWith(forkHead));
  EXPECT_THAT(Run({"recover"}).out, HasSubstr("may be half"));
  EXPECT_THAT(ReadFile(Home("log")), HasSubstr("not stored: a write to it failed: No space left on device"));
  // Written again and small enough, it is a file like any other.
  EXPECT_EQ(Shell("cp /etc/hostname '" + Fork() + "'").err, "");
  EXPECT_EQ(OnServer(Path()), ReadFile("/etc/hostname"));
  EXPECT_EQ(Run({"recover"}).status, 0);
  EndMountAndSmallDisk(disk);
}

TEST_F(MountLosses, AFullDiskIsToldBeforeAFileIsMadeThatNothingIsKnownOf) {
  const std::string disk = Home(".local/state/vtdirect/unstored");
  Serve();
  CheckOut();
  if (!MountSmallDisk(disk, "64k")) GTEST_SKIP() << "this user can mount no small disk";
  Mount({"--write"});
  static_cast<void>(Shell("dd if=/dev/zero bs=4096 count=64 status=none of='" + disk + "/other'"));
  const std::string file = Tree(std::string(frameFolder) + "new.lxz");
  EXPECT_EQ(open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), -1);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(open(Fork().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC), -1);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(Text(Fork()), OnServer(Path()));
  EXPECT_THAT(Names(Tree(frameFolder)), Not(Contains("new.lxz")));
  EndMountAndSmallDisk(disk);
}

TEST_F(MountLosses, NamesEndAt255Bytes) {
  Serve();
  const std::string frame = "//sim/" + std::string(frameFolder);
  WriteFile(Here("a"), "FENLET long\n");
  const std::string onServer = std::string(300, 'n') + ".lxz";
  ASSERT_EQ(Run({"put", "-q", "a", frame + onServer}).status, 0);
  Mount({"--write"});
  // One that is too long for a file is cut, and read by the name that is shown.
  std::string shown;
  for (const std::string& name : Names(Tree(frameFolder))) {
    if (name.starts_with("nnn")) shown = name;
  }
  EXPECT_EQ(shown.size(), 255U);
  EXPECT_EQ(Text(Tree(frameFolder + shown)), "FENLET long\n");
  // The longest that a program can make, and one more.
  std::string longest = "x.lxz";
  while (longest.size() < 255) longest.insert(0, "ä");
  EXPECT_EQ(Shell("cp a '" + Tree(frameFolder + longest) + "'").err, "");
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_EQ(Text(Tree(frameFolder + longest)), "FENLET long\n");
  EXPECT_THAT(Names(Tree(frameFolder)), Contains(longest));
  const std::string tooLong = Tree(std::string(frameFolder) + std::string(256, 'x'));
  EXPECT_EQ(open(tooLong.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), -1);
  EXPECT_EQ(errno, ENAMETOOLONG);
  struct stat status = {};
  EXPECT_EQ(stat(tooLong.c_str(), &status), -1);
  EXPECT_EQ(errno, ENAMETOOLONG);
  EXPECT_THAT(Names(Unstored()), IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
