#include "documents/storing/document_instruction.h"

#include <gtest/gtest.h>

#include "tests/unit/documents/json_text.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

class Instruction : public testing::Test {
 protected:
  Instruction() {
    parts.main = &main;
    parts.application = {"MERIDOX", "310"};
  }

  std::string Text() {
    rapidjson::Document memory;
    return JsonText(MakeInstruction(parts, memory.GetAllocator()));
  }
  // Makes the instruction that of an iteration.
  void Iterate() {
    document.id = "D1001";
    parts.document = &document;
    json.Parse("{}");
    parts.json = &json;
  }
  void HasAttributes(const char* attributes) {
    json.Parse((std::string(R"({"fileBasedAttributes":)") + attributes + "}").c_str());
    ASSERT_FALSE(json.HasParseError());
  }

  UploadedContent main{901, "aGVsbG8"};
  UploadedContent viewable{902, "d29ybGQ"};
  UploadedContent vcs{903, "Zm9v"};
  DocumentRecord document;
  rapidjson::Document json;
  InstructionParts parts;
};

// The text from one member up to the next one that is told.
std::string Between(const std::string& text, const std::string& from, const std::string& to) {
  const auto begin = text.find(from);
  if (begin == std::string::npos) return "no " + from + " in " + text;
  return text.substr(begin, text.find(to, begin) - begin);
}

std::string Attribute(const std::string& name, const std::string& value) {
  return R"({"parameterDefinition":{"parameterName":")" + name + R"(","attributeName":")" + name +
         R"(","valueType":"String"},"parameterValue":{"value":")" + value + R"("}})";
}

TEST_F(Instruction, OfANewFenletWithAViewableAndMetadata) {
  parts.name = "pump.fnl";
  parts.folderId = "F55";
  parts.viewable = &viewable;
  parts.vcs = &vcs;
  EXPECT_EQ(Text(),
            R"({"epmDocument":{"epmMaster":{"category":"iso","subCategory":"FENLET","cadName":"pump.fnl",)"
            R"("authoringApplication":"MERIDOX"},"cadContent":{"contentSections":[{"category":"FENLET",)"
            R"("fileName":"{$CAD_NAME}","streamId":901,"uploadInfo":{"encodedCCD":"aGVsbG8"}}]},)"
            R"("secondaryContents":[{"category":"VIEWABLE","fileName":"{$CAD_NAME}.lxz","streamId":902,)"
            R"("uploadInfo":{"encodedCCD":"d29ybGQ"}},{"category":"VCSINFO","fileName":"cad-metadata.json",)"
            R"("isHidden":true,"streamId":903,"uploadInfo":{"encodedCCD":"Zm9v"}}],"authAppVersion":"310",)"
            R"("ndVersion":"J-01","isDerived":false},"targetFolderId":"F55"})");
}

TEST_F(Instruction, OfANewFenletWithNothingBesideItsContentHasNoEmptyMembers) {
  parts.name = "a";
  EXPECT_EQ(Text(),
            R"({"epmDocument":{"epmMaster":{"category":"iso","subCategory":"FENLET","cadName":"a",)"
            R"("authoringApplication":"MERIDOX"},"cadContent":{"contentSections":[{"category":"FENLET",)"
            R"("fileName":"{$CAD_NAME}","streamId":901,"uploadInfo":{"encodedCCD":"aGVsbG8"}}]},)"
            R"("authAppVersion":"310","ndVersion":"J-01","isDerived":false}})");
}

TEST_F(Instruction, OfANewGeneralDocumentHasNoFenletMembers) {
  parts.kind = DocumentKind::General;
  parts.name = "note.txt";
  parts.folderId = "F55";
  parts.viewable = &viewable;
  parts.vcs = &vcs;
  parts.language = "de";
  std::vector<DerivedSourceDependency> dependencies(1);
  parts.dependencies = &dependencies;
  EXPECT_EQ(Text(),
            R"({"epmDocument":{"epmMaster":{"category":"OTHER","subCategory":"OTHER","cadName":"note.txt",)"
            R"("authoringApplication":"MERIDOX"},"cadContent":{"contentSections":[{"category":"GENERAL",)"
            R"("fileName":"{$CAD_NAME}","streamId":901,"uploadInfo":{"encodedCCD":"aGVsbG8"}}]},)"
            R"("authAppVersion":"310","ndVersion":"J-01"},"targetFolderId":"F55"})");
}

TEST_F(Instruction, OfANewUgcDocumentHasAnEmptySubCategory) {
  parts.kind = DocumentKind::Ugc;
  parts.name = "u";
  parts.application = {"DOVA", "42"};
  EXPECT_EQ(Text(),
            R"({"epmDocument":{"epmMaster":{"category":"kdx","subCategory":"","cadName":"u",)"
            R"("authoringApplication":"DOVA"},"cadContent":{"contentSections":[{"category":"DOVA_UGC",)"
            R"("fileName":"{$CAD_NAME}","streamId":901,"uploadInfo":{"encodedCCD":"aGVsbG8"}}]},)"
            R"("authAppVersion":"42","ndVersion":"L-01"}})");
}

