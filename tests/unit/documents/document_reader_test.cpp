#include "documents/reading/document_reader.h"

#include <gtest/gtest.h>

#include "tests/unit/documents/record_text.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using vtdirect_test::Json;
using vtdirect_test::SummaryText;
using vtdirect_test::Text;

constexpr const char* emptySummary = ",,,,,,,,000,,,0[,,,,,,]";
constexpr const char* emptyContent = ",,,000,0,,0,";

constexpr const char* summaryJson = R"({"id":"D1","context":{"id":"C1","name":"Bike","type":"Product"},
  "revision":"B","iteration":"3","authAppVersion":"310","ndVersion":"J-01",
  "pdmIterationState":{"isCheckout":true,"isCheckoutByYou":true,"isLatest":true,"checkoutByUser":"ann",
    "checkoutToFolderName":"WS"},
  "isDerived":true,
  "epmMaster":{"id":"M1","name":"Fork","number":"0042","category":"iso","subCategory":"sub",
    "cadName":"fork.lxz","authoringApplication":"MERIDOX"}})";

TEST(SummaryReader, TakesEveryFieldFromItsPlace) {
  DocumentSummary summary;
  EXPECT_TRUE(ReadDocumentSummary(Json(summaryJson), summary));
  EXPECT_EQ(SummaryText(summary),
            "D1,C1,Bike,Product,B,3,310,J-01,111,ann,WS,1[M1,Fork,0042,iso,sub,fork.lxz,MERIDOX]");
}

TEST(BaseReader, TakesAllButTheMaster) {
  DocumentSummary summary;
  EXPECT_TRUE(ReadDocumentBase(Json(summaryJson), summary));
  EXPECT_EQ(SummaryText(summary), "D1,C1,Bike,Product,B,3,310,J-01,111,ann,WS,1[,,,,,,]");
}

TEST(RecordReader, TakesTheSummarysFieldsToo) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(Json(summaryJson), record));
  EXPECT_EQ(SummaryText(record),
            "D1,C1,Bike,Product,B,3,310,J-01,111,ann,WS,1[M1,Fork,0042,iso,sub,fork.lxz,MERIDOX]");
}

TEST(IterationState, EachFlagHasItsOwnPlace) {
  const auto flags = [](const char* state) {
    DocumentSummary summary;
    ReadDocumentBase(Json(std::string(R"({"pdmIterationState":)") + state + "}"), summary);
    return Text(summary.isCheckout) + Text(summary.isCheckoutByYou) + Text(summary.isLatest);
  };
  EXPECT_EQ(flags(R"({"isCheckout":true})"), "100");
  EXPECT_EQ(flags(R"({"isCheckoutByYou":true})"), "010");
  EXPECT_EQ(flags(R"({"isLatest":true})"), "001");
}

TEST(RecordReader, TakesTheLocation) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(
      Json(R"({"locationFolder":{"id":"F1","name":"Frames","path":"/Bike/Frames"}})"), record));
  EXPECT_EQ(record.folderId + "," + record.folderName + "," + record.folderPath, "F1,Frames,/Bike/Frames");
}

TEST(RecordReader, TakesWhetherTheContentIsSectioned) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(Json(R"({"cadContent":{"isSectioned":true}})"), record));
  EXPECT_TRUE(record.isSectioned);
}

TEST(RecordReader, LeavesFieldsEmptyForADocumentWithoutMasterAndContent) {
  DocumentRecord record;
  EXPECT_TRUE(ReadDocumentRecord(Json(R"({"id":"D1"})"), record));
  EXPECT_EQ(SummaryText(record), "D1,,,,,,,,000,,,0[,,,,,,]");
  EXPECT_TRUE(record.contentSections.empty());
  EXPECT_TRUE(record.secondaryContents.empty());
  EXPECT_TRUE(record.dependencies.empty());
  EXPECT_TRUE(record.fileBasedAttributes.empty());
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
  EXPECT_EQ(Text(record.contentSections[1]), emptyContent);
  EXPECT_EQ(record.contentSections[2].id, "c");
  EXPECT_EQ(Text(record.contentSections[5]), emptyContent);
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
  EXPECT_EQ(SummaryText(record), emptySummary);
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
  EXPECT_EQ(Text(master), "[1,2,3,4,5,6,7]");
}

