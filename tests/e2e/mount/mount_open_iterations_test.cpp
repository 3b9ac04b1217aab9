#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "tests/e2e/mount/held_content.h"
#include "tests/e2e/mount/mount_writing_fixture.h"

namespace vtdirect_test {
namespace {

// Programs that have one document open as it was at different times. All contents have one length: the kernel reads no
// further than the length that it was told last.
class MountOpenIterations : public MountWriting {
 protected:
  static constexpr std::size_t length = 300'000;

  static std::string Filled(char letter) { return std::string(length, letter); }
  void Put(char letter) {
    WriteFile(Here("put"), Filled(letter));
    ASSERT_EQ(Run({"put", "-q", "put", Path()}).status, 0);
  }
  // Makes an iteration, of which a mount of this user hears at once.
  void MakeIteration(char letter) {
    CheckOut();
    Put(letter);
    ASSERT_EQ(Run({"checkin", "-q", Path()}).status, 0);
  }
  [[nodiscard]] int Open(int flags) const { return open(Fork().c_str(), flags | O_CLOEXEC); }
  // Each letter that a stretch of an open file holds, once.
  [[nodiscard]] static std::string Letters(int descriptor, std::size_t size, std::size_t offset) {
    std::string bytes(size, '\0');
    const auto count = pread(descriptor, bytes.data(), size, static_cast<off_t>(offset));
    bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    bytes.erase(std::unique(bytes.begin(), bytes.end()), bytes.end());
    return bytes;
  }
  // Opens the document and reads its first byte, and nothing ahead of that.
  [[nodiscard]] int BeginToRead() const {
    const int descriptor = Open(O_RDONLY);
    EXPECT_GE(descriptor, 0);
    EXPECT_EQ(posix_fadvise(descriptor, 0, 0, POSIX_FADV_RANDOM), 0);
    EXPECT_EQ(Letters(descriptor, 1, 0).size(), 1U);
    return descriptor;
  }
};

TEST_F(MountOpenIterations, DoNotGetIntoWhatOthersReadOfTheNewest) {
  Serve();
  MakeIteration('a');
  Mount();
  const int earlier = BeginToRead();
  MakeIteration('b');
  const int newest = BeginToRead();
  EXPECT_EQ(Letters(earlier, length, 0), "a");
  EXPECT_EQ(Letters(newest, length, 0), "b");
  EXPECT_EQ(Text(Fork()), Filled('b'));
  EXPECT_EQ(close(earlier), 0);
  EXPECT_EQ(close(newest), 0);
  EXPECT_EQ(Text(Fork()), Filled('b'));
}

TEST_F(MountOpenIterations, DoNotGetIntoWhatAProgramWritesTo) {
  Serve();
  MakeIteration('a');
  Mount({"--write"});
  const int earlier = BeginToRead();
  MakeIteration('b');
  CheckOut();
  const int writer = Open(O_RDWR);
  ASSERT_GE(writer, 0);
  EXPECT_EQ(Letters(earlier, length, 0), "a");
  EXPECT_EQ(Letters(writer, length, 0), "b");
  ASSERT_EQ(pwrite(writer, "c", 1, 0), 1);
  EXPECT_EQ(Letters(writer, length, 0), "cb");
  EXPECT_EQ(close(writer), 0);
  EXPECT_EQ(close(earlier), 0);
  EXPECT_EQ(OnServer(Path()), "c" + Filled('b').substr(1));
  EXPECT_EQ(Text(Fork()), "c" + Filled('b').substr(1));
}

// A working copy has one key, whatever it holds.
TEST_F(MountOpenIterations, OfAWorkingCopyAreToldApart) {
  Serve();
  CheckOut();
  Put('a');
  Mount({"--write"});
  const int earlier = BeginToRead();
  Put('b');
  const int newest = BeginToRead();
  EXPECT_EQ(Letters(earlier, length, 0), "a");
  EXPECT_EQ(Letters(newest, length, 0), "b");
  EXPECT_EQ(Text(Fork()), Filled('b'));
  EXPECT_EQ(close(earlier), 0);
  EXPECT_EQ(close(newest), 0);
}

// The one that began before gets what it began to fetch.
TEST_F(MountOpenIterations, OfAWorkingCopyAreFetchedApart) {
  Serve();
  CheckOut();
  Put('a');
  HeldContent held;
  environment_["http_proxy"] = held.Url();
  Mount({"--write"});
  Process earlier({"/usr/bin/tail", "-c", "1", Fork()}, ProcessOptions{});
  EXPECT_TRUE(held.AwaitFirstHalf());
  Put('b');
  EXPECT_EQ(Text(Fork()), Filled('b'));
  held.LetGo();
  EXPECT_EQ(earlier.Wait().out, "a");
}

}  // namespace
}  // namespace vtdirect_test
