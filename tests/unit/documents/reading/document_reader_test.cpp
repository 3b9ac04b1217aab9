#include "documents/reading/document_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/documents/json_text.h"
#include "tests/unit/documents/record_printing.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using vtdirect_test::Json;

constexpr const char* summaryJson = R"({"id":"D1","context":{"id":"C1","name":"Bike","type":"Product"},
  "revision":"B","iteration":"3","authAppVersion":"310","ndVersion":"J-01",
  "pdmIterationState":{"isCheckout":true,"isCheckoutByYou":true,"isLatest":true,"checkoutByUser":"ann",
    "checkoutToFolderName":"WS"},
  "isDerived":true,
  "epmMaster":{"id":"M1","name":"Fork","number":"0042","category":"iso","subCategory":"sub",
    "cadName":"fork.lxz","authoringApplication":"MERIDOX"}})";

// What summaryJson holds, without its master.
DocumentSummary ExpectedBase() {
  DocumentSummary expected;
  expected.id = "D1";
  expected.contextId = "C1";
  expected.contextName = "Bike";
  expected.contextType = "Product";
  expected.revision = "B";
  expected.iteration = "3";
  expected.authAppVersion = "310";
  expected.ndVersion = "J-01";
  expected.isCheckout = true;
  expected.isCheckoutByYou = true;
  expected.isLatest = true;
  expected.checkoutByUser = "ann";
  expected.checkoutToFolderName = "WS";
  expected.isDerived = true;
  return expected;
}

DocumentSummary ExpectedSummary() {
  DocumentSummary expected = ExpectedBase();
  expected.master = {"M1", "Fork", "0042", "iso", "sub", "fork.lxz", "MERIDOX"};
  return expected;
}

// A content with these URLs and nothing else.
ContentRecord WithUrls(std::vector<std::string> urls) {
  ContentRecord content;
  content.contentUrl = std::move(urls);
  return content;
}

TEST(SummaryReader, TakesEveryFieldFromItsPlace) {
  DocumentSummary summary;
  EXPECT_TRUE(ReadDocumentSummary(Json(summaryJson), summary));
  EXPECT_EQ(summary, ExpectedSummary());
}

TEST(BaseReader, TakesAllButTheMaster) {
  DocumentSummary summary;
  EXPECT_TRUE(ReadDocumentBase(Json(summaryJson), summary));
  EXPECT_EQ(summary, ExpectedBase());
}

TEST(RecordReader, TakesTheSummarysFieldsToo) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(Json(summaryJson), record));
  const DocumentSummary& summary = record;
  EXPECT_EQ(summary, ExpectedSummary());
}

TEST(IterationState, EachFlagHasItsOwnPlace) {
  const auto flags = [](const char* state) {
    DocumentSummary summary;
    ReadDocumentBase(Json(std::string(R"({"pdmIterationState":)") + state + "}"), summary);
    return std::array{summary.isCheckout, summary.isCheckoutByYou, summary.isLatest};
  };
  EXPECT_THAT(flags(R"({"isCheckout":true})"), ElementsAre(true, false, false));
  EXPECT_THAT(flags(R"({"isCheckoutByYou":true})"), ElementsAre(false, true, false));
  EXPECT_THAT(flags(R"({"isLatest":true})"), ElementsAre(false, false, true));
}

TEST(RecordReader, TakesTheLocation) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(
      Json(R"({"locationFolder":{"id":"F1","name":"Frames","path":"/Bike/Frames"}})"), record));
  EXPECT_EQ(record.folderId, "F1");
  EXPECT_EQ(record.folderName, "Frames");
  EXPECT_EQ(record.folderPath, "/Bike/Frames");
}

TEST(RecordReader, TakesWhetherTheContentIsSectioned) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(Json(R"({"cadContent":{"isSectioned":true}})"), record));
  EXPECT_TRUE(record.isSectioned);
}

TEST(RecordReader, LeavesFieldsEmptyForADocumentWithoutMasterAndContent) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(Json(R"({"id":"D1"})"), record));
  DocumentRecord expected;
  expected.id = "D1";
  EXPECT_EQ(record, expected);
}

