#include <gtest/gtest.h>

#include <initializer_list>

#include "documents/reading/document_reader.h"
#include "tests/unit/documents/record_text.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using vtdirect_test::Json;
using vtdirect_test::SummaryText;
using vtdirect_test::Text;

using Values = std::initializer_list<const char*>;

constexpr Values noText = {"null", "true", "false", "7", "1.5", "[]", R"(["x"])", "{}", R"({"id":"x"})"};
constexpr Values noFlag = {"null", "1", "0", "\"true\"", "[true]", "{}"};
constexpr Values noObject = {"null", "true", "7", "\"x\"", "[]", R"([{"id":"x"}])"};
constexpr Values noList = {"null", "true", "7", "\"x\"", "{}", R"({"0":{}})"};
constexpr Values noUnsigned = {"null", "true", "-1", "\"12\"", "1.5", "18446744073709551616", "[12]", "{}"};
constexpr Values noSigned = {"null", "true", "\"7\"", "1.5", "2147483648", "-2147483649", "[7]", "{}"};

// Puts a value in the place of each "@".
std::string With(const char* value, std::string pattern) {
  for (auto hit = pattern.find('@'); hit != std::string::npos; hit = pattern.find('@', hit)) {
    pattern.replace(hit, 1, value);
    hit += std::char_traits<char>::length(value);
  }
  return pattern;
}

std::string RecordText(const DocumentRecord& record) {
  std::string text = SummaryText(record) + ";" + record.folderId + "," + record.folderName + "," +
                     record.folderPath + ";" + Text(record.isSectioned) + ";";
  for (const auto& dependency : record.dependencies) text += "(" + Text(dependency) + ")";
  for (const auto& content : record.contentSections) text += "{" + Text(content) + "}";
  for (const auto& content : record.secondaryContents) text += "/" + Text(content) + "/";
  for (const auto& attribute : record.fileBasedAttributes) text += "|" + Text(attribute) + "|";
  return text;
}

constexpr const char* emptyRecord = ",,,,,,,,000,,,0[,,,,,,];,,;0;";

void ExpectRecordStaysEmpty(Values values, const char* pattern) {
  for (const char* value : values) {
    DocumentRecord record;
    EXPECT_TRUE(ReadDocumentRecord(Json(With(value, pattern)), record)) << value;
    EXPECT_EQ(RecordText(record), emptyRecord) << value;
  }
}

TEST(DocumentReaders, SkipTextFieldsOfAnotherType) {
  ExpectRecordStaysEmpty(noText,
                         R"({"id":@,"revision":@,"iteration":@,"authAppVersion":@,"ndVersion":@,
      "context":{"id":@,"name":@,"type":@},
      "pdmIterationState":{"checkoutByUser":@,"checkoutToFolderName":@},
      "locationFolder":{"id":@,"name":@,"path":@},
      "epmMaster":{"id":@,"name":@,"number":@,"category":@,"subCategory":@,"cadName":@,
        "authoringApplication":@}})");
}

TEST(DocumentReaders, SkipFlagsOfAnotherType) {
  ExpectRecordStaysEmpty(noFlag,
                         R"({"isDerived":@,"cadContent":{"isSectioned":@},
      "pdmIterationState":{"isCheckout":@,"isCheckoutByYou":@,"isLatest":@}})");
}

TEST(DocumentReaders, SkipSubObjectsOfAnotherType) {
  ExpectRecordStaysEmpty(
      noObject, R"({"context":@,"pdmIterationState":@,"locationFolder":@,"cadContent":@,"epmMaster":@})");
}

TEST(DocumentReaders, SkipListsOfAnotherType) {
  ExpectRecordStaysEmpty(noList,
                         R"({"cadContent":{"contentSections":@},"secondaryContents":@,
      "derivedSourceDependencies":@,"fileBasedAttributes":@})");
}

TEST(DependencyReader, SkipsFieldsOfAnotherType) {
  static constexpr const char* empty = ",0,[,,,,,,],,,,0,000";
  const auto expectEmpty = [](Values values, const char* pattern) {
    for (const char* value : values) {
      DerivedSourceDependency dependency;
      EXPECT_TRUE(ReadDependency(Json(With(value, pattern)), dependency)) << value;
      EXPECT_EQ(Text(dependency), empty) << value;
    }
  };
  expectEmpty(noText, R"({"asStoredChildName":@,"source":{"id":@,"revision":@,"iteration":@,
                          "authAppVersion":@,"ndVersion":@}})");
  expectEmpty(noFlag, R"({"isDirect":@,"source":{"isPlaceHolder":@,"isDerived":@,
                          "hasCompleteDependencies":@}})");
  expectEmpty(noSigned, R"({"source":{"revNum":@}})");
  expectEmpty(noObject, R"({"source":@})");
  expectEmpty(noObject, R"({"source":{"epmMaster":@}})");
}

