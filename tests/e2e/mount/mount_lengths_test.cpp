#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cerrno>

#include "tests/e2e/mount/mount_writing_fixture.h"

namespace vtdirect_test {
namespace {

using testing::IsEmpty;
using testing::StartsWith;

// A length that a program gives to a document by its name, while a file of this machine lies over it.
class MountLengths : public MountWriting {
 protected:
  [[nodiscard]] int OpenToWrite(int flags) const {
    const int descriptor = open(Fork().c_str(), O_WRONLY | O_CLOEXEC | flags);
    EXPECT_GE(descriptor, 0);
    return descriptor;
  }
};

TEST_F(MountLengths, IsStoredWhileAnotherProgramWrites) {
  MountAndCheckOut();
  const int writer = OpenToWrite(O_TRUNC);
  ASSERT_EQ(write(writer, "FENLET edited\n", 14), 14);
  EXPECT_EQ(truncate(Fork().c_str(), 6), 0);
  EXPECT_EQ(OnServer(Path()), "FENLET");
  EXPECT_EQ(close(writer), 0);
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
}

TEST_F(MountLengths, IsRefusedWithoutACheckout) {
  MountAndCheckOut();
  const int writer = OpenToWrite(0);
  ASSERT_EQ(Run({"undo", "-q", Path()}).status, 0);
  EXPECT_EQ(truncate(Fork().c_str(), 0), -1);
  EXPECT_EQ(errno, EACCES);
  EXPECT_THAT(Names(Unstored()), testing::SizeIs(1)) << "what is open, and nothing that is said of it";
  EXPECT_EQ(close(writer), 0);
  EXPECT_THAT(OnServer(Path()), StartsWith(forkHead));
}

TEST_F(MountLengths, OfNothingIsForTheCheckoutOfNow) {
  MountAndCheckOut();
  const int earlier = OpenToWrite(O_TRUNC);
  ASSERT_EQ(write(earlier, "FENLET earlier\n", 15), 15);
  ASSERT_EQ(Run({"undo", "-q", Path()}).status, 0);
  EXPECT_EQ(close(earlier), -1);
  CheckOut();
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_EQ(truncate(Fork().c_str(), 0), 0);
  EXPECT_EQ(OnServer(Path()), "");
  EXPECT_THAT(Names(Unstored()), IsEmpty());
}

TEST_F(MountLengths, OfAScratchFileStaysOnThisMachine) {
  Serve();
  Mount({"--write"});
  const std::string backup = Fork() + "~";
  ASSERT_EQ(Shell("printf backup >'" + backup + "'").err, "");
  EXPECT_EQ(truncate(backup.c_str(), 4), 0);
  EXPECT_EQ(Text(backup), "back");
  EXPECT_EQ(Asked("POST"), 0U);
}

}  // namespace
}  // namespace vtdirect_test