TEST(RecordReader, LeavesTheSectionsEmptyForContentWithoutThem) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(Json(R"({"cadContent":{}})"), record));
  EXPECT_TRUE(record.contentSections.empty());
}

TEST(RecordReader, KeepsAnEmptySectionForAnElementThatIsNoObject) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(
      Json(R"({"cadContent":{"contentSections":[{"id":"a"},7,{"id":"c"},null,"x",[]]}})"), record));
  ASSERT_EQ(record.contentSections.size(), 6u);
  EXPECT_EQ(record.contentSections[0].id, "a");
  EXPECT_EQ(record.contentSections[1], ContentRecord());
  EXPECT_EQ(record.contentSections[2].id, "c");
  EXPECT_EQ(record.contentSections[5], ContentRecord());
}

TEST(RecordReader, DropsElementsOfTheOtherListsThatAreNoObjects) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(Json(R"({"secondaryContents":[{"id":"a"},7,{"id":"c"},null],
               "derivedSourceDependencies":["x",{"asStoredChildName":"child"},[]],
               "fileBasedAttributes":[true,{"parameterValue":{"value":"v"}},3]})"),
                                 record));
  ASSERT_EQ(record.secondaryContents.size(), 2u);
  EXPECT_EQ(record.secondaryContents[0].id, "a");
  EXPECT_EQ(record.secondaryContents[1].id, "c");
  ASSERT_EQ(record.dependencies.size(), 1u);
  EXPECT_EQ(record.dependencies[0].asStoredChildName, "child");
  ASSERT_EQ(record.fileBasedAttributes.size(), 1u);
  EXPECT_EQ(record.fileBasedAttributes[0].value, "v");
}

TEST(RecordReader, KeepsAnEmptyObjectOfAnyList) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(Json(R"({"cadContent":{"contentSections":[{}]},"secondaryContents":[{}],
               "derivedSourceDependencies":[{}],"fileBasedAttributes":[{}]})"),
                                 record));
  EXPECT_EQ(record.contentSections.size(), 1u);
  EXPECT_EQ(record.secondaryContents.size(), 1u);
  EXPECT_EQ(record.dependencies.size(), 1u);
  EXPECT_EQ(record.fileBasedAttributes.size(), 1u);
}

TEST(RecordReader, GrowsListsWhoseKeyStandsTwice) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(
      Json(R"({"cadContent":{"contentSections":[{"id":"a"}],"contentSections":[{"id":"b"}]},
               "cadContent":{"contentSections":[{"id":"c"}]},
               "secondaryContents":[{"id":"d"}],"secondaryContents":[{"id":"e"}],
               "derivedSourceDependencies":[{}],"derivedSourceDependencies":[{}],
               "fileBasedAttributes":[{}],"fileBasedAttributes":[{},{}]})"),
      record));
  ASSERT_EQ(record.contentSections.size(), 3u);
  EXPECT_EQ(record.contentSections[0].id + record.contentSections[1].id + record.contentSections[2].id,
            "abc");
  ASSERT_EQ(record.secondaryContents.size(), 2u);
  EXPECT_EQ(record.secondaryContents[0].id + record.secondaryContents[1].id, "de");
  EXPECT_EQ(record.dependencies.size(), 2u);
  EXPECT_EQ(record.fileBasedAttributes.size(), 3u);
}

TEST(RecordReader, LetsTheLaterOfTwoScalarsWin) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(Json(R"({"id":"D1","id":"D2","isDerived":true,"isDerived":false,
               "context":{"id":"C1","id":"C2","name":"N1"},"context":{"id":"C3"},
               "epmMaster":{"number":"1"},"epmMaster":{"number":"2"}})"),
                                 record));
  EXPECT_EQ(record.id, "D2");
  EXPECT_FALSE(record.isDerived);
  EXPECT_EQ(record.contextId, "C3");
  EXPECT_EQ(record.contextName, "N1");
  EXPECT_EQ(record.master.number, "2");
}

