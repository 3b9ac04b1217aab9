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
    Mount({"--write"});
    WriteFile(Here("edited"), "FENLET edited\n");
    auto writer = std::make_unique<Process>(std::vector<std::string>{"/bin/cp", Here("edited"), Fork()},
                                            ProcessOptions{});
    server().Control("GET", "/requests?path=*content/upload*&state=arrived&count=1&wait=10000");
    return writer;
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

  [[nodiscard]] std::string ServerUrl() {
    const std::string url = Run({"servers"}).out;
    return url.substr(url.find('\t') + 1, url.find('\n') - url.find('\t') - 1);
  }
  // The entry of a file that waits for the checkout of the fork.
  [[nodiscard]] std::string Entry(const std::string& since, const std::string& serverUrl) {
    const std::string book = ReadFile(Home(".local/state/vtdirect/checkouts"));
    const std::size_t start = book.find('\t') + 1;
    return "vtdirect-unstored 1\n" + Path() + "\n" + since + "\nwhole\nrefused\n" + serverUrl + "\n" +
           book.substr(start, book.find('\t', start) - start) + "\n";
  }
  // What waits for the fork: the path of its content, as recover tells it.
  [[nodiscard]] std::string WaitingContent() const {
    for (const std::string& name : Names(Unstored())) {
      if (name.ends_with(".content")) return Unstored() + "/" + name;
    }
    return "";
  }
  // A store that fails because the checkout was undone, and waits.
  void LeaveWaitingOfAnEarlierCheckout() {
    MountAndCheckOut();
    const int descriptor = open(Fork().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    ASSERT_EQ(write(descriptor, "FENLET earlier\n", 15), 15);
    ASSERT_EQ(Run({"undo", "-q", Path()}).status, 0);
    EXPECT_EQ(close(descriptor), -1);
  }
  [[nodiscard]] bool RecoverSays(const std::string& text) {
    return WaitUntil([&] { return Run({"recover"}).out.find(text) != std::string::npos; });
  }

  std::vector<std::string> port_;
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
  EXPECT_EQ(Text(Fork()), server().Get(kForkContent));
  EXPECT_EQ(Text(Tree(std::string(kFrame) + "frame.lxz")), content);
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
  EXPECT_THAT(OnServer(Path()), testing::StartsWith(kForkHead));
  Mount({"--write"});
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  EXPECT_EQ(OnServer(Path()), "FENLET edited\n");
  EXPECT_EQ(Run({"recover"}).status, 0);
  ClearAwayTemporaryFiles();
}

TEST_F(MountLosses, AStoreWaitsForAConnectionNoLongerThanItsMount) {
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
  // The list of servers may have changed since the mount began, and is read by this process anew.
  EXPECT_THAT(command, HasSubstr("--server" + std::string(1, '\0') + "sim=" + ServerUrl()));
  StopServer();
  static_cast<void>(writer->Wait());
}

