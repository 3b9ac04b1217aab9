#include "documents/storing/document_writer.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"
#include "tests/unit/documents/json_text.h"
#include "tests/unit/documents/record_printing.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using vtdirect_test::Json;
using vtdirect_test::JsonText;
using vtdirect_test::ReadFile;
using vtdirect_test::TemporaryDirectory;
using vtdirect_test::TraceRecorder;

std::string SectionText(const ContentRecord& record) {
  rapidjson::Document document;
  return JsonText(WriteContentSection(record, document.GetAllocator()));
}

std::string AttributeText(const FileBasedAttribute& record) {
  rapidjson::Document document;
  return JsonText(WriteAttribute(record, document.GetAllocator()));
}

std::string Attribute(const std::string& name, const std::string& value) {
  return R"({"parameterDefinition":{"parameterName":")" + name + R"("},"parameterValue":{"value":")" + value +
         R"("}})";
}

TEST(ContentSectionWriter, WritesItsMembersInOrder) {
  ContentRecord record;
  record.category = "VIEWABLE";
  record.fileName = "{$CAD_NAME}.lxz";
  record.streamId = 17;
  record.encodedCCD = "aGVsbG8";
  EXPECT_EQ(
      SectionText(record),
      R"({"category":"VIEWABLE","fileName":"{$CAD_NAME}.lxz","streamId":17,"uploadInfo":{"encodedCCD":"aGVsbG8"}})");
}

TEST(ContentSectionWriter, WritesHiddenOnlyWhenItIsSet) {
  ContentRecord record;
  record.isHidden = true;
  EXPECT_EQ(SectionText(record),
            R"({"category":"","fileName":"","isHidden":true,"streamId":0,"uploadInfo":{"encodedCCD":""}})");
  record.isHidden = false;
  EXPECT_EQ(SectionText(record),
            R"({"category":"","fileName":"","streamId":0,"uploadInfo":{"encodedCCD":""}})");
}

TEST(ContentSectionWriter, WritesNoOtherField) {
  ContentRecord record;
  record.id = "S1";
  record.isForwardable = true;
  record.isStale = true;
  record.contentUrl = {"https://a"};
  record.fileSize = 9;
  EXPECT_EQ(SectionText(record),
            R"({"category":"","fileName":"","streamId":0,"uploadInfo":{"encodedCCD":""}})");
}

TEST(ContentSectionWriter, WritesTheWholeRangeOfStreams) {
  ContentRecord record;
  record.streamId = 18446744073709551615u;
  EXPECT_EQ(
      SectionText(record),
      R"({"category":"","fileName":"","streamId":18446744073709551615,"uploadInfo":{"encodedCCD":""}})");
}

TEST(AttributeWriter, WritesDefinitionAndValue) {
  EXPECT_EQ(
      AttributeText(MakeStringAttribute("ZVK_DD_LANGUAGE", "de")),
      R"({"parameterDefinition":{"parameterName":"ZVK_DD_LANGUAGE","attributeName":"ZVK_DD_LANGUAGE","valueType":"String"},"parameterValue":{"value":"de"}})");
}

TEST(AttributeWriter, LeavesAnEmptyAttributeNameOut) {
  EXPECT_EQ(
      AttributeText({"p", "", "String", "v"}),
      R"({"parameterDefinition":{"parameterName":"p","valueType":"String"},"parameterValue":{"value":"v"}})");
}

TEST(AttributeWriter, WritesTheOtherTextsEvenWhenTheyAreEmpty) {
  EXPECT_EQ(AttributeText({}),
            R"({"parameterDefinition":{"parameterName":"","valueType":""},"parameterValue":{"value":""}})");
}

TEST(StringAttribute, NamesParameterAndAttributeAlike) {
  EXPECT_EQ(MakeStringAttribute("n", "v"), (FileBasedAttribute{"n", "n", "String", "v"}));
}

// What the writer gives outlives the record that it was made from.
TEST(AttributeWriter, CopiesItsTexts) {
  rapidjson::Document document;
  rapidjson::Value value;
  {
    const FileBasedAttribute record = MakeStringAttribute(std::string(64, 'n'), std::string(64, 'v'));
    value = WriteAttribute(record, document.GetAllocator());
  }
  const std::string n(64, 'n');
  EXPECT_EQ(JsonText(value), R"({"parameterDefinition":{"parameterName":")" + n + R"(","attributeName":")" +
                                 n + R"(","valueType":"String"},"parameterValue":{"value":")" +
                                 std::string(64, 'v') + R"("}})");
}

