#include <gtest/gtest.h>

#include <initializer_list>

#include "documents/reading/document_reader.h"
#include "tests/unit/documents/json_text.h"
#include "tests/unit/documents/record_printing.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using vtdirect_test::Json;

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

void ExpectRecordStaysEmpty(Values values, const char* pattern) {
  for (const char* value : values) {
    DocumentRecord record;
    EXPECT_TRUE(ReadDocumentRecord(Json(With(value, pattern)), record)) << value;
    EXPECT_EQ(record, DocumentRecord()) << value;
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
  const auto expectEmpty = [](Values values, const char* pattern) {
    for (const char* value : values) {
      DerivedSourceDependency dependency;
      EXPECT_TRUE(ReadDependency(Json(With(value, pattern)), dependency)) << value;
      EXPECT_EQ(dependency, DerivedSourceDependency()) << value;
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
      EXPECT_EQ(content, ContentRecord()) << value;
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
      EXPECT_EQ(attribute, FileBasedAttribute()) << value;
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
    EXPECT_EQ(workspace, WorkspaceRecord()) << value;
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
  EXPECT_EQ(summary, DocumentSummary());
  EXPECT_EQ(record, DocumentRecord());
  EXPECT_EQ(master, EpmMasterRecord());
  EXPECT_EQ(dependency, DerivedSourceDependency());
  EXPECT_EQ(content, ContentRecord());
  EXPECT_EQ(attribute, FileBasedAttribute());
  EXPECT_EQ(workspace, WorkspaceRecord());
}

// Reads what is no object into a record in which one field is set, and expects the record as it was.
template <typename Record>
void ExpectRefusal(bool (*read)(const rapidjson::Value&, Record&), std::string Record::*field) {
  Record kept;
  kept.*field = "kept";
  for (const char* value : noObject) {
    Record record = kept;
    EXPECT_FALSE(read(Json(value), record)) << value;
    EXPECT_EQ(record, kept) << value;
  }
}

TEST(DocumentReaders, RefuseWhatIsNoObjectAndLeaveTheRecordAlone) {
  ExpectRefusal<DocumentSummary>(ReadDocumentBase, &DocumentSummary::id);
  ExpectRefusal<DocumentSummary>(ReadDocumentSummary, &DocumentSummary::id);
  ExpectRefusal<DocumentRecord>(ReadDocumentRecord, &DocumentRecord::folderId);
  ExpectRefusal<EpmMasterRecord>(ReadEpmMaster, &EpmMasterRecord::name);
  ExpectRefusal<DerivedSourceDependency>(ReadDependency, &DerivedSourceDependency::sourceId);
  ExpectRefusal<ContentRecord>(ReadContent, &ContentRecord::id);
  ExpectRefusal<FileBasedAttribute>(ReadAttribute, &FileBasedAttribute::value);
  ExpectRefusal<WorkspaceRecord>(ReadWorkspace, &WorkspaceRecord::id);
}

}  // namespace
