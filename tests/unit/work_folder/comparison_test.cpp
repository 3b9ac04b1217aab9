#include "hosts/cli/work_folder/comparison.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {
namespace {

constexpr const char* oldUid = "korvufenloom-vt://plm.example/vt/?id=D1&file=/f";
constexpr const char* newUid = "korvufenloom-vt://plm.example/vt/?id=D2&file=/f";

// What is here, what is there, and what that is called.
struct Case {
  const char* name;
  std::optional<LocalState> kept;  // nothing: nothing is kept of it
  bool isHere;
  const char* uidThere;  // null: the server does not have it
  FileState expected;
};

const Case cases[] = {
    {"Same", LocalState::Same, true, oldUid, FileState::Same},
    {"Modified", LocalState::Modified, true, oldUid, FileState::Modified},
    {"Newer", LocalState::Same, true, newUid, FileState::Newer},
    {"Both", LocalState::Modified, true, newUid, FileState::Both},
    {"Missing", LocalState::Missing, false, oldUid, FileState::Missing},
    {"MissingAndNewer", LocalState::Missing, false, newUid, FileState::Missing},
    {"New", std::nullopt, false, newUid, FileState::New},
    {"InTheWay", std::nullopt, true, newUid, FileState::InTheWay},
    {"Unknown", std::nullopt, true, nullptr, FileState::Unknown},
    {"Gone", LocalState::Same, true, nullptr, FileState::Gone},
    {"GoneAndModified", LocalState::Modified, true, nullptr, FileState::Gone},
};

class Comparing : public testing::TestWithParam<Case> {};

INSTANTIATE_TEST_SUITE_P(States, Comparing, testing::ValuesIn(cases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(Comparing, CallsAFileByBothSides) {
  const Case& param = GetParam();
  LocalSide local;
  RemoteTree tree;
  if (param.kept) {
    local.kept["a/f"] = {"a/f", "//plm/a/f", oldUid, "A.1", 1, 1, "x"};
    local.states["a/f"] = *param.kept;
  }
  if (param.isHere) local.files.push_back("a/f");
  if (param.uidThere != nullptr) tree.documents["a/f"] = {"a/f", "//plm/a/f", param.uidThere, "A.2"};
  const auto compared = Compare(local, tree);
  ASSERT_EQ(compared.size(), 1U);
  EXPECT_STREQ(WordOf(compared.front().state), WordOf(param.expected));
  EXPECT_EQ(compared.front().isModified, param.kept == LocalState::Modified);
}

TEST(Comparing, NeverTakesWhatCouldNotBeAskedForAsGone) {
  LocalSide local;
  for (const char* path : {"a/b/f", "a/g", "c"}) {
    local.kept[path] = {path, "", oldUid, "A.1", 1, 1, "x"};
    local.states[path] = LocalState::Modified;
  }
  RemoteTree tree;
  tree.unknown = {"a/"};
  const auto compared = Compare(local, tree);
  ASSERT_EQ(compared.size(), 3U);
  EXPECT_STREQ(WordOf(compared[0].state), "modified");
  EXPECT_STREQ(WordOf(compared[1].state), "modified");
  EXPECT_STREQ(WordOf(compared[2].state), "gone");
}

TEST(Comparing, SortsByPath) {
  LocalSide local;
  local.files = {"b", "z"};
  RemoteTree tree;
  tree.documents["a"] = {"a", "", newUid, "A.2"};
  tree.documents["y"] = {"y", "", newUid, "A.2"};
  std::string paths;
  for (const Comparison& comparison : Compare(local, tree)) paths += comparison.path;
  EXPECT_EQ(paths, "abyz");
}

}  // namespace
}  // namespace vtdirect_cli
