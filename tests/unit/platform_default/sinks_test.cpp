#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "platform/http.h"
#include "tests/support/temporary_directory.h"

namespace {

using namespace du::http;
using testing::IsEmpty;
using testing::SizeIs;
using vtdirect_test::ReadFile;
using vtdirect_test::TemporaryDirectory;
using vtdirect_test::WriteFile;

ErrorCode Write(FileSink& sink, const std::string& text) {
  return sink.Write(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

/// A whole response; the first result that isn't Done, else Done.
ErrorCode Pour(FileSink& sink, int status, const std::vector<std::string>& pieces) {
  std::uint64_t length = 0;
  for (const std::string& piece : pieces) length += piece.size();
  if (const ErrorCode begun = sink.Begin(status, length); begun != ErrorCode::Done) return begun;
  for (const std::string& piece : pieces) {
    if (const ErrorCode written = Write(sink, piece); written != ErrorCode::Done) return written;
  }
  return sink.Finish();
}

TEST(StringFileSink, KeepsTheFirst1024BytesOfAnErrorPageOf5000) {
  std::string page;
  for (int i = 0; i < 5000; ++i) page += static_cast<char>('a' + i % 26);
  std::string target;
  StringFileSink sink(target, 1024);
  EXPECT_EQ(Pour(sink, 500, {page.substr(0, 1000), page.substr(1000, 100), page.substr(1100)}),
            ErrorCode::Done);
  EXPECT_EQ(target, page.substr(0, 1024));
}

TEST(StringFileSink, AppendsToWhatIsThere) {
  std::string target = "before ";
  StringFileSink sink(target, 4);
  EXPECT_EQ(Pour(sink, 200, {"exact", "more"}), ErrorCode::Done);
  EXPECT_EQ(target, "before exac");
}

TEST(StringFileSink, TakesNothingWithALimitOfZero) {
  std::string target;
  StringFileSink sink(target, 0);
  EXPECT_EQ(Pour(sink, 200, {"text"}), ErrorCode::Done);
  EXPECT_EQ(target, "");
}

TEST(DiskFileSink, ReplacesWhatWasThere) {
  const TemporaryDirectory directory;
  const std::string path = directory.File("target");
  WriteFile(path, "a longer text than the new one");
  DiskFileSink sink(path.c_str());
  EXPECT_EQ(Pour(sink, 200, {"new ", "text"}), ErrorCode::Done);
  EXPECT_EQ(ReadFile(path), "new text");
}

TEST(DiskFileSink, WritesAnEmptyBody) {
  const TemporaryDirectory directory;
  DiskFileSink sink(directory.File("target").c_str());
  EXPECT_EQ(Pour(sink, 204, {}), ErrorCode::Done);
  EXPECT_EQ(ReadFile(directory.File("target")), "");
}

TEST(DiskFileSink, LeavesTheTargetAloneUntilTheResponseBegins) {
  const TemporaryDirectory directory;
  WriteFile(directory.File("target"), "older");
  { DiskFileSink sink(directory.File("target").c_str()); }
  { DiskFileSink sink(directory.File("never made").c_str()); }
  EXPECT_EQ(ReadFile(directory.File("target")), "older");
  EXPECT_THAT(directory.Entries(), testing::ElementsAre("target"));
}

TEST(DiskFileSink, TakesTheBodyOfARefusalAsWell) {
  const TemporaryDirectory directory;
  DiskFileSink sink(directory.File("target").c_str());
  EXPECT_EQ(Pour(sink, 404, {"not here"}), ErrorCode::Done);
  EXPECT_EQ(ReadFile(directory.File("target")), "not here");
}

TEST(DiskFileSink, FailsForATargetThatCannotBeWritten) {
  const TemporaryDirectory directory;
  for (const std::string& path : {directory.path(), directory.File("missing/target"), std::string()}) {
    DiskFileSink sink(path.c_str());
    EXPECT_EQ(sink.Begin(200, std::nullopt), ErrorCode::LocalFileFailure) << path;
  }
  DiskFileSink null(nullptr);
  EXPECT_EQ(null.Begin(200, std::nullopt), ErrorCode::LocalFileFailure);
}

TEST(DiskFileSink, WaitsForNobodyToReadAPipe) {
  const TemporaryDirectory directory;
  ASSERT_EQ(mkfifo(directory.File("pipe").c_str(), 0600), 0);
  DiskFileSink sink(directory.File("pipe").c_str());
  EXPECT_EQ(sink.Begin(200, 4), ErrorCode::LocalFileFailure);
}

TEST(DiskFileSink, FailsOnAFullDisk) {
  DiskFileSink sink("/dev/full");
  EXPECT_EQ(sink.Begin(200, 4), ErrorCode::Done);
  EXPECT_EQ(Write(sink, "text"), ErrorCode::LocalFileFailure);
}

TEST(FailoverFileSink, KeepsABodyWithinItsLimitInMemory) {
  const TemporaryDirectory directory;
  FailoverFileSink sink(8);
  EXPECT_EQ(Pour(sink, 200, {"exact", "ly8"}), ErrorCode::Done);
  EXPECT_EQ(sink.GetFilePath(), "");
  const std::vector<std::uint8_t> body = sink.AdoptBuffer();
  EXPECT_EQ(std::string(body.begin(), body.end()), "exactly8");
  EXPECT_THAT(directory.Entries(), IsEmpty());
}

TEST(FailoverFileSink, MovesALongerBodyIntoAFile) {
  const TemporaryDirectory directory;
  std::string path;
  {
    FailoverFileSink sink(8);
    EXPECT_EQ(Pour(sink, 200, {"within", " limit", " and on"}), ErrorCode::Done);
    path = sink.GetFilePath();
    EXPECT_EQ(path.substr(0, directory.path().size() + 1), directory.path() + "/");
    EXPECT_THAT(sink.AdoptBuffer(), IsEmpty());
  }
  // Who asked for the path reads the file after the sink's life and deletes it.
  EXPECT_EQ(ReadFile(path), "within limit and on");
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST(FailoverFileSink, MovesAtTheFirstByteAboveItsLimit) {
  const TemporaryDirectory directory;
  FailoverFileSink sink(8);
  EXPECT_EQ(Pour(sink, 200, {"nine byte"}), ErrorCode::Done);
  EXPECT_EQ(ReadFile(sink.GetFilePath()), "nine byte");
}

TEST(FailoverFileSink, KeepsTheOrderOfPiecesSmallAndLargeInItsFile) {
  const TemporaryDirectory directory;
  FailoverFileSink sink(8);
  EXPECT_EQ(
      Pour(sink, 200, {"one ", "two ", "three ", "a piece above the limit ", "4", "", " and five", "!"}),
      ErrorCode::Done);
  EXPECT_EQ(ReadFile(sink.GetFilePath()), "one two three a piece above the limit 4 and five!");
  EXPECT_THAT(sink.AdoptBuffer(), IsEmpty());
}

TEST(FailoverFileSink, RemovesAFileThatNobodyAskedFor) {
  const TemporaryDirectory directory;
  {
    FailoverFileSink sink(1);
    EXPECT_EQ(Pour(sink, 200, {"longer"}), ErrorCode::Done);
    EXPECT_THAT(directory.Entries(), SizeIs(1));
  }
  EXPECT_THAT(directory.Entries(), IsEmpty());
}

TEST(FailoverFileSink, HandsTheFileOutInTheMiddleOfAnExchangeThatFailed) {
  const TemporaryDirectory directory;
  std::string path;
  {
    FailoverFileSink sink(1);
    EXPECT_EQ(sink.Begin(200, 1000), ErrorCode::Done);
    EXPECT_EQ(Write(sink, "part"), ErrorCode::Done);
    path = sink.GetFilePath();
  }
  EXPECT_EQ(ReadFile(path), "part");
}

TEST(FailoverFileSink, BelievesNoAnnouncedLength) {
  const TemporaryDirectory directory;
  FailoverFileSink sink(8);
  EXPECT_EQ(sink.Begin(200, ~std::uint64_t{0}), ErrorCode::Done);
  EXPECT_EQ(Write(sink, "short"), ErrorCode::Done);
  EXPECT_EQ(sink.Finish(), ErrorCode::Done);
  EXPECT_EQ(sink.GetFilePath(), "");
  EXPECT_THAT(sink.AdoptBuffer(), SizeIs(5));
}

TEST(FailoverFileSink, FailsWithoutADirectoryForItsFile) {
  const TemporaryDirectory directory;
  setenv("TMPDIR", directory.File("missing").c_str(), 1);
  FailoverFileSink sink(1);
  EXPECT_EQ(Pour(sink, 200, {"longer"}), ErrorCode::LocalFileFailure);
  EXPECT_EQ(sink.GetFilePath(), "");
}

/// Counts what it is told.
class WatchedSink final : public FileSink {
 public:
  ErrorCode Begin(int httpStatus, std::optional<std::uint64_t> length) override {
    status = httpStatus;
    expected = length;
    return result;
  }
  ErrorCode Write(const std::uint8_t* data, std::size_t count) override {
    body.append(reinterpret_cast<const char*>(data), count);
    return result;
  }
  ErrorCode Finish() override {
    ++finished;
    return result;
  }
  int status = 0;
  std::optional<std::uint64_t> expected;
  std::string body;
  int finished = 0;
  ErrorCode result = ErrorCode::Done;
};

TEST(HttpSuccessFileSink, HandsA404ToItsFailureSinkOnly) {
  WatchedSink success, failure;
  HttpSuccessFileSink sink(&success, &failure);
  EXPECT_EQ(Pour(sink, 404, {"not ", "here"}), ErrorCode::Done);
  EXPECT_EQ(failure.body, "not here");
  EXPECT_EQ(failure.status, 404);
  EXPECT_EQ(failure.finished, 1);
  EXPECT_EQ(success.body, "");
  EXPECT_EQ(success.status, 0);
  EXPECT_EQ(success.finished, 0);
}

TEST(HttpSuccessFileSink, TakesTwoHundredToTwoNinetyNineAsSuccess) {
  for (const auto& [status, isSuccess] : std::vector<std::pair<int, bool>>{
           {199, false}, {200, true}, {204, true}, {299, true}, {300, false}, {401, false}, {500, false}}) {
    WatchedSink success, failure;
    HttpSuccessFileSink sink(&success, &failure);
    EXPECT_EQ(Pour(sink, status, {"body"}), ErrorCode::Done);
    EXPECT_EQ(success.body, isSuccess ? "body" : "") << status;
    EXPECT_EQ(failure.body, isSuccess ? "" : "body") << status;
  }
}

TEST(HttpSuccessFileSink, ThrowsAwayWhatHasNoSink) {
  HttpSuccessFileSink sink(nullptr, nullptr);
  EXPECT_EQ(Pour(sink, 200, {"body"}), ErrorCode::Done);
}

TEST(ProgressSink, PassesAllOnAndReports) {
  WatchedSink next;
  std::vector<std::pair<std::size_t, std::size_t>> reports;
  ProgressSink sink(
      [&reports](std::size_t done, std::size_t total) {
        reports.emplace_back(done, total);
        return true;
      },
      &next);
  EXPECT_EQ(Pour(sink, 200, {"four", "three"}), ErrorCode::Done);
  EXPECT_EQ(next.body, "fourthree");
  EXPECT_EQ(next.status, 200);
  EXPECT_EQ(next.expected, 9u);
  EXPECT_EQ(next.finished, 1);
  EXPECT_EQ(reports, (std::vector<std::pair<std::size_t, std::size_t>>{{4, 9}, {9, 9}}));
}

TEST(ProgressSink, ReportsZeroForAnUnknownTotal) {
  std::size_t total = 7;
  ProgressSink sink(
      [&total](std::size_t, std::size_t all) {
        total = all;
        return true;
      },
      nullptr);
  EXPECT_EQ(sink.Begin(200, std::nullopt), ErrorCode::Done);
  EXPECT_EQ(Write(sink, "x"), ErrorCode::Done);
  EXPECT_EQ(total, 0u);
}

TEST(ProgressSink, CancelsWhenItsFunctionSaysSo) {
  WatchedSink next;
  ProgressSink sink([](std::size_t done, std::size_t) { return done < 6; }, &next);
  EXPECT_EQ(Pour(sink, 200, {"four", "three"}), ErrorCode::Cancelled);
  EXPECT_EQ(next.finished, 0);
}

TEST(ProgressSink, HandsFailuresOnAndWorksWithoutAFunction) {
  WatchedSink next;
  ProgressSink silent({}, &next);
  EXPECT_EQ(Pour(silent, 200, {"x"}), ErrorCode::Done);
  next.result = ErrorCode::LocalFileFailure;
  ProgressSink sink([](std::size_t, std::size_t) { return true; }, &next);
  EXPECT_EQ(Pour(sink, 200, {"x"}), ErrorCode::LocalFileFailure);
  EXPECT_EQ(Write(sink, "x"), ErrorCode::LocalFileFailure);
}

}  // namespace
