#include "connection/scoped_temp_path.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>

#include "base/tracers.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using vtdirect_test::TraceLine;

class ScopedTempPathTest : public testing::Test {
 protected:
  vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::TraceRecorder trace;
};

TEST_F(ScopedTempPathTest, RemovesItsFileAndSaysNothing) {
  const std::string file = directory.File("a.txt");
  vtdirect_test::WriteFile(file, "x");
  {
    const ScopedTempPath held(file);
    EXPECT_EQ(held.path(), file);
    EXPECT_TRUE(std::filesystem::exists(file));
  }
  EXPECT_THAT(directory.Entries(), IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ScopedTempPathTest, RemovesADirectoryWithItsContent) {
  const std::string path = directory.File("d");
  std::filesystem::create_directories(path + "/inner");
  vtdirect_test::WriteFile(path + "/inner/a.txt", "x");
  { const ScopedTempPath held(path, true); }
  EXPECT_THAT(directory.Entries(), IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ScopedTempPathTest, HoldsNothingWithAnEmptyPath) {
  { const ScopedTempPath held(""); }
  { const ScopedTempPath held("", true); }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(ScopedTempPathTest, TracesAFileThatCannotBeRemoved) {
  const std::string file = directory.File("gone.txt");
  { const ScopedTempPath held(file); }
  EXPECT_THAT(
      trace.lines(),
      ElementsAre(TraceLine{3, "VtDirect", "Failed to unlink file " + file + ": No such file or directory"}));
  EXPECT_THAT(trace.strayAreas(), IsEmpty());
}

TEST_F(ScopedTempPathTest, TracesADirectoryThatCannotBeRemoved) {
  const std::string path = directory.File("gone");
  { const ScopedTempPath held(path, true); }
  EXPECT_THAT(trace.lines(), ElementsAre(TraceLine{3, "VtDirect", "Failed to delete path " + path}));
}

TEST_F(ScopedTempPathTest, TracesAPathWithPercentSignsAsItStands) {
  const std::string file = directory.File("100%s%n");
  { const ScopedTempPath held(file); }
  EXPECT_THAT(
      trace.lines(),
      ElementsAre(TraceLine{3, "VtDirect", "Failed to unlink file " + file + ": No such file or directory"}));
}

TEST_F(ScopedTempPathTest, TracesByTheTracerThatItIsGiven) {
  const std::string path = directory.File("gone");
  RemoveTempPath(path, true, lxservices::cms_interface::VtDirectUtilsTracer());
  EXPECT_THAT(trace.lines(), ElementsAre(TraceLine{3, "VtDirectUtils", "Failed to delete path " + path}));
}

TEST_F(ScopedTempPathTest, MakesTemporaryFilesForTheirOwnerAlone) {
  const std::string path = MakeTempFile("vtinfo", "txt");
  EXPECT_THAT(path, MatchesRegex(directory.path() + "/vtinfo.*\\.txt"));
  struct stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  EXPECT_EQ(status.st_size, 0);
  EXPECT_NE(MakeTempFile("vtinfo", "txt"), path);
}

TEST_F(ScopedTempPathTest, MakesNoFileWithoutADirectoryForIt) {
  setenv("TMPDIR", directory.File("missing").c_str(), 1);
  EXPECT_EQ(MakeTempFile("vtinfo", "txt"), "");
}

}  // namespace
