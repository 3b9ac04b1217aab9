#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tests/e2e/mount/held_content.h"
#include "tests/e2e/mount/mount_writing_fixture.h"

namespace vtdirect_test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

// What lies over a document, for how long, and who may write to it.
class MountOpening : public MountWriting {
 protected:
  void PutByCommand(const std::string& text) {
    WriteFile(Here("put"), text);
    ASSERT_EQ(Run({"put", "-q", "put", Path()}).status, 0);
  }
};

// It never got what it wanted to write to, and somebody else stores into the working copy after that.
TEST_F(MountOpening, ByAProgramThatWasInterruptedLeavesNothingOverTheDocument) {
  const int admin = UnusedPort();
  Serve({"--admin-port", std::to_string(admin), "--fault", "GET *content/streams/*=delay:700*1"});
  CheckOut();
  Mount({"--write", "--refresh", "3600"});
  Process writer({"/bin/sh", "-c", "printf mine >>'" + Fork() + "'"}, ProcessOptions{});
  server().Control("GET", "/requests?path=*content/streams*&state=arrived&count=1&wait=10000");
  writer.Signal(SIGINT);
  EXPECT_NE(writer.Wait().status, 0);
  server().Control("GET", "/requests?path=*content/streams*&status=200&count=1&wait=10000");
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  PutByCommand("FENLET by a command\n");
  EXPECT_EQ(Shell("printf 'more\\n' >>'" + Fork() + "'").err, "");
  EXPECT_EQ(OnServer(Path()), "FENLET by a command\nmore\n");
}

TEST_F(MountOpening, ForReadingLetsOthersSeeWhatIsNewOnTheServer) {
  MountAndCheckOut();
  const int writer = open(Fork().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  ASSERT_GE(writer, 0);
  ASSERT_EQ(write(writer, "FENLET edited\n", 14), 14);
  const int reader = open(Fork().c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(reader, 0);
  EXPECT_EQ(close(writer), 0);
  PutByCommand("FENLET by a command\n");
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_EQ(Text(Fork()), "FENLET by a command\n");
  EXPECT_EQ(Shell("printf 'more\\n' >>'" + Fork() + "'").err, "");
  EXPECT_EQ(OnServer(Path()), "FENLET by a command\nmore\n");
  EXPECT_EQ(close(reader), 0);
}

// As a mount looks that begins meanwhile, on another machine that shares the directory: it clears away the contents
// without an entry that nobody has.
TEST_F(MountOpening, MakesTheFileItsOwnBeforeItsContentIsFetched) {
  Serve();
  CheckOut();
  HeldContent held;
  environment_["http_proxy"] = held.Url();
  Mount({"--write"});
  Process writer({"/bin/sh", "-c", "printf more >>'" + Fork() + "'"}, ProcessOptions{});
  ASSERT_TRUE(held.AwaitFirstHalf());
  ASSERT_TRUE(WaitUntil([this] { return Names(Unstored()).size() == 1; }));
  const std::string content = Unstored() + "/" + Names(Unstored()).front();
  const int descriptor = open(content.c_str(), O_RDWR | O_CLOEXEC);
  EXPECT_EQ(flock(descriptor, LOCK_EX | LOCK_NB), -1);
  EXPECT_EQ(errno, EWOULDBLOCK);
  EXPECT_EQ(close(descriptor), 0);
  held.LetGo();
  EXPECT_EQ(writer.Wait().err, "");
  EXPECT_EQ(OnServer(Path()), server().Get(forkContent) + "more");
}

// Where there are no locks, it may be cleared away all the same.
TEST_F(MountOpening, FailsWhenWhatWasFetchedForItIsGone) {
  Serve();
  CheckOut();
  HeldContent held;
  environment_["http_proxy"] = held.Url();
  Mount({"--write"});
  Process writer({"/bin/sh", "-c", "printf more >>'" + Fork() + "'"}, ProcessOptions{});
  ASSERT_TRUE(held.AwaitFirstHalf());
  std::string content;
  const auto hasBegun = [&] {
    const auto names = Names(Unstored());
    content = names.empty() ? "" : Unstored() + "/" + names.front();
    struct stat status = {};
    return !content.empty() && stat(content.c_str(), &status) == 0 && status.st_size > 0;
  };
  ASSERT_TRUE(WaitUntil(hasBegun));
  ASSERT_EQ(unlink(content.c_str()), 0);
  held.LetGo();
  EXPECT_THAT(writer.Wait().err, HasSubstr("Input/output error"));
  EXPECT_EQ(OnServer(Path()), server().Get(forkContent));
  EXPECT_THAT(Names(Unstored()), IsEmpty());
}

// The program that has made the document goes on to write to it; for all others it is a document like any other.
TEST_F(MountOpening, OfADocumentThatWasJustMadeTakesACheckout) {
  Serve();
  Mount({"--write"});
  const std::string name = std::string(frameFolder) + "new.lxz";
  const int maker = open(Tree(name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
  ASSERT_GE(maker, 0);
  ASSERT_EQ(write(maker, "one\n", 4), 4);
  ASSERT_EQ(close(dup(maker)), 0);
  EXPECT_EQ(open(Tree(name).c_str(), O_WRONLY | O_CLOEXEC), -1);
  EXPECT_EQ(errno, EACCES);
  ASSERT_EQ(write(maker, "two\n", 4), 4);
  EXPECT_EQ(open(Tree(name).c_str(), O_WRONLY | O_CLOEXEC), -1);
  EXPECT_EQ(errno, EACCES);
  ASSERT_EQ(Run({"checkout", "-q", Tree(name)}).status, 0);
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_EQ(Shell("printf 'three\\n' >>'" + Tree(name) + "'").err, "");
  EXPECT_EQ(close(maker), 0);
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  EXPECT_EQ(OnServer("//sim/" + name), "one\ntwo\nthree\n");
}

// It has the file open since an earlier checkout, and what it writes is for that one.
TEST_F(MountOpening, ForANewCheckoutLeavesAProgramWithTheFileOfItsOwn) {
  MountAndCheckOut();
  const int earlier = open(Fork().c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  ASSERT_GE(earlier, 0);
  ASSERT_EQ(Run({"undo", "-q", Path()}).status, 0);
  CheckOut();
  EXPECT_EQ(Shell("printf 'FENLET now\\n' >'" + Fork() + "'").err, "");
  EXPECT_EQ(OnServer(Path()), "FENLET now\n");
  ASSERT_EQ(write(earlier, "late\n", 5), 5);
  EXPECT_EQ(close(earlier), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(OnServer(Path()), "FENLET now\n");
  EXPECT_THAT(Run({"recover"}).out, HasSubstr("earlier checkout"));
}

}  // namespace
}  // namespace vtdirect_test