TEST(AttributeSearch, FindsTheFirstOfTheName) {
  const auto array =
      Json("[" + Attribute("a", "1") + "," + Attribute("b", "2") + "," + Attribute("b", "3") + "]");
  EXPECT_EQ(FindAttribute(array, "b") - array.Begin(), 1);
  EXPECT_EQ(FindAttribute(array, "a") - array.Begin(), 0);
}

TEST(AttributeSearch, GivesTheEndForNone) {
  const auto array = Json("[" + Attribute("a", "1") + "]");
  EXPECT_EQ(FindAttribute(array, "A"), array.End());
  EXPECT_EQ(FindAttribute(array, ""), array.End());
  EXPECT_EQ(FindAttribute(array, "attribute"), array.End());
  const auto empty = Json("[]");
  EXPECT_EQ(FindAttribute(empty, "a"), empty.End());
}

TEST(AttributeSearch, PassesOverWhatIsNoAttribute) {
  const auto array = Json(R"([null,7,"a",[],{},{"parameterDefinition":"a"},{"parameterDefinition":{}},
                              {"parameterDefinition":{"parameterName":7}},{"parameterName":"a"},)" +
                          Attribute("a", "1") + "]");
  EXPECT_EQ(FindAttribute(array, "a") - array.Begin(), 9);
}

TEST(AttributeReplacement, RemovesEveryOneOfTheNameAndAppends) {
  auto array = Json("[" + Attribute("a", "1") + "," + Attribute("x", "2") + "," + Attribute("a", "3") + "," +
                    Attribute("y", "4") + "," + Attribute("a", "5") + "]");
  ReplaceAttribute(array, array.GetAllocator(), "a", "new");
  EXPECT_EQ(
      JsonText(array),
      "[" + Attribute("x", "2") + "," + Attribute("y", "4") +
          R"(,{"parameterDefinition":{"parameterName":"a","attributeName":"a","valueType":"String"},"parameterValue":{"value":"new"}}])");
}

TEST(AttributeReplacement, RemovesNeighboursOfOneName) {
  auto array = Json("[" + Attribute("a", "1") + "," + Attribute("a", "2") + "," + Attribute("a", "3") + "]");
  ReplaceAttribute(array, array.GetAllocator(), "a", "new");
  EXPECT_EQ(array.Size(), 1u);
}

TEST(AttributeReplacement, AppendsToAnArrayWithoutTheName) {
  auto array = Json(R"([7,{"parameterDefinition":{"parameterName":"b"}}])");
  ReplaceAttribute(array, array.GetAllocator(), "a", "v");
  EXPECT_EQ(
      JsonText(array),
      R"([7,{"parameterDefinition":{"parameterName":"b"}},{"parameterDefinition":{"parameterName":"a","attributeName":"a","valueType":"String"},"parameterValue":{"value":"v"}}])");
}

TEST(JsonBodyFile, HoldsTheCompactTextWithMembersAsBuilt) {
  const TemporaryDirectory directory;
  const std::string path = WriteJsonBodyFile(Json(R"({ "z" : 1, "a" : [ true , null ], "m" : "\u00fc\"" })"));
  EXPECT_EQ(ReadFile(path), "{\"z\":1,\"a\":[true,null],\"m\":\"\xc3\xbc\\\"\"}");
}

TEST(JsonBodyFile, StandsInTheTemporaryDirectoryUnderItsStem) {
  const TemporaryDirectory directory;
  const std::string path = WriteJsonBodyFile(Json("{}"));
  const auto entries = directory.Entries();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(path, directory.File(entries.front()));
  EXPECT_TRUE(entries.front().starts_with("upload")) << entries.front();
  EXPECT_TRUE(entries.front().ends_with(".json")) << entries.front();
}

TEST(JsonBodyFile, IsForItsOwnerAlone) {
  const TemporaryDirectory directory;
  const std::string path = WriteJsonBodyFile(Json("{}"));
  struct stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST(JsonBodyFile, HoldsWhatIsLongerThanItsBuffer) {
  const TemporaryDirectory directory;
  const std::string text = "[\"" + std::string(3 * 65536 + 1, 'x') + "\"]";
  EXPECT_EQ(ReadFile(WriteJsonBodyFile(Json(text))), text);
}

TEST(JsonBodyFile, GivesAnEmptyPathWithoutATraceWhenItCannotBeMade) {
  const TemporaryDirectory directory;
  setenv("TMPDIR", directory.File("missing").c_str(), 1);
  const TraceRecorder trace;
  EXPECT_EQ(WriteJsonBodyFile(Json("{}")), "");
  EXPECT_TRUE(trace.lines().empty());
}

}  // namespace
