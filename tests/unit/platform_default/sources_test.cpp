#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

#include "platform/http.h"
#include "tests/support/temporary_directory.h"

namespace {

using namespace du::http;
using vtdirect_test::TemporaryDirectory;

// A host that brings a platform of its own was built against this layout.
static_assert(std::is_standard_layout_v<Request>);
static_assert(offsetof(Request, method) == 0);
static_assert(offsetof(Request, uri) == 8);
static_assert(offsetof(Request, headers) == 16);
static_assert(offsetof(Request, body) == 24);
static_assert(offsetof(Request, secondSink) == 32);
static_assert(offsetof(Request, sink) == 40);
static_assert(sizeof(Request) == 48);
static_assert(sizeof(Method) == 4 && static_cast<int>(Method::Get) == 0 &&
              static_cast<int>(Method::Post) == 2 && static_cast<int>(Method::Patch) == 5);
static_assert(sizeof(ErrorCode) == 4 && static_cast<int>(ErrorCode::Done) == 0 &&
              static_cast<int>(ErrorCode::NoConnection) == 1 && static_cast<int>(ErrorCode::TooLarge) == 5);

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
static_assert(offsetof(CommonAuth, header) == 0);
static_assert(offsetof(CommonAuth, reauthenticate) == 8);
#pragma GCC diagnostic pop

static_assert(!std::is_copy_constructible_v<Connection> && !std::is_copy_constructible_v<FileSource> &&
              !std::is_copy_constructible_v<FileSink>);
static_assert(std::has_virtual_destructor_v<Connection> && std::has_virtual_destructor_v<FileSource> &&
              std::has_virtual_destructor_v<FileSink>);

/// Reads a source to its end in pieces of `piece` bytes.
std::string ReadAll(FileSource& source, std::size_t piece, ErrorCode* code = nullptr) {
  std::string all;
  std::string buffer(piece, '\0');
  while (true) {
    std::size_t count = 0;
    const ErrorCode result = source.Read(reinterpret_cast<std::uint8_t*>(buffer.data()), piece, &count);
    if (code != nullptr) *code = result;
    if (result != ErrorCode::Done || count == 0) return all;
    all.append(buffer, 0, count);
  }
}

const std::uint8_t* Bytes(const char* text) {
  return reinterpret_cast<const std::uint8_t*>(text);
}

TEST(BufferFileSource, ServesItsBytesInPieces) {
  BufferFileSource source(Bytes("seven b"), 7);
  EXPECT_EQ(source.Size(), 7u);
  EXPECT_EQ(ReadAll(source, 3), "seven b");
  EXPECT_EQ(ReadAll(source, 3), "");
  EXPECT_TRUE(source.Rewind());
  EXPECT_EQ(ReadAll(source, 100), "seven b");
}

TEST(BufferFileSource, MayBeEmpty) {
  BufferFileSource nothing(nullptr, 0);
  EXPECT_EQ(nothing.Size(), 0u);
  EXPECT_EQ(ReadAll(nothing, 8), "");
  BufferFileSource null(nullptr, 5);
  EXPECT_EQ(null.Size(), 0u);
  EXPECT_EQ(ReadAll(null, 8), "");
}

TEST(BufferFileSource, SeesChangesOfItsBuffer) {
  char buffer[] = "before";
  BufferFileSource source(Bytes(buffer), 6);
  buffer[0] = 'B';
  EXPECT_EQ(ReadAll(source, 8), "Before");
}

TEST(DiskFileSource, ServesAFile) {
  const TemporaryDirectory directory;
  vtdirect_test::WriteFile(directory.File("body"), std::string("nul\0in it", 9));
  DiskFileSource source(directory.File("body").c_str());
  EXPECT_EQ(source.Size(), 9u);
  EXPECT_EQ(ReadAll(source, 4), std::string("nul\0in it", 9));
  EXPECT_TRUE(source.Rewind());
  EXPECT_EQ(ReadAll(source, 4), std::string("nul\0in it", 9));
}

TEST(DiskFileSource, IsHarmlessWithoutAPath) {
  for (const char* path : {static_cast<const char*>(nullptr), ""}) {
    DiskFileSource source(path);
    EXPECT_EQ(source.Size(), std::nullopt);
    EXPECT_TRUE(source.Rewind());
    ErrorCode code = ErrorCode::Done;
    EXPECT_EQ(ReadAll(source, 4, &code), "");
    EXPECT_EQ(code, ErrorCode::LocalFileFailure);
  }
}

TEST(DiskFileSource, FailsForWhatCannotBeRead) {
  const TemporaryDirectory directory;
  for (const std::string& path : {directory.File("missing"), directory.path()}) {
    DiskFileSource source(path.c_str());
    EXPECT_EQ(source.Size(), std::nullopt) << path;
    ErrorCode code = ErrorCode::Done;
    ReadAll(source, 4, &code);
    EXPECT_EQ(code, ErrorCode::LocalFileFailure) << path;
  }
}

TEST(ProgressSource, ReportsWhatWasServed) {
  BufferFileSource inner(Bytes("0123456789"), 10);
  std::vector<std::pair<std::size_t, std::size_t>> reports;
  ProgressSource source(inner, [&reports](std::size_t done, std::size_t total) {
    reports.emplace_back(done, total);
    return true;
  });
  EXPECT_EQ(source.Size(), 10u);
  EXPECT_EQ(ReadAll(source, 4), "0123456789");
  EXPECT_EQ(reports, (std::vector<std::pair<std::size_t, std::size_t>>{{4, 10}, {8, 10}, {10, 10}}));
}

TEST(ProgressSource, CountsAnewBehindARewind) {
  BufferFileSource inner(Bytes("0123"), 4);
  std::vector<std::size_t> reports;
  ProgressSource source(inner, [&reports](std::size_t done, std::size_t) {
    reports.push_back(done);
    return true;
  });
  ReadAll(source, 4);
  EXPECT_TRUE(source.Rewind());
  EXPECT_EQ(ReadAll(source, 4), "0123");
  EXPECT_EQ(reports, (std::vector<std::size_t>{4, 4}));
}

TEST(ProgressSource, CancelsWhenItsFunctionSaysSo) {
  BufferFileSource inner(Bytes("0123"), 4);
  ProgressSource source(inner, [](std::size_t, std::size_t) { return false; });
  ErrorCode code = ErrorCode::Done;
  EXPECT_EQ(ReadAll(source, 2, &code), "");
  EXPECT_EQ(code, ErrorCode::Cancelled);
}

TEST(ProgressSource, WorksWithoutAFunctionAndHandsFailuresOn) {
  BufferFileSource inner(Bytes("0123"), 4);
  ProgressSource silent(inner, {});
  EXPECT_EQ(ReadAll(silent, 3), "0123");
  DiskFileSource broken("");
  ProgressSource source(broken, [](std::size_t, std::size_t) { return true; });
  EXPECT_EQ(source.Size(), std::nullopt);
  ErrorCode code = ErrorCode::Done;
  ReadAll(source, 3, &code);
  EXPECT_EQ(code, ErrorCode::LocalFileFailure);
}

}  // namespace