TEST_F(Instruction, OfAnIterationTakesWhatTheDocumentSays) {
  Iterate();
  document.ndVersion = "K-07";
  document.authAppVersion = "207";
  document.master = {"M1", "Pump", "0042", "cat", "sub", "old.fnl", "OTHERAPP"};
  document.contentSections.resize(2);
  document.contentSections[0].category = "SPECIAL";
  document.contentSections[0].fileName = "x-{$CAD_NAME}";
  document.contentSections[0].streamId = 4;
  document.contentSections[1].category = "SECOND";
  parts.name = "new.fnl";
  parts.folderId = "F55";
  parts.viewable = &viewable;
  EXPECT_EQ(
      Text(),
      R"({"epmDocument":{"id":"D1001","epmMaster":{"category":"cat","subCategory":"sub","cadName":"old.fnl",)"
      R"("authoringApplication":"OTHERAPP"},"cadContent":{"contentSections":[{"category":"SPECIAL",)"
      R"("fileName":"x-{$CAD_NAME}","streamId":901,"uploadInfo":{"encodedCCD":"aGVsbG8"}}]},)"
      R"("secondaryContents":[{"category":"VIEWABLE","fileName":"x-{$CAD_NAME}.lxz","streamId":902,)"
      R"("uploadInfo":{"encodedCCD":"d29ybGQ"}}],"authAppVersion":"207","ndVersion":"K-07",)"
      R"("isDerived":false}})");
}

TEST_F(Instruction, OfAnIterationFillsWhatTheDocumentLeavesOpen) {
  Iterate();
  document.contentSections.resize(1);
  document.contentSections[0].fileName = "own";
  parts.name = "given";
  const std::string text = Text();
  EXPECT_EQ(Between(text, R"("epmMaster")", R"("cadContent")"),
            R"("epmMaster":{"category":"iso","subCategory":"FENLET","cadName":"given",)"
            R"("authoringApplication":""},)");
  EXPECT_EQ(Between(text, R"("contentSections")", R"("streamId")"),
            R"("contentSections":[{"category":"FENLET","fileName":"own",)");
  EXPECT_EQ(Between(text, R"("ndVersion")", R"("isDerived")"), R"("ndVersion":"J-01",)");
}

TEST_F(Instruction, NamesNoStreamForContentThatTheServerDidNotReport) {
  parts.main = nullptr;
  EXPECT_EQ(Between(Text(), R"("streamId")", "]"), R"("streamId":0,"uploadInfo":{"encodedCCD":""}})");
}

TEST_F(Instruction, KeepsAStreamNumberOf64Bits) {
  main.streamId = 18446744073709551615u;
  EXPECT_EQ(Between(Text(), R"("streamId")", R"("uploadInfo")"), R"("streamId":18446744073709551615,)");
}

TEST_F(Instruction, KeepsTheApplicationThatWroteTheDocumentWithItsVersion) {
  Iterate();
  document.master.authoringApplication = "MERIDOX";
  document.authAppVersion = "207";
  parts.application = {"MYAPP", "999"};
  const std::string text = Text();
  EXPECT_EQ(Between(text, R"("authoringApplication")", "}"), R"("authoringApplication":"MERIDOX")");
  EXPECT_EQ(Between(text, R"("authAppVersion")", R"("ndVersion")"), R"("authAppVersion":"207",)");
}

TEST_F(Instruction, GivesADocumentOfTheSameApplicationTheNegotiatedVersion) {
  Iterate();
  document.master.authoringApplication = "MERIDOX";
  document.authAppVersion = "207";
  EXPECT_EQ(Between(Text(), R"("authAppVersion")", R"("ndVersion")"), R"("authAppVersion":"310",)");
}

TEST_F(Instruction, OfAUgcDocumentKeeps42UnlessAnotherApplicationWroteIt) {
  Iterate();
  parts.kind = DocumentKind::Ugc;
  parts.application = {"DOVA", "42"};
  document.master.authoringApplication = "DOVA";
  document.authAppVersion = "77";
  EXPECT_EQ(Between(Text(), R"("authAppVersion")", R"("ndVersion")"), R"("authAppVersion":"42",)");
  document.master.authoringApplication = "ELSE";
  EXPECT_EQ(Between(Text(), R"("authoringApplication")", "}"), R"("authoringApplication":"ELSE")");
  EXPECT_EQ(Between(Text(), R"("authAppVersion")", R"("ndVersion")"), R"("authAppVersion":"77",)");
}

// Not what a text document gets: there an empty application falls back to a default.
TEST_F(Instruction, OfADocumentWithoutAnApplicationHasNoneAndTheDocumentsVersion) {
  Iterate();
  document.authAppVersion = "77";
  const std::string text = Text();
  EXPECT_EQ(Between(text, R"("authoringApplication")", "}"), R"("authoringApplication":"")");
  EXPECT_EQ(Between(text, R"("authAppVersion")", R"("ndVersion")"), R"("authAppVersion":"77",)");
}

