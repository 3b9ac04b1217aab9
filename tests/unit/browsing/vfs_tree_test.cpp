#include "browsing/vfs_tree.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <string>

#include "tests/support/temporary_directory.h"

namespace lxservices::cms_interface::vantry {
namespace {

// All parts of a split in one text, so that a case is one line.
std::string Parts(const ParsedVfsPath& path) {
  return std::to_string(static_cast<int>(path.kind)) + "[" + path.root + "][" + path.context + "][" +
         path.section + "][" + path.folderPath + "][" + path.leaf + "][" + path.version + "]";
}

class VfsTree : public testing::Test {
 protected:
  VfsTree() { setenv("FENLOOM_LANGUAGE", "en", 1); }
};

TEST_F(VfsTree, TheUpperLevelsHaveNames) {
  EXPECT_EQ(LocalisedVfsName(VfsNameId::Products), "Products");
  EXPECT_EQ(LocalisedVfsName(VfsNameId::Libraries), "Libraries");
  EXPECT_EQ(LocalisedVfsName(VfsNameId::Projects), "Projects");
  EXPECT_EQ(LocalisedVfsName(VfsNameId::Sites), "Sites");
  EXPECT_EQ(LocalisedVfsName(VfsNameId::Folders), "Folders");
  EXPECT_EQ(LocalisedVfsName(VfsNameId::Workspaces), "Workspaces");
  EXPECT_EQ(LocalisedVfsName(static_cast<VfsNameId>(0)), "");
  EXPECT_EQ(LocalisedVfsName(static_cast<VfsNameId>(7)), "");
}

TEST_F(VfsTree, NamesAreThoseOfTheLanguageAtEachUse) {
  vtdirect_test::TemporaryDirectory catalogues;
  const std::string folder = catalogues.File("cmsinterface");
  ASSERT_EQ(std::system(("mkdir " + folder).c_str()), 0);
  vtdirect_test::WriteFile(folder + "/cmsinterfaceStrings.xx.json", R"({"VantryVFSPathSites":"Sitios"})");
  setenv("FENLOOM_CATALOGUES", catalogues.path().c_str(), 1);
  EXPECT_EQ(KindOfRoot("Sites"), ContextKind::Site);
  setenv("FENLOOM_LANGUAGE", "xx", 1);
  EXPECT_EQ(LocalisedVfsName(VfsNameId::Sites), "Sitios");
  EXPECT_EQ(KindOfRoot("Sitios"), ContextKind::Site);
  EXPECT_EQ(KindOfRoot("Sites"), ContextKind::None);
  EXPECT_EQ(RootOfKind(ContextKind::Site), "Sitios");
}

TEST_F(VfsTree, ARootIsComparedExactly) {
  EXPECT_EQ(KindOfRoot("Products"), ContextKind::Product);
  EXPECT_EQ(KindOfRoot("Libraries"), ContextKind::Library);
  EXPECT_EQ(KindOfRoot("Projects"), ContextKind::Project);
  EXPECT_EQ(KindOfRoot("Sites"), ContextKind::Site);
  for (const char* root : {"products", "Product", "Folders", "Workspaces", "", " Products"}) {
    EXPECT_EQ(KindOfRoot(root), ContextKind::None) << root;
  }
}

TEST_F(VfsTree, OnlyTheFirstFourKindsHaveARoot) {
  EXPECT_EQ(RootOfKind(ContextKind::Product), "Products");
  EXPECT_EQ(RootOfKind(ContextKind::Site), "Sites");
  EXPECT_EQ(RootOfKind(ContextKind::Organization), "");
  EXPECT_EQ(RootOfKind(ContextKind::None), "");
}

struct SplitCase {
  const char* path;
  const char* parts;
};
void PrintTo(const SplitCase& split, std::ostream* out) {
  *out << split.path;
}

class DirectoryPath : public VfsTree, public testing::WithParamInterface<SplitCase> {};
TEST_P(DirectoryPath, IsTakenApart) {
  EXPECT_EQ(Parts(SplitDirectoryPath(GetParam().path)), GetParam().parts);
}
INSTANTIATE_TEST_SUITE_P(
    Table, DirectoryPath,
    testing::Values(SplitCase{"", "0[][][][][][]"}, SplitCase{"Products", "0[][][][][][]"},
                    SplitCase{"Products/", "1[Products][][][][][]"},
                    SplitCase{"Products/Ctx", "1[Products][][][][][]"},
                    SplitCase{"Products/Ctx/", "1[Products][Ctx][][][][]"},
                    SplitCase{"Products/Ctx/Folders", "1[Products][Ctx][Folders][][][]"},
                    SplitCase{"Products/Ctx/Folders/", "1[Products][Ctx][Folders][][][]"},
                    SplitCase{"Sites/Ctx/Folders/A/B/", "4[Sites][Ctx][Folders][A/B/][][]"},
                    SplitCase{"Sites/Ctx/Folders/A|1/B", "4[Sites][Ctx][Folders][A|1/B][][]"},
                    SplitCase{"Nowhere/Ctx/x/", "0[Nowhere][Ctx][x][][][]"}, SplitCase{"/", "0[][][][][][]"},
                    SplitCase{"//", "0[][][][][][]"}, SplitCase{"Products//x/y", "1[Products][][x][y][][]"},
                    SplitCase{"Libraries/C/Workspaces//", "2[Libraries][C][Workspaces][/][][]"}));

class FilePath : public VfsTree, public testing::WithParamInterface<SplitCase> {};
TEST_P(FilePath, IsTakenApart) {
  EXPECT_EQ(Parts(SplitFilePath(GetParam().path)), GetParam().parts);
}
INSTANTIATE_TEST_SUITE_P(
    Table, FilePath,
    testing::Values(SplitCase{"", "0[][][][][][]"}, SplitCase{"Products", "0[][][][][][]"},
                    SplitCase{"Products/Ctx/Folders", "1[Products][Ctx][Folders][][][]"},
                    SplitCase{"Products/Ctx/Folders/a.lxz", "1[Products][Ctx][Folders][][a.lxz][]"},
                    SplitCase{"Products/Ctx/Folders/A/B/a.lxz|B.3",
                              "1[Products][Ctx][Folders][A/B][a.lxz][B.3]"},
                    SplitCase{"Projects/Ctx/Folders/A|1/a", "3[Projects][Ctx][Folders][A|1][a][]"},
                    SplitCase{"Projects/Ctx/Folders/A/a|b|C.1", "3[Projects][Ctx][Folders][A][a|b][C.1]"},
                    SplitCase{"Projects/Ctx/Folders/A/a|", "3[Projects][Ctx][Folders][A][a][]"},
                    SplitCase{"Projects/Ctx/Folders/A/", "3[Projects][Ctx][Folders][A][][]"},
                    SplitCase{"Projects/Ctx/a|B.1", "3[Projects][Ctx][a|B.1][][][]"}));

TEST_F(VfsTree, AWorkspacesNameIsTheFolderPathWithoutOneSlash) {
  EXPECT_EQ(WorkspaceNameOf(SplitDirectoryPath("Products/C/Workspaces/mine/")), "mine");
  EXPECT_EQ(WorkspaceNameOf(SplitDirectoryPath("Products/C/Workspaces/mine")), "mine");
  EXPECT_EQ(WorkspaceNameOf(SplitDirectoryPath("Products/C/Workspaces/mine//")), "mine/");
  EXPECT_EQ(WorkspaceNameOf(SplitDirectoryPath("Products/C/Workspaces/")), "");
}

TEST_F(VfsTree, TheSwitchForLegacyBrowsingIsReadOnce) {
  unsetenv("FENLOOM_DC_FORCE_LEGACY_FILEBROWSE");
  EXPECT_FALSE(ForceLegacyFileBrowse());
  setenv("FENLOOM_DC_FORCE_LEGACY_FILEBROWSE", "1", 1);
  EXPECT_FALSE(ForceLegacyFileBrowse());
}

TEST_F(VfsTree, TheSwitchForLegacyBrowsingStaysOnOnceItWasRead) {
  setenv("FENLOOM_DC_FORCE_LEGACY_FILEBROWSE", "1", 1);
  EXPECT_TRUE(ForceLegacyFileBrowse());
  unsetenv("FENLOOM_DC_FORCE_LEGACY_FILEBROWSE");
  EXPECT_TRUE(ForceLegacyFileBrowse());
}

}  // namespace
}  // namespace lxservices::cms_interface::vantry
