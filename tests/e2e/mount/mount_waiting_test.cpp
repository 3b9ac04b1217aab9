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

// What could not be stored waits, and goes only where it belongs.
class MountWaiting : public MountWriting {
 protected:
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
};

// After a restart of the machine other programs have the numbers of those that ran before.
TEST_F(MountWaiting, WhatWaitsIsStoredThoughAnotherProcessHasTheNumberOfItsMount) {
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

TEST_F(MountWaiting, WhatWaitsInOneMountIsLeftAloneByAnother) {
  Serve();
  CheckOut();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write"});
  EXPECT_NE(Shell("cp /etc/hostname '" + Fork() + "'").status, 0);
  std::filesystem::create_directory(Home("second"));
  ASSERT_EQ(Run({"mount", "--no-prompt", "--write", "//sim/", Home("second")}).status, 0);
  EXPECT_EQ(Text(Home("second/") + forkAddress), server().Get(forkContent));
  EXPECT_EQ(Run({"unmount", Home("second")}).status, 0);
  EXPECT_EQ(Names(Unstored()).size(), 2U);
  EXPECT_EQ(Text(Fork()), ReadFile("/etc/hostname"));
}

TEST_F(MountWaiting, WhatIsRenamedOverWhatWaitsTakesItsPlaceForGood) {
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
TEST_F(MountWaiting, WhatWaitsIsNoDocumentOfAnotherName) {
  Serve();
  CheckOut();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write"});
  EXPECT_NE(Shell("cp /etc/hostname '" + Fork() + "'").status, 0);
  const std::string other = Tree(std::string(frameFolder) + "other.lxz");
  EXPECT_EQ(rename(Fork().c_str(), other.c_str()), -1);
  EXPECT_EQ(errno, EPERM);
  EXPECT_EQ(Text(Fork()), ReadFile("/etc/hostname"));
  EXPECT_THAT(Names(Tree(frameFolder)), Not(Contains("other.lxz")));
  EXPECT_THAT(Run({"recover"}).out, HasSubstr("mount\t" + Path()));
}

// As emacs does when it saves for the second time while the server is away, and is killed with the machine.
TEST_F(MountWaiting, WhatWaitsGoesOnWaitingWhenABackupIsMadeOfItByRenaming) {
  Serve();
  CheckOut();
  port_ = AtItsPort();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write"});
  EXPECT_NE(Shell("cp /etc/hostname '" + Fork() + "'").status, 0);
  EXPECT_EQ(Shell("mv '" + Fork() + "' '" + Fork() + "~'").err, "");
  EXPECT_EQ(Text(Fork() + "~"), ReadFile("/etc/hostname"));
  EXPECT_THAT(Names(Tree(frameFolder)), testing::ElementsAre("fork.lxz~", "frame.lxz", "welding manual.xml"));
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

TEST_F(MountWaiting, WhatWaitsForOneCheckoutDoesNotGoIntoTheNext) {
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

TEST_F(MountWaiting, WhatWaitsCanBeGivenUp) {
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
  EXPECT_EQ(Text(Fork()), server().Get(forkContent));
}

TEST_F(MountWaiting, WhatWaitsWithoutAMountCanBeGivenUpAtOnce) {
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

TEST_F(MountWaiting, WhatIsBeingWrittenIsNotGivenUp) {
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

TEST_F(MountWaiting, WhatWaitsForOneServerIsNotSentToAnotherOfItsNickname) {
  Serve();
  CheckOut();
  std::filesystem::create_directories(Unstored());
  WriteFile(Unstored() + "/9-0-1.content", "FENLET of another server\n");
  WriteFile(Unstored() + "/9-0-1.entry", Entry("2026-09-21T12:00:00Z", "https://elsewhere.example/Vantry"));
  Mount({"--write"});
  EXPECT_TRUE(RecoverSays("it was written for https://elsewhere.example/Vantry"));
  EXPECT_EQ(Text(Fork()), server().Get(forkContent));
  EXPECT_EQ(Names(Unstored()).size(), 2U);
  EXPECT_EQ(OnServer(Path()), server().Get(forkContent));
}

TEST_F(MountWaiting, ANewFileThatWaitsCanBeGivenAnotherName) {
  Serve();
  port_ = AtItsPort();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write"});
  const std::string one = Tree(std::string(frameFolder) + "one.lxz");
  const std::string two = Tree(std::string(frameFolder) + "two.lxz");
  EXPECT_NE(Shell("cp /etc/hostname '" + one + "'").status, 0);
  EXPECT_EQ(rename(one.c_str(), two.c_str()), -1);
  EXPECT_EQ(errno, EIO) << "it is not stored there either";
  Serve(port_);
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  EXPECT_EQ(OnServer("//sim/" + std::string(frameFolder) + "two.lxz"), ReadFile("/etc/hostname"));
  EXPECT_NE(Run({"info", "//sim/" + std::string(frameFolder) + "one.lxz"}).status, 0);
}

TEST_F(MountWaiting, TheNewestOfWhatWaitsForOneAddressIsStoredAndTheOthersAreLeft) {
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
TEST_F(MountWaiting, AContentWithoutAnEntryIsClearedAwayUnlessAnotherHasIt) {
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
TEST_F(MountWaiting, WhatWaitedIsNotStoredHalfWhileItIsWrittenAgain) {
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
  EXPECT_THAT(OnServer(Path()), testing::StartsWith(forkHead));
  Mount({"--write"});
  EXPECT_THAT(OnServer(Path()), testing::StartsWith(forkHead));
  EXPECT_THAT(Run({"recover"}).out, HasSubstr("may be half"));
  ClearAwayTemporaryFiles();
}

}  // namespace
}  // namespace vtdirect_test