// An empty file is stored after its close, and here after the store that takes so long.
TEST_F(MountLosses, WhatWasClosedWhileAnotherIsStoredIsRecovered) {
  const auto writer = StoreThatTheServerIsSilentAbout();
  const std::string name = std::string(kFrame) + "new.lxz";
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

// After a restart of the machine other programs have the numbers of those that ran before.
TEST_F(MountLosses, WhatWaitsIsStoredThoughAnotherProcessHasTheNumberOfItsMount) {
  Serve();
  CheckOut();
  std::filesystem::create_directories(Unstored());
  const std::string name = Unstored() + "/" + std::to_string(getpid()) + "-0-1790000000";
  WriteFile(name + ".content", "FENLET edited\n");
  WriteFile(name + ".entry", Entry("2026-09-21T12:53:20Z", ServerUrl()));
  Mount({"--write"});
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  EXPECT_EQ(OnServer(Path()), "FENLET edited\n");
}

TEST_F(MountLosses, WhatWaitsInOneMountIsLeftAloneByAnother) {
  Serve();
  CheckOut();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write"});
  EXPECT_NE(Shell("cp /etc/hostname '" + Fork() + "'").status, 0);
  std::filesystem::create_directory(Home("second"));
  ASSERT_EQ(Run({"mount", "--no-prompt", "--write", "//sim/", Home("second")}).status, 0);
  EXPECT_EQ(Text(Home("second/") + kFork), server().Get(kForkContent));
  EXPECT_EQ(Run({"unmount", Home("second")}).status, 0);
  EXPECT_EQ(Names(Unstored()).size(), 2U);
  EXPECT_EQ(Text(Fork()), ReadFile("/etc/hostname"));
}

TEST_F(MountLosses, WhatIsRenamedOverWhatWaitsTakesItsPlaceForGood) {
  Serve();
  CheckOut();
  port_ = AtItsPort();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write"});
  EXPECT_NE(Shell("cp /etc/hostname '" + Fork() + "'").status, 0);
  EXPECT_NE(Shell("printf new >'" + Fork() + "~' && mv '" + Fork() + "~' '" + Fork() + "'").status, 0);
  EXPECT_EQ(Names(Unstored()).size(), 2U) << "one content and its entry";
  SignalMount(SIGKILL);
  EXPECT_EQ(WaitForMount().status, -SIGKILL);
  Serve(port_);
  Mount({"--write"});
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  EXPECT_EQ(OnServer(Path()), "new");
  ClearAwayTemporaryFiles();
}

// A document has new bytes here, and its name is the server's all the same.
TEST_F(MountLosses, WhatWaitsIsNoDocumentOfAnotherName) {
  Serve();
  CheckOut();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write"});
  EXPECT_NE(Shell("cp /etc/hostname '" + Fork() + "'").status, 0);
  const std::string other = Tree(std::string(kFrame) + "other.lxz");
  EXPECT_EQ(rename(Fork().c_str(), other.c_str()), -1);
  EXPECT_EQ(errno, EPERM);
  EXPECT_EQ(Text(Fork()), ReadFile("/etc/hostname"));
  EXPECT_THAT(Names(Tree(kFrame)), Not(Contains("other.lxz")));
  EXPECT_THAT(Run({"recover"}).out, HasSubstr("mount\t" + Path()));
}

// As emacs does when it saves for the second time while the server is away, and is killed with the machine.
TEST_F(MountLosses, WhatWaitsGoesOnWaitingWhenABackupIsMadeOfItByRenaming) {
  Serve();
  CheckOut();
  port_ = AtItsPort();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write"});
  EXPECT_NE(Shell("cp /etc/hostname '" + Fork() + "'").status, 0);
  EXPECT_EQ(Shell("mv '" + Fork() + "' '" + Fork() + "~'").err, "");
  EXPECT_EQ(Text(Fork() + "~"), ReadFile("/etc/hostname"));
  EXPECT_THAT(Names(Tree(kFrame)), testing::ElementsAre("fork.lxz~", "frame.lxz", "welding manual.xml"));
  EXPECT_EQ(open(Fork().c_str(), O_RDONLY | O_CLOEXEC), -1);
  EXPECT_THAT(Run({"recover"}).out, HasSubstr("mount\t" + Path()));
  SignalMount(SIGKILL);
  EXPECT_EQ(WaitForMount().status, -SIGKILL);
  Serve(port_);
  Mount({"--write"});
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  EXPECT_EQ(OnServer(Path()), ReadFile("/etc/hostname"));
  ClearAwayTemporaryFiles();
}

TEST_F(MountLosses, WhatWaitsForOneCheckoutDoesNotGoIntoTheNext) {
  LeaveWaitingOfAnEarlierCheckout();
  WriteFile(Here("newer"), "FENLET newer\n");
  CheckOut();
  ASSERT_EQ(Run({"put", "-q", "newer", Path()}).status, 0);
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_TRUE(RecoverSays("it was written for an earlier checkout of the document"));
  EXPECT_EQ(OnServer(Path()), "FENLET newer\n");
  // Who writes the file anew writes it for the checkout of now.
  EXPECT_EQ(Shell("printf anew >'" + Fork() + "'").err, "");
  EXPECT_EQ(OnServer(Path()), "anew");
  EXPECT_THAT(Names(Unstored()), IsEmpty());
}

TEST_F(MountLosses, WhatWaitsCanBeGivenUp) {
  LeaveWaitingOfAnEarlierCheckout();
  EXPECT_EQ(Text(Fork()), "FENLET earlier\n");
  EXPECT_EQ(Run({"recover", "--discard", "/nowhere"}).status, 6);
  const auto result = Run({"recover", "--discard", WaitingContent()});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("its mount drops it"));
  EXPECT_EQ(Run({"recover"}).status, 0);
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_EQ(Text(Fork()), server().Get(kForkContent));
}

