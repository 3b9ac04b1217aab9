#include <array>

#include "public/vt_direct_manager.h"
#include "tests/unit/public/fake_server.h"

namespace {

using namespace VtDirectManager;
using namespace vtdirect_test;

constexpr const char* uidOfD1 = "korvufenloom-vt://plm.example/vt/?id=D1";

using FileNames = FakeServerTest;
using FileExistence = FakeServerTest;

struct NameCase {
  const char* address;
  const char* name;
};

TEST_F(FileNames, OfAUidAreThoseOfItsFileParameterEscapedAsInAPath) {
  constexpr std::array cases{
      NameCase{"korvufenloom-vt://s/?id=7&file=/fork.lxz", "fork.lxz"},
      NameCase{"korvufenloom-vt://s/?file=/fork.lxz&id=7", "fork.lxz"},
      NameCase{"korvufenloom-vt://s/?id=7&file=/a%7Cb", "a%7cb"},
      NameCase{"korvufenloom-vt://s/?id=7&file=/a%20b", "a b"},
      NameCase{"korvufenloom-vt://s/?id=7&file=/a/b", "a%2fb"},
      NameCase{"korvufenloom-vt://s/?id=7&file=//", "%2f"},
      NameCase{"korvufenloom-vt://s/?id=7&file=/100%25", "100%25"},
      NameCase{"korvufenloom-vt://s/?id=7&file=/%C3%BC", "\xc3\xbc"},
      // A value in another form counts as a whole.
      NameCase{"korvufenloom-vt://s/?id=7&file=fork%7C", "fork%7c"},
      NameCase{"korvufenloom-vt://s/?id=7&file=/", "%2f"},
      NameCase{"korvufenloom-vt://s/?id=7&file=x/y", "x%2fy"},
      NameCase{"korvufenloom-vt://s/?id=7&file=x", "x"},
  };
  for (const auto& [address, name] : cases) EXPECT_EQ(GetFileName(address), name) << address;
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(FileNames, OfAPathAreItsLastSegmentWithoutTheVersion) {
  constexpr std::array cases{
      NameCase{"korvufenloom-vfs://plm/P/C/F/a|B.3", "a"},
      NameCase{"korvufenloom-vfs://plm/P/C/F/a", "a"},
      NameCase{"korvufenloom-vfs://plm/P/C/F/a/", ""},
      NameCase{"korvufenloom-vfs://plm/P/x|y/a", "a"},
      NameCase{"korvufenloom-vfs://plm/a%7cb|B.3", "a%7cb"},
      NameCase{"korvufenloom-vfs://plm/a|b|c", "a"},
      NameCase{"korvufenloom-vfs://plm/|B.3", ""},
      NameCase{"korvufenloom-vfs:/a", "a"},
      NameCase{"korvufenloom-vfs://plm", "plm"},
      NameCase{"korvufenloom-vfs://nobody/a", "a"},
  };
  for (const auto& [address, name] : cases) EXPECT_EQ(GetFileName(address), name) << address;
  EXPECT_TRUE(answers.calls.empty());
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(FileNames, OfALegacyPathAreItsLastSegmentWhenThatSchemeIsOn) {
  SetAppConfig(ConfigLegacyVfsPaths, "1");
  EXPECT_EQ(GetFileName("vndir://plm/P/a|B.3"), "a");
}

TEST_F(FileNames, OfAUidWithoutAFileParameterAreAskedFor) {
  answers.infos["D1"].cadName = "a|b";
  EXPECT_EQ(GetFileName(uidOfD1), "a%7cb");
  EXPECT_EQ(GetFileName("korvufenloom-vt://plm.example/vt/?id=D1&file="), "a%7cb");
  EXPECT_EQ(answers.calls, (Lines{"GetFileInfo(D1)", "GetFileInfo(D1)"}));
}

// The bare form is no VFS path to IsVFSPath, so its name comes from the server.
TEST_F(FileNames, OfTheBareFormAreAskedFor) {
  answers.idsByPath["P/a|B.3"] = "D1";
  answers.infos["D1"].cadName = "fork.lxz";
  EXPECT_EQ(GetFileName("//plm/P/a|B.3"), "fork.lxz");
  EXPECT_EQ(answers.calls, (Lines{"ResolvePath(P/a|B.3)", "GetFileInfo(D1)"}));
}

TEST_F(FileNames, OfAnEmptyTextAreEmptyWithoutATrace) {
  EXPECT_EQ(GetFileName(""), "");
  EXPECT_EQ(GetFileName(nullptr), "");
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(FileNames, OfAnUnknownServerAreEmptyAndLoud) {
  EXPECT_EQ(GetFileName("//nobody/a"), "");
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to connect to server path //nobody/a\n"}}));
}

TEST_F(FileNames, OfAnObjectThatIsNotFoundAreEmptyAndLoud) {
  EXPECT_EQ(GetFileName("//plm/a"), "");
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to find file //plm/a"}}));
}

TEST_F(FileNames, OfAnObjectThatCannotBeReadAreEmptyAndLoud) {
  EXPECT_EQ(GetFileName(uidOfD1), "");
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", std::string("Failed to find file ") + uidOfD1}}));
}

TEST_F(FileNames, OfAPathWithoutASlashAreAskedFor) {
  EXPECT_EQ(GetFileName("korvufenloom-vfs:x"), "");
  EXPECT_EQ(trace.lines(),
            (Traces{{3, "VtDirect", "Failed to connect to server path korvufenloom-vfs:x\n"}}));
}

TEST_F(FileExistence, IsThatTheObjectCanBeRead) {
  answers.idsByPath["a"] = "D1";
  answers.infos["D1"] = {};
  EXPECT_TRUE(FileExists("//plm/a"));
  EXPECT_TRUE(FileExists(uidOfD1));
  EXPECT_EQ(answers.calls, (Lines{"ResolvePath(a)", "GetFileInfo(D1)", "GetFileInfo(D1)"}));
}

TEST_F(FileExistence, FailsForAnObjectThatCannotBeRead) {
  EXPECT_FALSE(FileExists(uidOfD1));
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(FileExistence, FailsForAPathWithoutAnObject) {
  EXPECT_FALSE(FileExists("//plm/a"));
  EXPECT_EQ(trace.lines(), (Traces{{1, "VtDirect", "Failed to find file //plm/a"}}));
}

}  // namespace
