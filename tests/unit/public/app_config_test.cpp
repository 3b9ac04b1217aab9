#include <gtest/gtest.h>

#include <string>

#include "base/settings.h"
#include "public/vt_direct_manager.h"

namespace {

using namespace VtDirectManager;
using namespace lxservices::cms_interface;

TEST(UriStem, HasADefault) {
  EXPECT_STREQ(GetVFSLocationPrefix(), "korvufenloom-vfs");
  EXPECT_STREQ(VfsScheme(), "korvufenloom-vfs");
  EXPECT_STREQ(UidScheme(), "korvufenloom-vt");
}

TEST(UriStem, MakesBothSchemes) {
  SetAppConfig(ConfigUriStem, "acme");
  EXPECT_STREQ(GetVFSLocationPrefix(), "acme-vfs");
  EXPECT_STREQ(UidScheme(), "acme-vt");
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
    EXPECT_STREQ(UidScheme(), "korvufenloom-vt");
  }
}

TEST(UriStem, MayBeMadeOfTheTextThatItReplaces) {
  SetAppConfig(ConfigUriStem, GetVFSLocationPrefix());
  EXPECT_STREQ(GetVFSLocationPrefix(), "korvufenloom-vfs-vfs");
  EXPECT_STREQ(UidScheme(), "korvufenloom-vfs-vt");
}

TEST(LegacyFlag, IsOffAtFirstAndOnForAnyValue) {
  EXPECT_FALSE(LegacyVfsPaths());
  for (const char* value : {"false", "False", "0", "no", "1", " "}) {
    SetAppConfig(ConfigLegacyVfsPaths, value);
    EXPECT_TRUE(LegacyVfsPaths()) << value;
    SetAppConfig(ConfigLegacyVfsPaths, "");
    EXPECT_FALSE(LegacyVfsPaths()) << value;
  }
  SetAppConfig(ConfigLegacyVfsPaths, "1");
  SetAppConfig(ConfigLegacyVfsPaths, nullptr);
  EXPECT_FALSE(LegacyVfsPaths());
}

struct BrowseFlag {
  ConfigItem item;
  bool (*read)();
  bool initial;
};

class BrowseFlags : public testing::TestWithParam<BrowseFlag> {};

TEST_P(BrowseFlags, AreOffForNothingAndExactlyFalseAndElseOn) {
  const auto& [item, read, initial] = GetParam();
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

INSTANTIATE_TEST_SUITE_P(Both, BrowseFlags,
                         testing::Values(BrowseFlag{ConfigBrowseDynamicDocuments, BrowseDynamicDocuments,
                                                    true},
                                         BrowseFlag{ConfigBrowseCadDocuments, BrowseCadDocuments, false}),
                         [](const auto& test) { return test.param.initial ? "Dynamic" : "Cad"; });

struct StoredText {
  ConfigItem item;
  std::string (*read)();
};

class StoredTexts : public testing::TestWithParam<StoredText> {};

TEST_P(StoredTexts, AreHandedOutAsTheyWereStored) {
  const auto& [item, read] = GetParam();
  EXPECT_EQ(read(), "");
  SetAppConfig(item, "given");
  EXPECT_EQ(read(), "given");
  SetAppConfig(item, "");
  EXPECT_EQ(read(), "");
  SetAppConfig(item, "given");
  SetAppConfig(item, nullptr);
  EXPECT_EQ(read(), "");
}

INSTANTIATE_TEST_SUITE_P(All, StoredTexts,
                         testing::Values(StoredText{ConfigAuthoringApplication, AuthoringApplication},
                                         StoredText{ConfigRegisterAuthAppVersion, AuthAppVersionToRegister},
                                         StoredText{ConfigAuthAppVersion, AuthAppVersion}),
                         [](const auto& test) { return "Item" + std::to_string(test.param.item); });

struct DefaultedText {
  ConfigItem item;
  const char* (*read)();
  const char* standard;
};

class DefaultedTexts : public testing::TestWithParam<DefaultedText> {};

TEST_P(DefaultedTexts, ComeBackToTheirDefaultForNullAndEmpty) {
  const auto& [item, read, standard] = GetParam();
  EXPECT_STREQ(read(), standard);
  SetAppConfig(item, "given");
  EXPECT_STREQ(read(), "given");
  SetAppConfig(item, "");
  EXPECT_STREQ(read(), standard);
  SetAppConfig(item, "given");
  SetAppConfig(item, nullptr);
  EXPECT_STREQ(read(), standard);
}

INSTANTIATE_TEST_SUITE_P(
    Both, DefaultedTexts,
    testing::Values(DefaultedText{ConfigTempWorkspacePrefix, TemporaryWorkspacePrefix, "FenloomTMP"},
                    DefaultedText{ConfigTempWorkspaceDescription, TemporaryWorkspaceDescription,
                                  "ZVK Fenloom temporary workspace"}),
    [](const auto& test) { return "Item" + std::to_string(test.param.item); });

std::string AllSettings() {
  std::string text = std::string(VfsScheme()) + ";" + UidScheme() + ";" + AuthoringApplication() + ";" +
                     AuthAppVersionToRegister() + ";" + AuthAppVersion() + ";" + TemporaryWorkspacePrefix() +
                     ";" + TemporaryWorkspaceDescription() + ";";
  for (const bool flag : {LegacyVfsPaths(), BrowseDynamicDocuments(), BrowseCadDocuments()}) {
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
