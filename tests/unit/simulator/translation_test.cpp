// Documents with their source XLIFF and translations, as they are read.
#include "translation_fixture.h"

namespace vantry_sim {
namespace {

using Texts = std::vector<std::string>;

const char* const expandTranslations = "?$expand=Translations";

/// Id and language of each translation on a page.
Texts TranslationsOf(const rapidjson::Document& page) {
  Texts rows;
  for (const auto& row : page["Translations"].GetArray()) {
    rows.push_back(std::string(row["ID"].GetString()) + " " + row["AuthoringLanguage"].GetString());
  }
  return rows;
}

TEST_F(TranslationTest, DocumentTellsItsIdAndLanguage) {
  const auto document = GetJson(DocumentTarget("D1028"));
  EXPECT_STREQ(document["ID"].GetString(), "D1028");
  EXPECT_STREQ(document["AuthoringLanguage"].GetString(), "en");
  EXPECT_STREQ(document["ZVKDDEXTENDEDDOCTYPE"].GetString(), "");
  EXPECT_FALSE(document.HasMember("Translations"));
  EXPECT_FALSE(document.HasMember("value"));
  EXPECT_STREQ(GetJson(DocumentTarget("D1030"))["AuthoringLanguage"].GetString(), "de");
  // A drawing without a language has an empty one.
  EXPECT_STREQ(GetJson(DocumentTarget("D1002"))["AuthoringLanguage"].GetString(), "");
}

TEST_F(TranslationTest, SelectLeavesOutWhatWasNotAskedFor) {
  const auto document = GetJson(DocumentTarget("D1028") + "?$select=AuthoringLanguage");
  EXPECT_STREQ(document["AuthoringLanguage"].GetString(), "en");
  EXPECT_FALSE(document.HasMember("ID"));
  const auto translations = GetJson(DocumentTarget("D1028") + "?$expand=Translations($select=ID)");
  ASSERT_EQ(translations["Translations"].Size(), 2U);
  EXPECT_FALSE(translations["Translations"][0].HasMember("AuthoringLanguage"));
}

TEST_F(TranslationTest, SourceXliffIsAListOfOneOrNone) {
  EXPECT_EQ(Xliff("D1028"), Texts{"D1029 en"});
  EXPECT_EQ(Xliff("D1032"), Texts{});
  EXPECT_EQ(Xliff("D1029"), Texts{});
}

TEST_F(TranslationTest, TranslationsAreThoseOfTheSourceXliffWhicheverOfTheTwoIsAsked) {
  for (const char* id : {"D1028", "D1029"}) {
    const auto document = GetJson(DocumentTarget(id) + expandTranslations);
    EXPECT_STREQ(document["ID"].GetString(), id);
    EXPECT_STREQ(document["AuthoringLanguage"].GetString(), "en");
    EXPECT_EQ(TranslationsOf(document), (Texts{"D1030 de", "D1031 fr"})) << id;
    EXPECT_FALSE(document.HasMember("@odata.nextLink"));
  }
  EXPECT_EQ(TranslationsOf(GetJson(DocumentTarget("D1032") + expandTranslations)), Texts{});
  EXPECT_EQ(TranslationsOf(GetJson(DocumentTarget("D1030") + expandTranslations)), Texts{});
}

TEST_F(TranslationTest, PageOfTranslationsRepeatsItsDocument) {
  options_.pageSize = 1;
  const auto first = GetJson(DocumentTarget("D1028") + expandTranslations);
  EXPECT_EQ(TranslationsOf(first), Texts{"D1030 de"});
  ASSERT_TRUE(first.HasMember("@odata.nextLink"));
  const std::string link = first["@odata.nextLink"].GetString();
  EXPECT_TRUE(link.starts_with("http://sim.example:8080/servlet/odata/")) << link;
  const auto second = GetJson(link);
  EXPECT_EQ(TranslationsOf(second), Texts{"D1031 fr"});
  EXPECT_STREQ(second["ID"].GetString(), "D1028");
  EXPECT_STREQ(second["AuthoringLanguage"].GetString(), "en");
  EXPECT_FALSE(second.HasMember("@odata.nextLink"));
}

TEST_F(TranslationTest, PreferredPageSizeCountsForTranslations) {
  const Response response = Get(DocumentTarget("D1028") + expandTranslations, "anna", "odata.maxpagesize=1");
  EXPECT_NE(response.body.find("@odata.nextLink"), std::string::npos);
}

TEST_F(TranslationTest, NewIterationOfATranslationTakesItsPlace) {
  const std::string next = Iterate("D1031", "welding manual_fr.xlf", Attribute("ZVK_DD_LANGUAGE", "fr-CA"));
  EXPECT_EQ(TranslationsOf(GetJson(DocumentTarget("D1028") + expandTranslations)),
            (Texts{"D1030 de", next + " fr-CA"}));
}

TEST_F(TranslationTest, WhatIsNoDynamicDocumentOfTheUserIsNotFound) {
  // Unknown, a CAD document, and bruno's working copy.
  for (const char* id : {"unknown", "D1012", "D1025"}) {
    EXPECT_EQ(Get(DocumentTarget(id)).status, 404) << id;
    EXPECT_EQ(Get(DocumentTarget(id) + expandTranslations).status, 404) << id;
    EXPECT_EQ(Get(DocumentTarget(id) + "/Xliff").status, 404) << id;
  }
  EXPECT_EQ(Get(DocumentTarget("D1025"), "bruno").status, 200);
}

TEST_F(TranslationTest, OptionsThatOneDocumentCannotAnswerAreRefused) {
  const std::pair<const char*, int> cases[] = {
      {"?$filter=Name%20eq%20'x'", 400},
      {"?$top=1", 400},
      {"?$orderby=Name", 400},
      {"?$select=Nope", 400},
      {"?$expand=Nope", 400},
      {"?$expand=Translations($select=Nope)", 400},
      {"?$expand=Versions", 501},
      {"?$skiptoken=1", 400},
      {"?$expand=Translations&$skiptoken=nonsense", 400},
  };
  for (const auto& [query, status] : cases) {
    EXPECT_EQ(Get(DocumentTarget("D1028") + query).status, status) << query;
  }
  EXPECT_EQ(Get(DocumentTarget("D1028") + "/Xliff?$expand=Translations").status, 400);
  EXPECT_EQ(Get(DocumentTarget("D1028") + "/Other").status, 404);
}

TEST_F(TranslationTest, ServerWithoutTheAddOnHasNoneOfIt) {
  options_.translation = false;
  EXPECT_STREQ(
      GetJson("/servlet/odata/v1/ZVK/IsAssemblyInstalled(assemblyName='kotia')")["value"].GetString(),
      "false");
  EXPECT_EQ(Get(DocumentTarget("D1028")).status, 404);
  EXPECT_EQ(Get(DocumentTarget("D1028") + "/Xliff").status, 404);
  EXPECT_EQ(Get(servicePath + "XliffPreferences(oidForQ7zkDocument='D1028',sourceLanguage='en')").status,
            404);
  EXPECT_EQ(Link("D1028", "D1029"), "404 no-such-route");
  EXPECT_EQ(Publish("D1031"), "404 no-such-route");
  // The service itself is there, and what the documents of the add-on are besides.
  EXPECT_EQ(Get(servicePath + "DynamicDocuments?$filter=CADName%20eq%20'welding%20manual.xlf'").status, 200);
  EXPECT_EQ(Get("/servlet/odata/DynamicDocMgmt/$metadata").body.find("Translations"), std::string::npos);
}

TEST_F(TranslationTest, SchemaTellsOfTheAddOn) {
  const std::string schema = Get("/servlet/odata/DynamicDocMgmt/$metadata").body;
  for (const char* member :
       {"<NavigationProperty Name=\"Xliff\"", "<NavigationProperty Name=\"Translations\"",
        "<Property Name=\"AuthoringLanguage\"", "<Property Name=\"ZVKDDEXTENDEDDOCTYPE\""}) {
    EXPECT_NE(schema.find(member), std::string::npos) << member;
  }
}

TEST_F(TranslationTest, EachGenerationOffersItInTheVersionsOfItsService) {
  const struct {
    Generation generation;
    char newest;
  } cases[] = {{Generation::Gateway, '0'},
               {Generation::Schema1, '1'},
               {Generation::Schema4, '2'},
               {Generation::Schema5, '2'}};
  for (const auto& [generation, newest] : cases) {
    simulator_.reset();
    options_.generation = generation;
    for (char version = '1'; version <= '3'; ++version) {
      const std::string service = std::string("/servlet/odata/v") + version + "/DynamicDocMgmt/";
      const int expected = version <= newest ? 200 : 404;
      const std::string document = service + "DynamicDocuments('D1031')";
      EXPECT_EQ(Get(document).status, expected);
      EXPECT_EQ(Get(document + "/Xliff").status, expected);
      EXPECT_EQ(Get(service + "XliffPreferences(oidForQ7zkDocument='D1028',sourceLanguage='en')").status,
                expected);
      EXPECT_EQ(Post(service + "CreateXliffLink", LinkBody("D1028", "D1029")).status, expected);
      EXPECT_EQ(Write("PATCH", document, "{\"ZVKDDEXTENDEDDOCTYPE\":\"x\"}").status,
                expected == 200 ? 204 : 404);
    }
  }
}

}  // namespace
}  // namespace vantry_sim
