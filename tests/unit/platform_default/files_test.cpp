#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <set>

#include "platform/files.h"
#include "tests/support/temporary_directory.h"

namespace {

using du::FileSpec;
using testing::ElementsAre;
using testing::IsEmpty;
using vtdirect_test::ReadFile;
using vtdirect_test::TemporaryDirectory;
using vtdirect_test::WriteFile;

std::string WholeOf(const FileSpec& spec) {
  std::string path = "(none)";
  spec.GetFileSpec(&path);
  return path;
}

std::string FileOf(const FileSpec& spec) {
  std::string name = "(none)";
  spec.GetFile(&name);
  return name;
}

std::vector<std::string> DirectoriesOf(const FileSpec& spec) {
  return {spec.DirBegin(), spec.DirEnd()};
}

TEST(FileSpec, SplitsAtTheLastSlash) {
  const FileSpec spec("/home/paula/part.drw");
  EXPECT_EQ(FileOf(spec), "part.drw");
  EXPECT_EQ(WholeOf(spec), "/home/paula/part.drw");
  EXPECT_EQ(spec.DirCount(), 2u);
  EXPECT_THAT(DirectoriesOf(spec), ElementsAre("home", "paula"));
}

TEST(FileSpec, KnowsEveryShapeOfAPath) {
  const struct {
    const char *path, *file, *whole;
  } examples[] = {{"part", "part", "part"},   {"a/part", "part", "a/part"},
                  {"/part", "part", "/part"}, {"a/b/", "(none)", "a/b/"},
                  {"/", "(none)", "/"},       {"", "(none)", "(none)"},
                  {"a//b", "b", "a/b"},       {"./x", "x", "./x"},
                  {"../x", "x", "../x"},      {"a/.hidden", ".hidden", "a/.hidden"}};
  for (const auto& example : examples) {
    EXPECT_EQ(FileOf(FileSpec(example.path)), example.file) << example.path;
    EXPECT_EQ(WholeOf(FileSpec(std::string(example.path))), example.whole) << example.path;
  }
  EXPECT_EQ(WholeOf(FileSpec(static_cast<const char*>(nullptr))), "(none)");
  EXPECT_EQ(WholeOf(FileSpec()), "(none)");
}

TEST(FileSpec, PutsAPathTogether) {
  for (const char* directory : {"/tmp/fenloom-1", "/tmp/fenloom-1/"}) {
    FileSpec spec;
    spec.SetLocation(directory);
    spec.SetFile("drawing 1.drw");
    EXPECT_EQ(WholeOf(spec), "/tmp/fenloom-1/drawing 1.drw");
  }
}

TEST(FileSpec, CountsTheComponentsOfADirectory) {
  FileSpec spec;
  spec.SetDirPath("Products/P1/Folders");
  EXPECT_THAT(DirectoriesOf(spec), ElementsAre("Products", "P1", "Folders"));
  spec.SetDirPath("//a///b/");
  EXPECT_THAT(DirectoriesOf(spec), ElementsAre("a", "b"));
  spec.SetDirPath("");
  EXPECT_EQ(spec.DirCount(), 0u);
  spec.SetDirPath("/");
  EXPECT_EQ(spec.DirCount(), 0u);
}

TEST(TemporaryFiles, LieWhereTheEnvironmentSays) {
  setenv("TMPDIR", "/var/tmp//", 1);
  EXPECT_EQ(du::FileSystem::GetTempDir(true), "/var/tmp");
  setenv("TMPDIR", "/", 1);
  EXPECT_EQ(du::FileSystem::GetTempDir(true), "/");
  setenv("TMPDIR", "", 1);
  EXPECT_EQ(du::FileSystem::GetTempDir(true), "/tmp");
  unsetenv("TMPDIR");
  EXPECT_EQ(du::FileSystem::GetTempDir(true), "/tmp");
}

TEST(TemporaryFiles, AreNewEmptyAndForTheirOwnerAlone) {
  const TemporaryDirectory directory;
  umask(0);
  const std::string path = du::FileSystem::MkTempFile(nullptr, "vtinfo", "txt");
  EXPECT_EQ(path.substr(0, directory.path().size() + 8), directory.path() + "/vtinfo-");
  EXPECT_EQ(path.substr(path.size() - 4), ".txt");
  EXPECT_EQ(ReadFile(path), "");
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST(TemporaryFiles, HaveNamesOfTheirOwn) {
  const TemporaryDirectory directory;
  std::set<std::string> names;
  for (int i = 0; i < 100; ++i) names.insert(du::FileSystem::MkTempFile(nullptr, "upload", "json"));
  EXPECT_EQ(names.size(), 100u);
  EXPECT_EQ(names.count(""), 0u);
}

TEST(TemporaryFiles, LieInTheDirectoryThatWasNamed) {
  const TemporaryDirectory directory;
  std::filesystem::create_directory(directory.File("inner"));
  const std::string path = du::FileSystem::MkTempFile(directory.File("inner").c_str(), "register", "json");
  EXPECT_EQ(std::filesystem::path(path).parent_path(), directory.File("inner"));
}

TEST(TemporaryFiles, CannotBeMadeInAMissingDirectoryOrUnderAnUnfitName) {
  const TemporaryDirectory directory;
  EXPECT_EQ(du::FileSystem::MkTempFile(directory.File("missing").c_str(), "a", "b"), "");
  EXPECT_EQ(du::FileSystem::MkTempFile(nullptr, "../a", "b"), "");
  EXPECT_EQ(du::FileSystem::MkTempFile(nullptr, "a", "b/c"), "");
  EXPECT_EQ(du::FileSystem::MkTempFile(nullptr, nullptr, "b"), "");
  EXPECT_EQ(du::FileSystem::MkTempDir("a/b"), "");
  EXPECT_THAT(directory.Entries(), IsEmpty());
  setenv("TMPDIR", directory.File("missing").c_str(), 1);
  EXPECT_EQ(du::FileSystem::MkTempFile(nullptr, "a", "b"), "");
  EXPECT_EQ(du::FileSystem::MkTempDir("a"), "");
}

TEST(TemporaryDirectories, AreForTheirOwnerAlone) {
  const TemporaryDirectory directory;
  umask(0);
  const std::string path = du::FileSystem::MkTempDir("fenloom");
  EXPECT_EQ(path.substr(0, directory.path().size() + 9), directory.path() + "/fenloom-");
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_TRUE(S_ISDIR(status.st_mode));
  EXPECT_EQ(status.st_mode & 07777, 0700u);
}

TEST(Unlink, RemovesAFileAndTellsWhyNot) {
  const TemporaryDirectory directory;
  WriteFile(directory.File("file"), "x");
  EXPECT_EQ(du::FileSystem::Unlink(directory.File("file").c_str(), false), 0);
  EXPECT_THAT(directory.Entries(), IsEmpty());
  errno = 0;
  EXPECT_EQ(du::FileSystem::Unlink(directory.File("file").c_str(), false), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(du::FileSystem::Unlink(directory.path().c_str(), false), -1);
  EXPECT_EQ(du::FileSystem::Unlink(nullptr, false), -1);
}

TEST(DeletePath, RemovesADirectoryWithItsContent) {
  const TemporaryDirectory directory;
  std::filesystem::create_directories(directory.File("gone/a/b/c"));
  WriteFile(directory.File("gone/a/file"), "x");
  EXPECT_TRUE(du::FileSystem::DeletePath(directory.File("gone"), false));
  EXPECT_THAT(directory.Entries(), IsEmpty());
}

TEST(DeletePath, NeverFollowsALink) {
  const TemporaryDirectory directory;
  std::filesystem::create_directory(directory.File("kept"));
  WriteFile(directory.File("kept/file"), "precious");
  std::filesystem::create_directory(directory.File("gone"));
  std::filesystem::create_directory_symlink(directory.File("kept"), directory.File("gone/link"));
  std::filesystem::create_directory_symlink(directory.File("kept"), directory.File("outer"));
  EXPECT_FALSE(du::FileSystem::DeletePath(directory.File("outer"), false));
  EXPECT_FALSE(du::FileSystem::DeletePath(directory.File("outer/"), false));
  EXPECT_TRUE(du::FileSystem::DeletePath(directory.File("gone"), false));
  EXPECT_EQ(ReadFile(directory.File("kept/file")), "precious");
  EXPECT_THAT(directory.Entries(), ElementsAre("kept", "outer"));
}

TEST(DeletePath, FailsForWhatIsNoDirectory) {
  const TemporaryDirectory directory;
  WriteFile(directory.File("file"), "x");
  EXPECT_FALSE(du::FileSystem::DeletePath(directory.File("file"), false));
  EXPECT_FALSE(du::FileSystem::DeletePath(directory.File("missing"), false));
  EXPECT_FALSE(du::FileSystem::DeletePath("", false));
  EXPECT_EQ(ReadFile(directory.File("file")), "x");
}

TEST(Lxfopen, OpensAsTheCLibraryDoes) {
  const TemporaryDirectory directory;
  std::FILE* file = du::FileSystem::lxfopen(directory.File("file").c_str(), "wb");
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(std::fputs("text", file), 1);
  EXPECT_EQ(std::fclose(file), 0);
  EXPECT_EQ(ReadFile(directory.File("file")), "text");
  EXPECT_EQ(du::FileSystem::lxfopen(directory.File("missing").c_str(), "rb"), nullptr);
  EXPECT_EQ(du::FileSystem::lxfopen("", "rb"), nullptr);
  EXPECT_EQ(du::FileSystem::lxfopen(nullptr, "rb"), nullptr);
}

}  // namespace