TEST(ContentReader, SkipsFieldsOfAnotherType) {
  const auto expectEmpty = [](Values values, const char* pattern) {
    for (const char* value : values) {
      ContentRecord content;
      EXPECT_TRUE(ReadContent(Json(With(value, pattern)), content)) << value;
      EXPECT_EQ(Text(content), ",,,000,0,,0,") << value;
    }
  };
  expectEmpty(noText, R"({"id":@,"category":@,"fileName":@,"uploadInfo":{"encodedCCD":@}})");
  expectEmpty(noFlag, R"({"isForwardable":@,"isStale":@,"isHidden":@})");
  expectEmpty(noUnsigned, R"({"streamId":@,"fileSize":@})");
  expectEmpty(noObject, R"({"uploadInfo":@})");
  expectEmpty(noList, R"({"contentUrl":@})");
}

TEST(AttributeReader, SkipsFieldsOfAnotherType) {
  const auto expectEmpty = [](Values values, const char* pattern) {
    for (const char* value : values) {
      FileBasedAttribute attribute;
      EXPECT_TRUE(ReadAttribute(Json(With(value, pattern)), attribute)) << value;
      EXPECT_EQ(Text(attribute), ",,,") << value;
    }
  };
  expectEmpty(noText, R"({"parameterDefinition":{"parameterName":@,"attributeName":@,"valueType":@},
                          "parameterValue":{"value":@}})");
  expectEmpty(noObject, R"({"parameterDefinition":@,"parameterValue":@})");
}

TEST(WorkspaceReader, SkipsFieldsOfAnotherType) {
  for (const char* value : noText) {
    WorkspaceRecord workspace;
    EXPECT_TRUE(
        ReadWorkspace(Json(With(value, R"({"id":@,"name":@,"description":@,"contextId":@})")), workspace));
    EXPECT_EQ(Text(workspace), ",,,") << value;
  }
}

TEST(DocumentReaders, TakeAnEmptyObject) {
  const auto empty = Json("{}");
  DocumentSummary summary;
  DocumentRecord record;
  EpmMasterRecord master;
  DerivedSourceDependency dependency;
  ContentRecord content;
  FileBasedAttribute attribute;
  WorkspaceRecord workspace;
  EXPECT_TRUE(ReadDocumentBase(empty, summary));
  EXPECT_TRUE(ReadDocumentSummary(empty, summary));
  EXPECT_TRUE(ReadDocumentRecord(empty, record));
  EXPECT_TRUE(ReadEpmMaster(empty, master));
  EXPECT_TRUE(ReadDependency(empty, dependency));
  EXPECT_TRUE(ReadContent(empty, content));
  EXPECT_TRUE(ReadAttribute(empty, attribute));
  EXPECT_TRUE(ReadWorkspace(empty, workspace));
  EXPECT_EQ(RecordText(record), emptyRecord);
}

TEST(DocumentReaders, RefuseWhatIsNoObjectAndLeaveTheRecordAlone) {
  for (const char* value : noObject) {
    const auto json = Json(value);
    DocumentSummary summary;
    summary.id = "kept";
    EXPECT_FALSE(ReadDocumentBase(json, summary)) << value;
    EXPECT_FALSE(ReadDocumentSummary(json, summary)) << value;
    EXPECT_EQ(SummaryText(summary), "kept,,,,,,,,000,,,0[,,,,,,]") << value;
    DocumentRecord record;
    record.folderId = "kept";
    EXPECT_FALSE(ReadDocumentRecord(json, record)) << value;
    EXPECT_EQ(RecordText(record), ",,,,,,,,000,,,0[,,,,,,];kept,,;0;") << value;
    EpmMasterRecord master;
    master.name = "kept";
    EXPECT_FALSE(ReadEpmMaster(json, master)) << value;
    EXPECT_EQ(Text(master), "[,kept,,,,,]") << value;
    DerivedSourceDependency dependency;
    dependency.sourceId = "kept";
    EXPECT_FALSE(ReadDependency(json, dependency)) << value;
    EXPECT_EQ(Text(dependency), ",0,kept[,,,,,,],,,,0,000") << value;
    ContentRecord content;
    content.id = "kept";
    EXPECT_FALSE(ReadContent(json, content)) << value;
    EXPECT_EQ(Text(content), "kept,,,000,0,,0,") << value;
    FileBasedAttribute attribute;
    attribute.value = "kept";
    EXPECT_FALSE(ReadAttribute(json, attribute)) << value;
    EXPECT_EQ(Text(attribute), ",,,kept") << value;
    WorkspaceRecord workspace;
    workspace.id = "kept";
    EXPECT_FALSE(ReadWorkspace(json, workspace)) << value;
    EXPECT_EQ(Text(workspace), "kept,,,") << value;
  }
}

}  // namespace