// Only what has the right type counts as standing there.
TEST(RecordReader, KeepsTheEarlierOfTwoWhenTheLaterIsOfAnotherType) {
  DocumentRecord record;
  EXPECT_TRUE(
      ReadDocumentRecord(Json(R"({"id":"D1","id":null,"context":{"id":"C1"},"context":"x"})"), record));
  EXPECT_EQ(record.id, "D1");
  EXPECT_EQ(record.contextId, "C1");
}

TEST(RecordReader, ComparesNamesExactly) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(
      Json(
          R"({"ID":"D1","Id":"D1","i":"D1","idx":"D1","":"D1","epmmaster":{"id":"M"},"unknown":{"id":"x"}})"),
      record));
  EXPECT_EQ(record, DocumentRecord());
}

// A name or text with a zero byte is no other name or text.
TEST(RecordReader, ReadsPastZeroBytes) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(Json(R"({"id":"a\u0000b","id\u0000":"c"})"), record));
  EXPECT_EQ(record.id, std::string("a\0b", 3));
}

TEST(MasterReader, TakesEveryField) {
  EpmMasterRecord master;
  EXPECT_TRUE(ReadEpmMaster(Json(R"({"id":"1","name":"2","number":"3","category":"4","subCategory":"5",
                                     "cadName":"6","authoringApplication":"7"})"),
                            master));
  EXPECT_EQ(master, (EpmMasterRecord{"1", "2", "3", "4", "5", "6", "7"}));
}

TEST(DependencyReader, TakesEveryField) {
  DerivedSourceDependency dependency;
  EXPECT_TRUE(ReadDependency(Json(R"({"asStoredChildName":"child.lxz","isDirect":true,
      "source":{"id":"S1","epmMaster":{"id":"M1","cadName":"c"},"revision":"A","iteration":"2",
        "authAppVersion":"310","ndVersion":"J-01","revNum":-7,"isPlaceHolder":true,"isDerived":true,
        "hasCompleteDependencies":true}})"),
                             dependency));
  DerivedSourceDependency expected;
  expected.asStoredChildName = "child.lxz";
  expected.isDirect = true;
  expected.sourceId = "S1";
  expected.sourceMaster.id = "M1";
  expected.sourceMaster.cadName = "c";
  expected.revision = "A";
  expected.iteration = "2";
  expected.authAppVersion = "310";
  expected.ndVersion = "J-01";
  expected.revNum = -7;
  expected.isPlaceHolder = true;
  expected.isDerived = true;
  expected.hasCompleteDependencies = true;
  EXPECT_EQ(dependency, expected);
}

TEST(DependencyReader, ReadsNothingOfTheSourceFromTheTop) {
  DerivedSourceDependency dependency;
  EXPECT_TRUE(ReadDependency(
      Json(R"({"id":"S1","revision":"A","revNum":3,"isPlaceHolder":true,"epmMaster":{"id":"M"}})"),
      dependency));
  EXPECT_EQ(dependency, DerivedSourceDependency());
}

TEST(DependencyReader, EachFlagOfTheSourceHasItsOwnPlace) {
  const auto flags = [](const char* source) {
    DerivedSourceDependency dependency;
    ReadDependency(Json(std::string(R"({"source":)") + source + "}"), dependency);
    return std::array{dependency.isDirect, dependency.isPlaceHolder, dependency.isDerived,
                      dependency.hasCompleteDependencies};
  };
  EXPECT_THAT(flags(R"({"isPlaceHolder":true})"), ElementsAre(false, true, false, false));
  EXPECT_THAT(flags(R"({"isDerived":true})"), ElementsAre(false, false, true, false));
  EXPECT_THAT(flags(R"({"hasCompleteDependencies":true})"), ElementsAre(false, false, false, true));
  EXPECT_THAT(flags(R"({"isDirect":true})"), ElementsAre(false, false, false, false));
}

TEST(DependencyReader, TakesTheWholeRangeOfTheRevisionNumber) {
  const auto number = [](const char* json) {
    DerivedSourceDependency dependency;
    ReadDependency(Json(std::string(R"({"source":{"revNum":)") + json + "}}"), dependency);
    return dependency.revNum;
  };
  EXPECT_EQ(number("2147483647"), 2147483647);
  EXPECT_EQ(number("-2147483648"), -2147483647 - 1);
}