TEST_F(Instruction, NamesDependenciesInTheirOrder) {
  std::vector<DerivedSourceDependency> dependencies(2);
  dependencies[0].asStoredChildName = "bolt";
  dependencies[0].isDirect = true;
  dependencies[0].sourceId = "D7";
  dependencies[0].sourceMaster.id = "M7";
  dependencies[0].sourceMaster.cadName = "bolt.fnl";
  dependencies[1].asStoredChildName = "axle";
  parts.dependencies = &dependencies;
  EXPECT_EQ(Between(Text(), R"("isDerived")", "}]}}"),
            R"("isDerived":true,"derivedSourceDependencies":[{"asStoredChildName":"bolt","isDirect":true,)"
            R"("source":{"id":"D7","epmMaster":{"id":"M7","cadName":"bolt.fnl"}}},)"
            R"({"asStoredChildName":"axle","isDirect":false,)"
            R"("source":{"id":"","epmMaster":{"id":"","cadName":""}})");
}

TEST_F(Instruction, KeepsTheDocumentsDependenciesWhenNoneAreGiven) {
  Iterate();
  document.dependencies.resize(1);
  document.dependencies[0].asStoredChildName = "kept";
  EXPECT_NE(Text().find(R"("isDerived":true,"derivedSourceDependencies":[{"asStoredChildName":"kept")"),
            std::string::npos);
}

TEST_F(Instruction, DropsTheDocumentsDependenciesForAnEmptyList) {
  Iterate();
  document.dependencies.resize(1);
  const std::vector<DerivedSourceDependency> none;
  parts.dependencies = &none;
  EXPECT_TRUE(Text().ends_with(R"("isDerived":false}})")) << Text();
}

TEST_F(Instruction, OfANewDocumentInALanguageIsToBeTranslated) {
  parts.language = "de";
  EXPECT_TRUE(Text().ends_with(R"("isDerived":false,"fileBasedAttributes":[)" +
                               Attribute("ZVK_DD_LANGUAGE", "de") + "," +
                               Attribute("ZVK_DD_TRANSLATE", "yes") + "]}}"))
      << Text();
}

TEST_F(Instruction, KeepsMembersOfAttributesThatNobodyHereKnows) {
  Iterate();
  const std::string odd =
      R"([{"parameterDefinition":{"parameterName":"P","unit":"mm"},"more":[1,null]},7,"x"])";
  HasAttributes(odd.c_str());
  EXPECT_TRUE(Text().ends_with(R"("fileBasedAttributes":)" + odd + "}}")) << Text();
}

TEST_F(Instruction, ReplacesTheLanguageBehindTheOtherAttributes) {
  Iterate();
  const std::string other = R"({"parameterDefinition":{"parameterName":"A"}})";
  HasAttributes(("[" + Attribute("ZVK_DD_LANGUAGE", "en") + "," + other + "," +
                 Attribute("ZVK_DD_LANGUAGE", "fr") + "," + Attribute("ZVK_DD_TRANSLATE", "no") + "]")
                    .c_str());
  parts.language = "de";
  EXPECT_TRUE(Text().ends_with(R"("fileBasedAttributes":[)" + other + "," +
                               Attribute("ZVK_DD_TRANSLATE", "no") + "," +
                               Attribute("ZVK_DD_LANGUAGE", "de") + "]}}"))
      << Text();
}

TEST_F(Instruction, MarksADocumentThatHasALanguageForTranslationAtAnyIteration) {
  Iterate();
  HasAttributes(("[" + Attribute("ZVK_DD_LANGUAGE", "en") + "]").c_str());
  EXPECT_TRUE(Text().ends_with(R"("fileBasedAttributes":[)" + Attribute("ZVK_DD_LANGUAGE", "en") + "," +
                               Attribute("ZVK_DD_TRANSLATE", "yes") + "]}}"))
      << Text();
}

TEST_F(Instruction, LeavesADocumentThatIsNotToBeTranslatedAlone) {
  Iterate();
  const std::string both =
      "[" + Attribute("ZVK_DD_TRANSLATE", "no") + "," + Attribute("ZVK_DD_LANGUAGE", "en") + "]";
  HasAttributes(both.c_str());
  EXPECT_TRUE(Text().ends_with(R"("fileBasedAttributes":)" + both + "}}")) << Text();
}

TEST_F(Instruction, HasNoAttributesWithoutALanguageOrADocumentThatHasSome) {
  Iterate();
  for (const char* none :
       {"{}", "[]", "7", R"({"fileBasedAttributes":[]})", R"({"fileBasedAttributes":{}})"}) {
    json.Parse(none);
    EXPECT_TRUE(Text().ends_with(R"("isDerived":false}})")) << none;
  }
  json.SetNull();
  EXPECT_TRUE(Text().ends_with(R"("isDerived":false}})"));
}

TEST_F(Instruction, EscapesTextsFromHostAndServer) {
  parts.name = "a\"b\\c\n\x01";
  parts.folderId = "\"";
  const std::string text = Text();
  EXPECT_NE(text.find(R"("cadName":"a\"b\\c\n\u0001")"), std::string::npos) << text;
  EXPECT_TRUE(text.ends_with(R"("targetFolderId":"\""})")) << text;
}

}  // namespace
}  // namespace vtdirect_test