TEST(DependencyReader, TakesEveryField) {
  DerivedSourceDependency dependency;
  EXPECT_TRUE(ReadDependency(Json(R"({"asStoredChildName":"child.lxz","isDirect":true,
      "source":{"id":"S1","epmMaster":{"id":"M1","cadName":"c"},"revision":"A","iteration":"2",
        "authAppVersion":"310","ndVersion":"J-01","revNum":-7,"isPlaceHolder":true,"isDerived":true,
        "hasCompleteDependencies":true}})"),
                             dependency));
  EXPECT_EQ(Text(dependency), "child.lxz,1,S1[M1,,,,,c,]A,2,310,J-01,-7,111");
}

TEST(DependencyReader, ReadsNothingOfTheSourceFromTheTop) {
  DerivedSourceDependency dependency;
  EXPECT_TRUE(ReadDependency(
      Json(R"({"id":"S1","revision":"A","revNum":3,"isPlaceHolder":true,"epmMaster":{"id":"M"}})"),
      dependency));
  EXPECT_EQ(Text(dependency), ",0,[,,,,,,],,,,0,000");
}

TEST(DependencyReader, EachFlagOfTheSourceHasItsOwnPlace) {
  const auto flags = [](const char* source) {
    DerivedSourceDependency dependency;
    ReadDependency(Json(std::string(R"({"source":)") + source + "}"), dependency);
    return Text(dependency.isDirect) + Text(dependency.isPlaceHolder) + Text(dependency.isDerived) +
           Text(dependency.hasCompleteDependencies);
  };
  EXPECT_EQ(flags(R"({"isPlaceHolder":true})"), "0100");
  EXPECT_EQ(flags(R"({"isDerived":true})"), "0010");
  EXPECT_EQ(flags(R"({"hasCompleteDependencies":true})"), "0001");
  EXPECT_EQ(flags(R"({"isDirect":true})"), "0000");
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
  EXPECT_EQ(Text(content), "S1,VIEWABLE,f,111,17,aGVsbG8,4096,<https://a/1><https://a/2>");
}

TEST(ContentReader, EachFlagHasItsOwnPlace) {
  const auto flags = [](const char* json) {
    ContentRecord content;
    ReadContent(Json(json), content);
    return Text(content.isForwardable) + Text(content.isStale) + Text(content.isHidden);
  };
  EXPECT_EQ(flags(R"({"isForwardable":true})"), "100");
  EXPECT_EQ(flags(R"({"isStale":true})"), "010");
  EXPECT_EQ(flags(R"({"isHidden":true})"), "001");
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
  EXPECT_EQ(Text(content), ",,,000,0,,0,<https://a/1><https://a/2>");
}

TEST(ContentReader, GrowsTheUrlsOfAKeyThatStandsTwice) {
  ContentRecord content;
  ReadContent(Json(R"({"contentUrl":["1"],"contentUrl":["2"],"streamId":1,"streamId":2,
                       "uploadInfo":{"encodedCCD":"a"},"uploadInfo":{"encodedCCD":"b"}})"),
              content);
  EXPECT_EQ(Text(content), ",,,000,2,b,0,<1><2>");
}

TEST(AttributeReader, TakesEveryField) {
  FileBasedAttribute attribute;
  EXPECT_TRUE(ReadAttribute(
      Json(R"({"parameterDefinition":{"parameterName":"p","attributeName":"a","valueType":"String"},
               "parameterValue":{"value":"v"}})"),
      attribute));
  EXPECT_EQ(Text(attribute), "p,a,String,v");
}

TEST(AttributeReader, TakesNoFieldFromTheOthersObjectNorFromTheTop) {
  FileBasedAttribute attribute;
  EXPECT_TRUE(ReadAttribute(Json(R"({"parameterDefinition":{"value":"v"},
               "parameterValue":{"parameterName":"p","attributeName":"a","valueType":"String"},
               "parameterName":"p","attributeName":"a","valueType":"t","value":"v"})"),
                            attribute));
  EXPECT_EQ(Text(attribute), ",,,");
}

TEST(WorkspaceReader, TakesEveryField) {
  WorkspaceRecord workspace;
  EXPECT_TRUE(
      ReadWorkspace(Json(R"({"id":"W1","name":"mine","description":"d","contextId":"C1"})"), workspace));
  EXPECT_EQ(Text(workspace), "W1,mine,d,C1");
}

TEST(MasterOfADocument, IsReadAloneAndOnlyFromAnObject) {
  EpmMasterRecord master;
  ReadMasterOf(Json(R"({"id":"D1","epmMaster":{"id":"M1"}})"), master);
  EXPECT_EQ(Text(master), "[M1,,,,,,]");
  ReadMasterOf(Json(R"({"id":"D1"})"), master);
  ReadMasterOf(Json("[]"), master);
  EXPECT_EQ(Text(master), "[M1,,,,,,]");
}

}  // namespace
