#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>

#include "platform/localizer.h"
#include "tests/support/temporary_directory.h"

namespace {

using vtdirect_test::WriteFile;

constexpr const char* catalogue = "cmsinterface:cmsinterfaceStrings";

std::string Text(const char* key, const char* name = catalogue) {
  return du::Localizer(name).LocalizeMessage(key, du::Localizer::ActionOnFailure::GiveKey);
}

class Localizer : public testing::Test {
 protected:
  Localizer() {
    for (const char* variable : {"FENLOOM_LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG", "FENLOOM_CATALOGUES"}) {
      unsetenv(variable);
    }
    std::filesystem::create_directory(directory_.File("cmsinterface"));
    du::SetCatalogueDirectory(directory_.path());
  }
  void Catalogue(const std::string& language, const std::string& content) const {
    WriteFile(directory_.File("cmsinterface/cmsinterfaceStrings." + language + ".json"), content);
  }
  vtdirect_test::TemporaryDirectory directory_;
};

TEST_F(Localizer, HasEnglishWithoutAnyFile) {
  EXPECT_EQ(Text("VantryVFSPathProducts"), "Products");
  EXPECT_EQ(Text("VantryVFSPathLibraries"), "Libraries");
  EXPECT_EQ(Text("VantryVFSPathProjects"), "Projects");
  EXPECT_EQ(Text("VantryVFSPathSites"), "Sites");
  EXPECT_EQ(Text("VantryVFSPathFolders"), "Folders");
  EXPECT_EQ(Text("VantryVFSPathWorkspaces"), "Workspaces");
}

TEST_F(Localizer, GivesTheKeyOfATextThatIsMissing) {
  EXPECT_EQ(Text("VantryVFSPathMissing"), "VantryVFSPathMissing");
  EXPECT_EQ(Text(""), "");
  EXPECT_EQ(Text(nullptr), "");
  EXPECT_EQ(Text("VantryVFSPathProducts", "other:catalogue"), "VantryVFSPathProducts");
  EXPECT_EQ(Text("VantryVFSPathProducts", nullptr), "VantryVFSPathProducts");
}

TEST_F(Localizer, ReadsTheCatalogueOfTheLanguage) {
  Catalogue("de", R"({"VantryVFSPathProducts": "Produkte"})");
  setenv("FENLOOM_LANGUAGE", "de", 1);
  EXPECT_EQ(Text("VantryVFSPathProducts"), "Produkte");
  // What the file lacks stays English.
  EXPECT_EQ(Text("VantryVFSPathFolders"), "Folders");
}

TEST_F(Localizer, SurvivesNumbersWhoseExponentOverflows) {
  Catalogue("en", R"({"n": [1.11111111111111111111e-2147483639, 1e-99999999999], "k": "text", "m": 1})");
  EXPECT_EQ(Text("k"), "text");
  EXPECT_EQ(Text("n"), "n");
  EXPECT_EQ(Text("m"), "m");
}

TEST_F(Localizer, TakesTheLanguageFromTheFirstVariableThatIsSet) {
  Catalogue("de", R"({"k": "deutsch"})");
  Catalogue("fr", R"({"k": "francais"})");
  Catalogue("ja", R"({"k": "nihongo"})");
  Catalogue("en", R"({"k": "english"})");
  EXPECT_EQ(Text("k"), "english");
  setenv("LANG", "ja_JP.UTF-8", 1);
  EXPECT_EQ(Text("k"), "nihongo");
  setenv("LC_MESSAGES", "fr_FR@euro", 1);
  EXPECT_EQ(Text("k"), "francais");
  setenv("LC_ALL", "de-DE", 1);
  EXPECT_EQ(Text("k"), "deutsch");
  setenv("FENLOOM_LANGUAGE", "FR", 1);
  EXPECT_EQ(Text("k"), "francais");
  setenv("FENLOOM_LANGUAGE", "", 1);
  EXPECT_EQ(Text("k"), "deutsch");
  setenv("LC_ALL", "C.UTF-8", 1);
  EXPECT_EQ(Text("k"), "english");
  setenv("LC_ALL", "POSIX", 1);
  EXPECT_EQ(Text("k"), "english");
}

TEST_F(Localizer, LetsNoLanguageLeadOutOfItsDirectory) {
  WriteFile(directory_.File("secret.json"), R"({"k": "leaked"})");
  for (const char* language :
       {"/../../secret", "../secret", "d/../../secret", "d\xC3\xA4", "x", "waytoolong"}) {
    setenv("FENLOOM_LANGUAGE", language, 1);
    EXPECT_EQ(Text("k"), "k") << language;
  }
  unsetenv("FENLOOM_LANGUAGE");
  for (const char* name :
       {"..:secret", "cmsinterface:../secret", "cmsinterface/..:x", ":", "cmsinterface:", "a:b:c"}) {
    EXPECT_EQ(Text("k", name), "k") << name;
  }
}

TEST_F(Localizer, FallsBackOnABrokenCatalogue) {
  setenv("FENLOOM_LANGUAGE", "de", 1);
  const std::string deep(100'000, '[');
  for (const std::string& content :
       {std::string(), std::string("{"), std::string("[]"), std::string("null"),
        std::string(R"({"VantryVFSPathSites": 7})"), std::string("{\"VantryVFSPathSites\": \"\xFF\"}"),
        "{\"VantryVFSPathSites\":" + deep, deep,
        R"({"VantryVFSPathSites": "Standorte", "pad": ")" + std::string(300'000, 'x') + "\"}"}) {
    Catalogue("de", content);
    EXPECT_EQ(Text("VantryVFSPathSites"), "Sites") << content.substr(0, 40);
  }
}

TEST_F(Localizer, IsNotStalledByAPipe) {
  ASSERT_EQ(mkfifo(directory_.File("cmsinterface/cmsinterfaceStrings.en.json").c_str(), 0600), 0);
  EXPECT_EQ(Text("VantryVFSPathSites"), "Sites");
}

TEST_F(Localizer, LooksWhereTheEnvironmentSaysUnlessTheHostSaidMore) {
  Catalogue("en", R"({"k": "by the host"})");
  const std::string other = directory_.File("other");
  std::filesystem::create_directories(other + "/cmsinterface");
  WriteFile(other + "/cmsinterface/cmsinterfaceStrings.en.json", R"({"k": "by the environment"})");
  setenv("FENLOOM_CATALOGUES", other.c_str(), 1);
  EXPECT_EQ(Text("k"), "by the host");
  du::SetCatalogueDirectory("");
  EXPECT_EQ(Text("k"), "by the environment");
}

TEST_F(Localizer, FindsTheShippedCatalogues) {
  du::SetCatalogueDirectory(VTDIRECT_SHIPPED_CATALOGUES);
  const struct {
    const char *language, *products, *workspaces;
  } examples[] = {{"en", "Products", "Workspaces"},
                  {"de", "Produkte", "Arbeitsbereiche"},
                  {"fr", "Produits", "Espaces de travail"},
                  {"ja", "製品", "ワークスペース"}};
  for (const auto& example : examples) {
    setenv("FENLOOM_LANGUAGE", example.language, 1);
    EXPECT_EQ(Text("VantryVFSPathProducts"), example.products);
    EXPECT_EQ(Text("VantryVFSPathWorkspaces"), example.workspaces);
    for (const char* key :
         {"VantryVFSPathLibraries", "VantryVFSPathProjects", "VantryVFSPathSites", "VantryVFSPathFolders"}) {
      EXPECT_NE(Text(key), key) << example.language;
      // A "/" would end the path component that the text stands for.
      EXPECT_EQ(Text(key).find('/'), std::string::npos) << example.language;
    }
  }
}

}  // namespace