TEST_F(MountLosses, WhatWaitsWithoutAMountCanBeGivenUpAtOnce) {
  LeaveWaitingOfAnEarlierCheckout();
  ASSERT_EQ(Run({"unmount", Tree()}).status, 0);
  EXPECT_EQ(WaitForMount().status, 0);
  EXPECT_EQ(Names(Unstored()).size(), 2U);
  const auto tried = Run({"recover", "--discard", WaitingContent(), "--dry-run"});
  EXPECT_EQ(tried.status, 0) << tried.err;
  EXPECT_THAT(tried.out, HasSubstr("would be given up"));
  EXPECT_EQ(Names(Unstored()).size(), 2U);
  const auto result = Run({"recover", "--discard", WaitingContent()});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(Names(Unstored()), IsEmpty());
}

TEST_F(MountLosses, WhatIsBeingWrittenIsNotGivenUp) {
  MountAndCheckOut();
  const int descriptor = open(Fork().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  ASSERT_GE(descriptor, 0);
  ASSERT_EQ(write(descriptor, "edited", 6), 6);
  const auto result = Run({"recover", "--discard", WaitingContent()});
  EXPECT_NE(result.status, 0);
  EXPECT_THAT(result.err, HasSubstr("a program is writing to"));
  EXPECT_EQ(close(descriptor), 0);
  EXPECT_EQ(OnServer(Path()), "edited");
}

TEST_F(MountLosses, WhatWaitsForOneServerIsNotSentToAnotherOfItsNickname) {
  Serve();
  CheckOut();
  std::filesystem::create_directories(Unstored());
  WriteFile(Unstored() + "/9-0-1.content", "FENLET of another server\n");
  WriteFile(Unstored() + "/9-0-1.entry", Entry("2026-09-21T12:00:00Z", "https://elsewhere.example/Vantry"));
  Mount({"--write"});
  EXPECT_TRUE(RecoverSays("it was written for https://elsewhere.example/Vantry"));
  EXPECT_EQ(Text(Fork()), server().Get(kForkContent));
  EXPECT_EQ(Names(Unstored()).size(), 2U);
  EXPECT_EQ(OnServer(Path()), server().Get(kForkContent));
}

// The kernel tells of the last close late, or never when the mount ends before.
TEST_F(MountLosses, AMountThatEndsLeavesNothingOfWhatProgramsHaveOpen) {
  Serve();
  Mount({"--write"});
  const std::string backup = Tree(std::string(kFrame) + "a~");
  ASSERT_EQ(Shell("printf backup >'" + backup + "'").err, "");
  const int file = open(backup.c_str(), O_RDONLY | O_CLOEXEC);
  const int document = open(Fork().c_str(), O_RDONLY | O_CLOEXEC);
  const int directory = open(Tree(kFrame).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  SignalMount(SIGTERM);
  EXPECT_EQ(WaitForMount().status, 0);
  EXPECT_THAT(Names(Unstored()), IsEmpty());
  for (const int descriptor : {file, document, directory}) EXPECT_EQ(close(descriptor), 0);
}

TEST_F(MountLosses, ANewFileThatWaitsCanBeGivenAnotherName) {
  Serve();
  port_ = AtItsPort();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write"});
  const std::string one = Tree(std::string(kFrame) + "one.lxz");
  const std::string two = Tree(std::string(kFrame) + "two.lxz");
  EXPECT_NE(Shell("cp /etc/hostname '" + one + "'").status, 0);
  EXPECT_EQ(rename(one.c_str(), two.c_str()), -1);
  EXPECT_EQ(errno, EIO) << "it is not stored there either";
  Serve(port_);
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  EXPECT_EQ(OnServer("//sim/" + std::string(kFrame) + "two.lxz"), ReadFile("/etc/hostname"));
  EXPECT_NE(Run({"info", "//sim/" + std::string(kFrame) + "one.lxz"}).status, 0);
}

TEST_F(MountLosses, TheNewestOfWhatWaitsForOneAddressIsStoredAndTheOthersAreLeft) {
  Serve();
  CheckOut();
  std::filesystem::create_directories(Unstored());
  const auto leave = [this](const std::string& name, const std::string& since, const std::string& bytes) {
    WriteFile(Unstored() + "/" + name + ".content", bytes);
    WriteFile(Unstored() + "/" + name + ".entry", Entry(since, ServerUrl()));
  };
  leave("10-0-1", "2026-09-21T12:00:00Z", "newest");
  leave("9-0-1", "2026-09-21T11:00:00Z", "older");
  for (int mounts = 0; mounts < 2; ++mounts) {
    Mount({"--write"});
    EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).size() == 2; }));
    EXPECT_EQ(OnServer(Path()), "newest");
    EXPECT_EQ(ReadFile(Unstored() + "/9-0-1.content"), "older");
    EXPECT_THAT(Run({"recover"}).out, HasSubstr("a newer file has its address"));
    ASSERT_EQ(Run({"unmount", Tree()}).status, 0);
    EXPECT_EQ(WaitForMount().status, 0);
  }
}

