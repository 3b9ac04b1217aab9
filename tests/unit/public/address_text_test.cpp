#include "public/address_text.h"

#include <gtest/gtest.h>

#include <array>

#include "public/vt_direct_manager.h"

namespace {

using namespace VtDirectManager;
using namespace lxservices::cms_interface;

void TurnLegacyPathsOn() {
  SetAppConfig(ConfigLegacyVfsPaths, "1");
}

struct Recognised {
  const char* text;
  bool yes;
};

TEST(VfsPathRecognition, TakesTheSchemeAndAColon) {
  constexpr std::array cases{
      Recognised{"korvufenloom-vfs://plm/a", true},
      Recognised{"korvufenloom-vfs:x", true},
      Recognised{"korvufenloom-vfs:", true},
      Recognised{"korvufenloom-vfs", false},
      Recognised{"korvufenloom-vfsx://plm/a", false},
      Recognised{"Korvufenloom-vfs://plm/a", false},
      Recognised{"KORVUFENLOOM-VFS://plm/a", false},
      Recognised{" korvufenloom-vfs://plm/a", false},
      Recognised{"//plm/x", false},
      Recognised{"korvufenloom-vt://s/?id=1", false},
      Recognised{"vndir://plm/a", false},
      Recognised{"", false},
  };
  for (const auto& [text, yes] : cases) EXPECT_EQ(IsVFSPath(text), yes) << text;
  EXPECT_FALSE(IsVFSPath(nullptr));
}

TEST(VfsPathRecognition, TakesTheLegacySchemeOnlyWhenItIsOn) {
  TurnLegacyPathsOn();
  constexpr std::array cases{
      Recognised{"vndir://plm/a", true},      Recognised{"vndir://", true},
      Recognised{"vndir://?id=1", false},     Recognised{"vndir://?", false},
      Recognised{"vndir:x", false},           Recognised{"vndir:/plm/a", false},
      Recognised{"vndirx://plm", false},      Recognised{"vndir", false},
      Recognised{"korvufenloom-vfs:x", true}, Recognised{"//plm/x", false},
      Recognised{"VNDIR://p", false},         Recognised{"http://plm/a", false},
  };
  for (const auto& [text, yes] : cases) EXPECT_EQ(IsVFSPath(text), yes) << text;
}

TEST(UidRecognition, NeedsTheSchemeAndAnId) {
  constexpr std::array cases{
      Recognised{"korvufenloom-vt://s/?id=7", true},
      Recognised{"korvufenloom-vt://s/?id=", true},
      Recognised{"korvufenloom-vt://s/?file=/a&id=7", true},
      Recognised{"korvufenloom-vt://s/&id=7?file=/a", false},
      Recognised{"korvufenloom-vt://s/?ids=7", false},
      Recognised{"korvufenloom-vt://s/?xid=7", false},
      Recognised{"korvufenloom-vt://s/", false},
      Recognised{"korvufenloom-vt://s/id=7", false},
      Recognised{"korvufenloom-vt://s/?ID=7", false},
      Recognised{"korvufenloom-vt:x", false},
      // The prefix alone is compared, and "?id=" may be anywhere.
      Recognised{"korvufenloom-vtx://s/?id=7", true},
      Recognised{"korvufenloom-vt?id=", true},
      Recognised{"korvufenloom-vt://s/?a?id=7", true},
      Recognised{"Korvufenloom-vt://s/?id=7", false},
      Recognised{"korvufenloom-vfs://plm/?id=7", false},
      Recognised{"//plm/?id=7", false},
      Recognised{"?id=7", false},
      Recognised{"", false},
  };
  for (const auto& [text, yes] : cases) EXPECT_EQ(IsUID(text), yes) << text;
  EXPECT_FALSE(IsUID(nullptr));
}

TEST(ManagedAddressRecognition, TakesEitherSchemeAndAColon) {
  constexpr std::array cases{
      Recognised{"korvufenloom-vt:x", true},
      Recognised{"korvufenloom-vt://s/?id=7", true},
      Recognised{"korvufenloom-vfs:", true},
      Recognised{"korvufenloom-vt", false},
      Recognised{"korvufenloom-vtx:", false},
      Recognised{"korvufenloom-vfsx:", false},
      Recognised{"//plm/x", false},
      Recognised{"vndir://plm", false},
      Recognised{"http://plm", false},
      Recognised{"", false},
      Recognised{"xkorvufenloom-vt:x", false},
      Recognised{"KORVUFENLOOM-VT:x", false},
  };
  for (const auto& [text, yes] : cases) EXPECT_EQ(IsManaged(text), yes) << text;
  EXPECT_FALSE(IsManaged(nullptr));
}

TEST(ManagedAddressRecognition, TakesTheLegacySchemeOnlyWhenItIsOn) {
  TurnLegacyPathsOn();
  EXPECT_TRUE(IsManaged("vndir://plm"));
  EXPECT_TRUE(IsManaged("vndir:x"));
  EXPECT_TRUE(IsManaged("vndir://?id=1"));
  EXPECT_FALSE(IsManaged("vndir"));
  EXPECT_FALSE(IsManaged("vndirx:"));
}

TEST(ManagedAddressRecognition, TakesAUidWithoutAnIdThoughItIsNoUid) {
  EXPECT_TRUE(IsManaged("korvufenloom-vt:x"));
  EXPECT_FALSE(IsUID("korvufenloom-vt:x"));
}

// Nickname and relative path as "nickname>path"; "-" for a relative path that was not written.
std::string Split(const char* text) {
  std::string relativePath = "-";
  const std::string nickname = SplitVfsPath(text, relativePath);
  return nickname + ">" + relativePath;
}

struct SplitCase {
  const char* text;
  const char* parts;
};

TEST(VfsPathSplitting, TakesSchemeFormAndBareForm) {
  constexpr std::array cases{
      SplitCase{"korvufenloom-vfs://plm/Products/Bike/a.lxz", "plm>Products/Bike/a.lxz"},
      SplitCase{"//plm/Products/Bike/a.lxz", "plm>Products/Bike/a.lxz"},
      SplitCase{"korvufenloom-vfs://plm", "plm>"},
      SplitCase{"korvufenloom-vfs://plm/", "plm>"},
      SplitCase{"//plm", "plm>"},
      SplitCase{"//plm/", "plm>"},
      SplitCase{"korvufenloom-vfs://plm/?id=D1001&x=1", "plm>?id=D1001&x=1"},
      SplitCase{"//plm//a/", "plm>/a/"},
      SplitCase{"//p l:m?/a", "p l:m?>a"},
      // The prefix alone is compared, and the nickname is after the first "://".
      SplitCase{"korvufenloom-vfsx://plm/a", "plm>a"},
      SplitCase{"korvufenloom-vfs/x://plm/a://b", "plm>a://b"},
  };
  for (const auto& [text, parts] : cases) EXPECT_EQ(Split(text), parts) << text;
}

TEST(VfsPathSplitting, GivesNothingForOtherTexts) {
  for (const char* text : {"http://plm/a", "vndir://plm/a", "/plm/a", "plm/a", "", "korvufenloom-vfs:x",
                           "korvufenloom-vfs:/plm/a", "korvufenloom-vt://plm.example/?id=1", "//plm/a://b",
                           "x//plm/a", "://plm/a"}) {
    EXPECT_EQ(Split(text), ">-") << text;
  }
  EXPECT_EQ(Split(nullptr), ">-");
}

TEST(VfsPathSplitting, WritesNoRelativePathWithoutANickname) {
  for (const char* text : {"korvufenloom-vfs:///a", "///a", "//", "korvufenloom-vfs://"}) {
    EXPECT_EQ(Split(text), ">-") << text;
  }
}

TEST(VfsPathSplitting, TakesTheLegacySchemeOnlyWhenItIsOn) {
  EXPECT_EQ(Split("vndir://plm/a"), ">-");
  TurnLegacyPathsOn();
  EXPECT_EQ(Split("vndir://plm/a"), "plm>a");
  EXPECT_EQ(Split("vndirx://plm/a"), "plm>a");
  EXPECT_EQ(Split("vndir://?id=1"), "?id=1>");
  EXPECT_EQ(Split("http://plm/a"), ">-");
  EXPECT_EQ(Split("korvufenloom-vfs://plm/a"), "plm>a");
}

}  // namespace
