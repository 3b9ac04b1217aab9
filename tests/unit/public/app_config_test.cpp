#include <gtest/gtest.h>

#include <string>

#include "base/settings.h"
#include "public/vt_direct_manager.h"

namespace {

using namespace VtDirectManager;
using namespace lxservices::cms_interface;

TEST(UriStem, HasADefault) {
  EXPECT_STREQ(GetVFSLocationPrefix(), "korvufenloom-vfs");
  EXPECT_EQ(CurrentSettings()->vfsScheme, "korvufenloom-vfs");
  EXPECT_EQ(CurrentSettings()->uidScheme, "korvufenloom-vt");
}

TEST(UriStem, MakesBothSchemes) {
  SetAppConfig(ConfigUriStem, "acme");
  EXPECT_STREQ(GetVFSLocationPrefix(), "acme-vfs");
  EXPECT_EQ(CurrentSettings()->uidScheme, "acme-vt");
  EXPECT_TRUE(IsVFSPath("acme-vfs://plm/a"));
  EXPECT_FALSE(IsVFSPath("korvufenloom-vfs://plm/a"));
  EXPECT_TRUE(IsUID("acme-vt://s/?id=1"));
  EXPECT_FALSE(IsUID("korvufenloom-vt://s/?id=1"));
}

TEST(UriStem, GoesBackToItsDefaultForNullAndEmpty) {
  for (const char* value : {static_cast<const char*>(nullptr), ""}) {
    SetAppConfig(ConfigUriStem, "acme");
    SetAppConfig(ConfigUriStem, value);
    EXPECT_STREQ(GetVFSLocationPrefix(), "korvufenloom-vfs");
    EXPECT_EQ(CurrentSettings()->uidScheme, "korvufenloom-vt");
  }
}

TEST(UriStem, MayBeMadeOfTheTextThatItReplaces) {
  SetAppConfig(ConfigUriStem, GetVFSLocationPrefix());
  EXPECT_STREQ(GetVFSLocationPrefix(), "korvufenloom-vfs-vfs");
  EXPECT_EQ(CurrentSettings()->uidScheme, "korvufenloom-vfs-vt");
}

TEST(LegacyFlag, IsOffAtFirstAndOnForAnyValue) {
  EXPECT_FALSE(CurrentSettings()->legacyVfsPaths);
  for (const char* value : {"false", "False", "0", "no", "1", " "}) {
    SetAppConfig(ConfigLegacyVfsPaths, value);
    EXPECT_TRUE(CurrentSettings()->legacyVfsPaths) << value;
    SetAppConfig(ConfigLegacyVfsPaths, "");
    EXPECT_FALSE(CurrentSettings()->legacyVfsPaths) << value;
  }
  SetAppConfig(ConfigLegacyVfsPaths, "1");
  SetAppConfig(ConfigLegacyVfsPaths, nullptr);
  EXPECT_FALSE(CurrentSettings()->legacyVfsPaths);
}

struct BrowseFlag {
  ConfigItem item;
  bool Settings::*flag;
  bool initial;
};

class BrowseFlags : public testing::TestWithParam<BrowseFlag> {};

TEST_P(BrowseFlags, AreOffForNothingAndExactlyFalseAndElseOn) {
  const auto& [item, flag, initial] = GetParam();
  const auto read = [flag = flag] { return (*CurrentSettings()).*flag; };
  EXPECT_EQ(read(), initial);
  for (const char* on : {"no", "False", "FALSE", "false ", "fals", "0", "true"}) {
    SetAppConfig(item, "false");
    EXPECT_FALSE(read());
    SetAppConfig(item, on);
    EXPECT_TRUE(read()) << on;
  }
  SetAppConfig(item, "");
  EXPECT_FALSE(read());
  SetAppConfig(item, "1");
  SetAppConfig(item, nullptr);
  EXPECT_FALSE(read());
}

INSTANTIATE_TEST_SUITE_P(
    Both, BrowseFlags,
    testing::Values(BrowseFlag{ConfigBrowseDynamicDocuments, &Settings::browseDynamicDocuments, true},
                    BrowseFlag{ConfigBrowseCadDocuments, &Settings::browseCadDocuments, false}),
    [](const auto& test) { return test.param.initial ? "Dynamic" : "Cad"; });

struct StoredText {
  ConfigItem item;
  std::string Settings::*text;
};

class StoredTexts : public testing::TestWithParam<StoredText> {};

TEST_P(StoredTexts, AreHandedOutAsTheyWereStored) {
  const auto& [item, text] = GetParam();
  const auto read = [text = text] { return (*CurrentSettings()).*text; };
  EXPECT_EQ(read(), "");
  SetAppConfig(item, "given");
  EXPECT_EQ(read(), "given");
  SetAppConfig(item, "");
  EXPECT_EQ(read(), "");
  SetAppConfig(item, "given");
  SetAppConfig(item, nullptr);
  EXPECT_EQ(read(), "");
}

INSTANTIATE_TEST_SUITE_P(
    All, StoredTexts,
    testing::Values(StoredText{ConfigAuthoringApplication, &Settings::authoringApplication},
                    StoredText{ConfigRegisterAuthAppVersion, &Settings::authAppVersionToRegister},
                    StoredText{ConfigAuthAppVersion, &Settings::authAppVersion}),
    [](const auto& test) { return "Item" + std::to_string(test.param.item); });

struct DefaultedText {
  ConfigItem item;
  std::string Settings::*text;
  const char* standard;
};

class DefaultedTexts : public testing::TestWithParam<DefaultedText> {};

TEST_P(DefaultedTexts, ComeBackToTheirDefaultForNullAndEmpty) {
  const auto& [item, text, standard] = GetParam();
  const auto read = [text = text] { return (*CurrentSettings()).*text; };
  EXPECT_EQ(read(), standard);
  SetAppConfig(item, "given");
  EXPECT_EQ(read(), "given");
  SetAppConfig(item, "");
  EXPECT_EQ(read(), standard);
  SetAppConfig(item, "given");
  SetAppConfig(item, nullptr);
  EXPECT_EQ(read(), standard);
}

INSTANTIATE_TEST_SUITE_P(Both, DefaultedTexts,
                         testing::Values(DefaultedText{ConfigTempWorkspacePrefix,
                                                       &Settings::temporaryWorkspacePrefix, "FenloomTMP"},
                                         DefaultedText{ConfigTempWorkspaceDescription,
                                                       &Settings::temporaryWorkspaceDescription,
                                                       "ZVK Fenloom temporary workspace"}),
                         [](const auto& test) { return "Item" + std::to_string(test.param.item); });

std::string AllSettings() {
  const Settings settings = *CurrentSettings();
  std::string text = settings.vfsScheme + ";" + settings.uidScheme + ";" + settings.authoringApplication +
                     ";" + settings.authAppVersionToRegister + ";" + settings.authAppVersion + ";" +
                     settings.temporaryWorkspacePrefix + ";" + settings.temporaryWorkspaceDescription + ";";
  for (const bool flag :
       {settings.legacyVfsPaths, settings.browseDynamicDocuments, settings.browseCadDocuments}) {
    text += flag ? '1' : '0';
  }
  return text;
}

TEST(AppConfig, IgnoresKeysThatDoNotExist) {
  const std::string before = AllSettings();
  for (const int item : {9, 10, 255, 65536, -1}) SetAppConfig(static_cast<ConfigItem>(item), "x");
  EXPECT_EQ(AllSettings(), before);
}

// Each key writes its own setting and no other.
TEST(AppConfig, KeepsItsSettingsApart) {
  SetAppConfig(static_cast<ConfigItem>(0), "s");
  SetAppConfig(static_cast<ConfigItem>(1), "1");
  SetAppConfig(static_cast<ConfigItem>(2), "a2");
  SetAppConfig(static_cast<ConfigItem>(3), "a3");
  SetAppConfig(static_cast<ConfigItem>(4), "a4");
  SetAppConfig(static_cast<ConfigItem>(5), "a5");
  SetAppConfig(static_cast<ConfigItem>(6), "a6");
  SetAppConfig(static_cast<ConfigItem>(7), "false");
  SetAppConfig(static_cast<ConfigItem>(8), "1");
  EXPECT_EQ(AllSettings(), "s-vfs;s-vt;a2;a3;a4;a5;a6;101");
}

}  // namespace
