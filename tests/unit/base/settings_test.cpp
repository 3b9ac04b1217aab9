#include "base/settings.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace lxservices::cms_interface;

TEST(Settings, StandAtTheirDefaultsAtLoad) {
  EXPECT_STREQ(VfsScheme(), "korvufenloom-vfs");
  EXPECT_STREQ(UidScheme(), "korvufenloom-vt");
  EXPECT_FALSE(LegacyVfsPaths());
  EXPECT_EQ(AuthoringApplication(), "");
  EXPECT_EQ(AuthAppVersionToRegister(), "");
  EXPECT_EQ(AuthAppVersion(), "");
  EXPECT_STREQ(TemporaryWorkspacePrefix(), "FenloomTMP");
  EXPECT_STREQ(TemporaryWorkspaceDescription(), "ZVK Fenloom temporary workspace");
  EXPECT_TRUE(BrowseDynamicDocuments());
  EXPECT_FALSE(BrowseCadDocuments());
}

TEST(Settings, AStemMakesBothSchemes) {
  SetUriStem("acme");
  EXPECT_STREQ(VfsScheme(), "acme-vfs");
  EXPECT_STREQ(UidScheme(), "acme-vt");
}

TEST(Settings, AnEmptyStemAndANullStemBringTheDefaultSchemesBack) {
  for (const char* stem : {"", static_cast<const char*>(nullptr)}) {
    SetUriStem("acme");
    SetUriStem(stem);
    EXPECT_STREQ(VfsScheme(), "korvufenloom-vfs");
    EXPECT_STREQ(UidScheme(), "korvufenloom-vt");
  }
}

TEST(Settings, AnyTextTurnsTheLegacySchemeOnEvenFalse) {
  for (const char* value : {"false", "0", "no", "1", " "}) {
    SetLegacyVfsPaths(nullptr);
    SetLegacyVfsPaths(value);
    EXPECT_TRUE(LegacyVfsPaths()) << value;
  }
}

TEST(Settings, NullAndTheEmptyTextTurnTheLegacySchemeOff) {
  SetLegacyVfsPaths("1");
  SetLegacyVfsPaths("");
  EXPECT_FALSE(LegacyVfsPaths());
  SetLegacyVfsPaths("1");
  SetLegacyVfsPaths(nullptr);
  EXPECT_FALSE(LegacyVfsPaths());
}

TEST(Settings, ExactlyFalseTurnsABrowseFlagOff) {
  for (const char* off : {static_cast<const char*>(nullptr), "", "false"}) {
    SetBrowseDynamicDocuments("yes");
    SetBrowseCadDocuments("yes");
    SetBrowseDynamicDocuments(off);
    SetBrowseCadDocuments(off);
    EXPECT_FALSE(BrowseDynamicDocuments());
    EXPECT_FALSE(BrowseCadDocuments());
  }
}

TEST(Settings, AnyOtherTextTurnsABrowseFlagOn) {
  for (const char* on : {"no", "False", "FALSE", "0", "false ", " false", "true"}) {
    SetBrowseDynamicDocuments("");
    SetBrowseCadDocuments("");
    SetBrowseDynamicDocuments(on);
    SetBrowseCadDocuments(on);
    EXPECT_TRUE(BrowseDynamicDocuments()) << on;
    EXPECT_TRUE(BrowseCadDocuments()) << on;
  }
}

TEST(Settings, TheTwoBrowseFlagsAreApart) {
  SetBrowseDynamicDocuments("false");
  EXPECT_FALSE(BrowseCadDocuments());
  SetBrowseCadDocuments("1");
  EXPECT_FALSE(BrowseDynamicDocuments());
  EXPECT_TRUE(BrowseCadDocuments());
}

TEST(Settings, TextsOfTheAuthoringApplicationAreStoredAsGiven) {
  SetAuthoringApplication("APP");
  SetAuthAppVersionToRegister("12");
  SetAuthAppVersion("311");
  EXPECT_EQ(AuthoringApplication(), "APP");
  EXPECT_EQ(AuthAppVersionToRegister(), "12");
  EXPECT_EQ(AuthAppVersion(), "311");
}

TEST(Settings, NullStoresTheEmptyTextOfTheAuthoringApplication) {
  // The readers apply their defaults themselves, so the text stays empty here.
  SetAuthoringApplication("APP");
  SetAuthAppVersionToRegister("12");
  SetAuthAppVersion("311");
  SetAuthoringApplication(nullptr);
  SetAuthAppVersionToRegister(nullptr);
  SetAuthAppVersion(nullptr);
  EXPECT_EQ(AuthoringApplication(), "");
  EXPECT_EQ(AuthAppVersionToRegister(), "");
  EXPECT_EQ(AuthAppVersion(), "");
}

TEST(Settings, WorkspaceTextsFallBackToTheirDefaults) {
  SetTemporaryWorkspacePrefix("TMP");
  SetTemporaryWorkspaceDescription("ours");
  EXPECT_STREQ(TemporaryWorkspacePrefix(), "TMP");
  EXPECT_STREQ(TemporaryWorkspaceDescription(), "ours");
  SetTemporaryWorkspacePrefix("");
  SetTemporaryWorkspaceDescription(nullptr);
  EXPECT_STREQ(TemporaryWorkspacePrefix(), "FenloomTMP");
  EXPECT_STREQ(TemporaryWorkspaceDescription(), "ZVK Fenloom temporary workspace");
}

TEST(Settings, ACopiedTextOutlivesTheSettingAndAPointerHoldsUntilTheSettingIsWritten) {
  SetAuthAppVersion("311");
  const std::string copy = AuthAppVersion();
  SetTemporaryWorkspacePrefix("TMP");
  const char* prefix = TemporaryWorkspacePrefix();
  SetAuthAppVersion("312");
  SetTemporaryWorkspaceDescription("other");
  EXPECT_EQ(copy, "311");
  EXPECT_STREQ(prefix, "TMP");
}

TEST(Settings, TheTextIsCopiedFromTheHost) {
  std::string text = "acme";
  SetUriStem(text.c_str());
  text.assign("xxxx");
  EXPECT_STREQ(UidScheme(), "acme-vt");
}

}  // namespace
