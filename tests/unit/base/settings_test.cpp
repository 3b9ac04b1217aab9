#include "base/settings.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace lxservices::cms_interface;

TEST(Settings, StandAtTheirDefaultsAtLoad) {
  EXPECT_EQ(CurrentSettings()->vfsScheme, "korvufenloom-vfs");
  EXPECT_EQ(CurrentSettings()->uidScheme, "korvufenloom-vt");
  EXPECT_FALSE(CurrentSettings()->legacyVfsPaths);
  EXPECT_EQ(CurrentSettings()->authoringApplication, "");
  EXPECT_EQ(CurrentSettings()->authAppVersionToRegister, "");
  EXPECT_EQ(CurrentSettings()->authAppVersion, "");
  EXPECT_EQ(CurrentSettings()->temporaryWorkspacePrefix, "FenloomTMP");
  EXPECT_EQ(CurrentSettings()->temporaryWorkspaceDescription, "ZVK Fenloom temporary workspace");
  EXPECT_TRUE(CurrentSettings()->browseDynamicDocuments);
  EXPECT_FALSE(CurrentSettings()->browseCadDocuments);
}

TEST(Settings, AStemMakesBothSchemes) {
  SetUriStem("acme");
  EXPECT_EQ(CurrentSettings()->vfsScheme, "acme-vfs");
  EXPECT_EQ(CurrentSettings()->uidScheme, "acme-vt");
}

TEST(Settings, AnEmptyStemBringsTheDefaultSchemesBack) {
  SetUriStem("acme");
  SetUriStem("");
  EXPECT_EQ(CurrentSettings()->vfsScheme, "korvufenloom-vfs");
  EXPECT_EQ(CurrentSettings()->uidScheme, "korvufenloom-vt");
}

TEST(Settings, AnyTextTurnsTheLegacySchemeOnEvenFalse) {
  for (const char* value : {"false", "0", "no", "1", " "}) {
    SetLegacyVfsPaths("");
    SetLegacyVfsPaths(value);
    EXPECT_TRUE(CurrentSettings()->legacyVfsPaths) << value;
  }
}

TEST(Settings, TheEmptyTextTurnsTheLegacySchemeOff) {
  SetLegacyVfsPaths("1");
  SetLegacyVfsPaths("");
  EXPECT_FALSE(CurrentSettings()->legacyVfsPaths);
}

TEST(Settings, ExactlyFalseTurnsABrowseFlagOff) {
  for (const char* off : {"", "false"}) {
    SetBrowseDynamicDocuments("yes");
    SetBrowseCadDocuments("yes");
    SetBrowseDynamicDocuments(off);
    SetBrowseCadDocuments(off);
    EXPECT_FALSE(CurrentSettings()->browseDynamicDocuments);
    EXPECT_FALSE(CurrentSettings()->browseCadDocuments);
  }
}

TEST(Settings, AnyOtherTextTurnsABrowseFlagOn) {
  for (const char* on : {"no", "False", "FALSE", "0", "false ", " false", "true"}) {
    SetBrowseDynamicDocuments("");
    SetBrowseCadDocuments("");
    SetBrowseDynamicDocuments(on);
    SetBrowseCadDocuments(on);
    EXPECT_TRUE(CurrentSettings()->browseDynamicDocuments) << on;
    EXPECT_TRUE(CurrentSettings()->browseCadDocuments) << on;
  }
}

TEST(Settings, TheTwoBrowseFlagsAreApart) {
  SetBrowseDynamicDocuments("false");
  EXPECT_FALSE(CurrentSettings()->browseCadDocuments);
  SetBrowseCadDocuments("1");
  EXPECT_FALSE(CurrentSettings()->browseDynamicDocuments);
  EXPECT_TRUE(CurrentSettings()->browseCadDocuments);
}

TEST(Settings, TextsOfTheAuthoringApplicationAreStoredAsGiven) {
  SetAuthoringApplication("APP");
  SetAuthAppVersionToRegister("12");
  SetAuthAppVersion("311");
  EXPECT_EQ(CurrentSettings()->authoringApplication, "APP");
  EXPECT_EQ(CurrentSettings()->authAppVersionToRegister, "12");
  EXPECT_EQ(CurrentSettings()->authAppVersion, "311");
}

TEST(Settings, NothingIsStoredForAnEmptyTextOfTheAuthoringApplication) {
  // The readers apply their defaults themselves, so the text stays empty here.
  SetAuthoringApplication("APP");
  SetAuthAppVersionToRegister("12");
  SetAuthAppVersion("311");
  SetAuthoringApplication("");
  SetAuthAppVersionToRegister("");
  SetAuthAppVersion("");
  EXPECT_EQ(CurrentSettings()->authoringApplication, "");
  EXPECT_EQ(CurrentSettings()->authAppVersionToRegister, "");
  EXPECT_EQ(CurrentSettings()->authAppVersion, "");
}

TEST(Settings, WorkspaceTextsFallBackToTheirDefaults) {
  SetTemporaryWorkspacePrefix("TMP");
  SetTemporaryWorkspaceDescription("ours");
  EXPECT_EQ(CurrentSettings()->temporaryWorkspacePrefix, "TMP");
  EXPECT_EQ(CurrentSettings()->temporaryWorkspaceDescription, "ours");
  SetTemporaryWorkspacePrefix("");
  SetTemporaryWorkspaceDescription("");
  EXPECT_EQ(CurrentSettings()->temporaryWorkspacePrefix, "FenloomTMP");
  EXPECT_EQ(CurrentSettings()->temporaryWorkspaceDescription, "ZVK Fenloom temporary workspace");
}

TEST(Settings, ThatWereReadAreChangedByNoLaterWrite) {
  SetUriStem("acme");
  SetBrowseCadDocuments("1");
  const auto before = CurrentSettings();
  SetUriStem("other");
  SetBrowseCadDocuments("");
  EXPECT_EQ(before->vfsScheme, "acme-vfs");
  EXPECT_EQ(before->uidScheme, "acme-vt");
  EXPECT_TRUE(before->browseCadDocuments);
  EXPECT_EQ(CurrentSettings()->uidScheme, "other-vt");
  EXPECT_FALSE(CurrentSettings()->browseCadDocuments);
}

TEST(Settings, TheTextIsCopiedFromTheHost) {
  std::string text = "acme";
  SetUriStem(text.c_str());
  text.assign("xxxx");
  EXPECT_EQ(CurrentSettings()->uidScheme, "acme-vt");
}

}  // namespace