// The mount that has it may run on another machine, and its number says nothing here.
TEST_F(MountLosses, AContentWithoutAnEntryIsClearedAwayUnlessAnotherHasIt) {
  Serve();
  std::filesystem::create_directories(Unstored());
  // No process has such a number.
  const std::string content = Unstored() + "/2000000000-0-1.content";
  WriteFile(content, "a scratch file");
  const int descriptor = open(content.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(flock(descriptor, LOCK_EX | LOCK_NB), 0);
  for (const std::size_t left : {1U, 0U}) {
    Mount({"--write"});
    EXPECT_EQ(Names(Unstored()).size(), left);
    ASSERT_EQ(Run({"unmount", Tree()}).status, 0);
    EXPECT_EQ(WaitForMount().status, 0);
    if (left == 1) {
      EXPECT_EQ(close(descriptor), 0);
    }
  }
}

// A file that waited is not what was stored before while a program writes it anew.
TEST_F(MountLosses, WhatWaitedIsNotStoredHalfWhileItIsWrittenAgain) {
  Serve();
  CheckOut();
  port_ = AtItsPort();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write"});
  EXPECT_NE(Shell("cp /etc/hostname '" + Fork() + "'").status, 0);
  const int descriptor = open(Fork().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  ASSERT_GE(descriptor, 0);
  ASSERT_EQ(write(descriptor, "half", 4), 4);
  Serve(port_);
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  SignalMount(SIGKILL);
  EXPECT_EQ(WaitForMount().status, -SIGKILL);
  EXPECT_EQ(close(descriptor), -1);
  EXPECT_THAT(OnServer(Path()), testing::StartsWith(kForkHead));
  Mount({"--write"});
  EXPECT_THAT(OnServer(Path()), testing::StartsWith(kForkHead));
  EXPECT_THAT(Run({"recover"}).out, HasSubstr("may be half"));
  ClearAwayTemporaryFiles();
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
  EXPECT_THAT(OnServer(Path()), testing::StartsWith(kForkHead));
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
  const std::string file = Tree(std::string(kFrame) + "new.lxz");
  EXPECT_EQ(open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), -1);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(open(Fork().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC), -1);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(Text(Fork()), OnServer(Path()));
  EXPECT_THAT(Names(Tree(kFrame)), Not(Contains("new.lxz")));
  EndMountAndSmallDisk(disk);
}

TEST_F(MountLosses, NamesEndAt255Bytes) {
  Serve();
  const std::string frame = "//sim/" + std::string(kFrame);
  WriteFile(Here("a"), "FENLET long\n");
  const std::string onServer = std::string(300, 'n') + ".lxz";
  ASSERT_EQ(Run({"put", "-q", "a", frame + onServer}).status, 0);
  Mount({"--write"});
  // One that is too long for a file is cut, and read by the name that is shown.
  std::string shown;
  for (const std::string& name : Names(Tree(kFrame))) {
    if (name.starts_with("nnn")) shown = name;
  }
  EXPECT_EQ(shown.size(), 255U);
  EXPECT_EQ(Text(Tree(kFrame + shown)), "FENLET long\n");
  // The longest that a program can make, and one more.
  std::string longest = "x.lxz";
  while (longest.size() < 255) longest.insert(0, "ä");
  EXPECT_EQ(Shell("cp a '" + Tree(kFrame + longest) + "'").err, "");
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_EQ(Text(Tree(kFrame + longest)), "FENLET long\n");
  EXPECT_THAT(Names(Tree(kFrame)), Contains(longest));
  const std::string tooLong = Tree(std::string(kFrame) + std::string(256, 'x'));
  EXPECT_EQ(open(tooLong.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), -1);
  EXPECT_EQ(errno, ENAMETOOLONG);
  struct stat status = {};
  EXPECT_EQ(stat(tooLong.c_str(), &status), -1);
  EXPECT_EQ(errno, ENAMETOOLONG);
  EXPECT_THAT(Names(Unstored()), IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
