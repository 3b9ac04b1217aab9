// What the temporary file of an answer may take of the disk.

#include "platform_default/temporary_space.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <filesystem>

#include "platform/http.h"
#include "platform/http_settings.h"
#include "tests/support/measurement.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace {

using du::http::ErrorCode;
using du::http::FailoverFileSink;
using vtdirect_test::mebibyte;

class TemporarySpace : public testing::Test {
 protected:
  ~TemporarySpace() override { du::http::SetTransportSettings({}); }

  static void Allow(std::int64_t bytes) {
    du::http::TransportSettings settings;
    settings.largestTemporaryFile = bytes;
    du::http::SetTransportSettings(settings);
  }
  /// Writes until the sink refuses, in pieces of this size. Gives the bytes that it took.
  std::size_t Fill(FailoverFileSink& sink, std::size_t piece, std::size_t most) {
    const std::vector<std::uint8_t> bytes(piece, 'x');
    EXPECT_EQ(sink.Begin(200, std::nullopt), ErrorCode::Done);
    for (std::size_t taken = 0; taken < most; taken += piece) {
      refusal_ = sink.Write(bytes.data(), bytes.size());
      if (refusal_ != ErrorCode::Done) return taken;
    }
    return most;
  }
  [[nodiscard]] std::uintmax_t FileSize() const {
    std::uintmax_t size = 0;
    for (const std::string& name : directory_.Entries())
      size += std::filesystem::file_size(directory_.File(name));
    return size;
  }

  vtdirect_test::TemporaryDirectory directory_;
  vtdirect_test::TraceRecorder trace_;
  ErrorCode refusal_ = ErrorCode::Done;
};

TEST_F(TemporarySpace, IsASetting) {
  Allow(1000);
  {
    FailoverFileSink exact(10);
    EXPECT_EQ(Fill(exact, 100, 1000), 1000u);
    EXPECT_EQ(exact.Finish(), ErrorCode::Done);
    EXPECT_EQ(FileSize(), 1000u);
  }
  FailoverFileSink longer(10);
  EXPECT_EQ(Fill(longer, 100, 1'000'000), 1000u);
  EXPECT_EQ(refusal_, ErrorCode::LocalFileFailure);
  EXPECT_EQ(FileSize(), 1000u);
  std::filesystem::remove(longer.GetFilePath());
  ASSERT_EQ(trace_.lines().size(), 1u);
  EXPECT_NE(trace_.lines()[0].text.find("largestTemporaryFile"), std::string::npos);
}

TEST_F(TemporarySpace, IsTakenOnTheDiskAndNotInMemory) {
  Allow(64 * mebibyte);
  const vtdirect_test::Measurement measurement;
  FailoverFileSink sink(512 * 1024);
  EXPECT_EQ(Fill(sink, mebibyte, 256 * mebibyte), 64 * mebibyte);
  EXPECT_EQ(refusal_, ErrorCode::LocalFileFailure);
  EXPECT_LT(measurement.Record(), 8 * mebibyte);
  std::filesystem::remove(sink.GetFilePath());
}

TEST_F(TemporarySpace, CountsWhatIsStillInMemoryAtTheEnd) {
  Allow(1000);
  FailoverFileSink sink(512);
  EXPECT_EQ(Fill(sink, 1, 1001), 1001u);
  EXPECT_EQ(sink.Finish(), ErrorCode::LocalFileFailure);
}

TEST_F(TemporarySpace, IsNotAskedForWhatStaysInMemory) {
  Allow(1000);
  FailoverFileSink sink(5000);
  EXPECT_EQ(Fill(sink, 100, 5000), 5000u);
  EXPECT_EQ(sink.Finish(), ErrorCode::Done);
}

TEST_F(TemporarySpace, HasADefaultOf4GiB) {
  EXPECT_EQ(du::http::TransportSettings().largestTemporaryFile, 4'294'967'296);
  Allow(0);
  EXPECT_EQ(du::http::GetTransportSettings().largestTemporaryFile, 4'294'967'296);
}

TEST_F(TemporarySpace, LeavesTheLast64MiB) {
  using vtdirect::platform::LeavesEnough;
  EXPECT_TRUE(LeavesEnough(64 * mebibyte + 10, 10));
  EXPECT_FALSE(LeavesEnough(64 * mebibyte + 10, 11));
  EXPECT_FALSE(LeavesEnough(64 * mebibyte - 1, 0));
  EXPECT_FALSE(LeavesEnough(0, 1));
}

TEST_F(TemporarySpace, OfASmallFileSystemIsNotTakenToItsEnd) {
  // A file system of the test's own, which no other process sees.
  if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      mount("none", directory_.path().c_str(), "tmpfs", 0, "size=80m") != 0) {
    GTEST_SKIP() << "this user may not mount a file system";
  }
  {
    FailoverFileSink sink(64 * 1024);
    const std::size_t taken = Fill(sink, 100'000, 100 * mebibyte);
    EXPECT_EQ(refusal_, ErrorCode::LocalFileFailure);
    EXPECT_GT(taken, 15 * mebibyte);
    EXPECT_LT(taken, 17 * mebibyte);
    EXPECT_GE(std::filesystem::space(directory_.path()).available, 64 * mebibyte);
  }
  umount(directory_.path().c_str());
}

}  // namespace