TEST(ContentReader, TakesEveryField) {
  ContentRecord content;
  EXPECT_TRUE(ReadContent(Json(R"({"id":"S1","category":"VIEWABLE","fileName":"f","isForwardable":true,
      "isStale":true,"isHidden":true,"streamId":17,"uploadInfo":{"encodedCCD":"aGVsbG8"},
      "contentUrl":["https://a/1","https://a/2"],"fileSize":4096})"),
                          content));
  ContentRecord expected = WithUrls({"https://a/1", "https://a/2"});
  expected.id = "S1";
  expected.category = "VIEWABLE";
  expected.fileName = "f";
  expected.isForwardable = true;
  expected.isStale = true;
  expected.isHidden = true;
  expected.streamId = 17;
  expected.encodedCCD = "aGVsbG8";
  expected.fileSize = 4096;
  expected.fileSizeTold = true;
  EXPECT_EQ(content, expected);
}

TEST(ContentReader, EachFlagHasItsOwnPlace) {
  const auto flags = [](const char* json) {
    ContentRecord content;
    ReadContent(Json(json), content);
    return std::array{content.isForwardable, content.isStale, content.isHidden};
  };
  EXPECT_THAT(flags(R"({"isForwardable":true})"), ElementsAre(true, false, false));
  EXPECT_THAT(flags(R"({"isStale":true})"), ElementsAre(false, true, false));
  EXPECT_THAT(flags(R"({"isHidden":true})"), ElementsAre(false, false, true));
}

TEST(ContentReader, TakesTheWholeRangeOfSizesAndStreams) {
  ContentRecord content;
  ReadContent(Json(R"({"streamId":18446744073709551615,"fileSize":18446744073709551614})"), content);
  EXPECT_EQ(content.streamId, 18446744073709551615u);
  EXPECT_EQ(content.fileSize, 18446744073709551614u);
}

TEST(ContentReader, PassesOverUrlsThatAreNoTexts) {
  ContentRecord content;
  ReadContent(Json(R"({"contentUrl":[null,"https://a/1",7,{},["https://no"],"https://a/2"]})"), content);
  EXPECT_EQ(content, WithUrls({"https://a/1", "https://a/2"}));
}

TEST(ContentReader, GrowsTheUrlsOfAKeyThatStandsTwice) {
  ContentRecord content;
  ReadContent(Json(R"({"contentUrl":["1"],"contentUrl":["2"],"streamId":1,"streamId":2,
                       "uploadInfo":{"encodedCCD":"a"},"uploadInfo":{"encodedCCD":"b"}})"),
              content);
  ContentRecord expected = WithUrls({"1", "2"});
  expected.streamId = 2;
  expected.encodedCCD = "b";
  EXPECT_EQ(content, expected);
}

TEST(AttributeReader, TakesEveryField) {
  FileBasedAttribute attribute;
  EXPECT_TRUE(ReadAttribute(
      Json(R"({"parameterDefinition":{"parameterName":"p","attributeName":"a","valueType":"String"},
               "parameterValue":{"value":"v"}})"),
      attribute));
  EXPECT_EQ(attribute, (FileBasedAttribute{"p", "a", "String", "v"}));
}

TEST(AttributeReader, TakesNoFieldFromTheOthersObjectNorFromTheTop) {
  FileBasedAttribute attribute;
  EXPECT_TRUE(ReadAttribute(Json(R"({"parameterDefinition":{"value":"v"},
               "parameterValue":{"parameterName":"p","attributeName":"a","valueType":"String"},
               "parameterName":"p","attributeName":"a","valueType":"t","value":"v"})"),
                            attribute));
  EXPECT_EQ(attribute, FileBasedAttribute());
}

TEST(WorkspaceReader, TakesEveryField) {
  WorkspaceRecord workspace;
  EXPECT_TRUE(
      ReadWorkspace(Json(R"({"id":"W1","name":"mine","description":"d","contextId":"C1"})"), workspace));
  EXPECT_EQ(workspace, (WorkspaceRecord{"W1", "mine", "d", "C1"}));
}

}  // namespace
