#include "documents/reading/document_text.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>
#include <string_view>

#include "base/settings.h"
#include "tests/support/resident_memory.h"
#include "tests/unit/documents/record_printing.h"

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using vtdirect_test::mebibyte;

struct Outcome {
  bool isObject = false;
  DocumentRecord record;
};

Outcome Read(std::string_view text, const DocumentRecord* known = nullptr) {
  Outcome outcome;
  outcome.isObject = ReadDocumentText(text, known, outcome.record);
  return outcome;
}

Outcome ReadInPieces(std::string_view text, std::size_t size, const DocumentRecord* known = nullptr) {
  Outcome outcome;
  const JsonPieces pieces = [&text, size] {
    const std::string_view piece = text.substr(0, size);
    text.remove_prefix(piece.size());
    return piece;
  };
  outcome.isObject = ReadDocumentText(pieces, known, outcome.record);
  return outcome;
}

DocumentRecord Known() {
  DocumentRecord record;
  record.id = "D1";
  record.revision = "A";
  record.fileBasedAttributes.emplace_back().value = "known";
  return record;
}

class DocumentText : public testing::Test {
 protected:
  ~DocumentText() override {
    SetLargestJson("");
    SetLongestJsonText("");
  }
  // In memory, and in pieces of several sizes.
  static void ExpectOf(std::string_view text, bool isObject, const DocumentRecord& expected,
                       const DocumentRecord* known = nullptr) {
    const Outcome outcome = Read(text, known);
    EXPECT_EQ(outcome.isObject, isObject) << text;
    EXPECT_EQ(outcome.record, expected) << text;
    for (const std::size_t size : {1, 2, 7, 100}) {
      const Outcome inPieces = ReadInPieces(text, size, known);
      EXPECT_EQ(inPieces.isObject, isObject) << size << ": " << text;
      EXPECT_EQ(inPieces.record, expected) << size << ": " << text;
    }
  }
};

TEST_F(DocumentText, BecomesARecord) {
  DocumentRecord expected;
  expected.id = "D1";
  expected.isLatest = true;
  expected.master.cadName = "fork.lxz";
  ContentRecord& section = expected.contentSections.emplace_back();
  section.contentUrl = {"http://plm.example/1", "http://plm.example/2"};
  section.fileSize = 4096;
  section.fileSizeTold = true;
  ExpectOf(
      R"({"id":"D1","pdmIterationState":{"isLatest":true},"epmMaster":{"cadName":"fork.lxz"},"cadContent":
    {"contentSections":[{"contentUrl":["http://plm.example/1","http://plm.example/2"],"fileSize":4096}]}})",
      true, expected);
}

TEST_F(DocumentText, MayHaveItsMembersInAnyOrderAndUnknownOnesBetween) {
  DocumentRecord expected;
  expected.id = "D1";
  expected.revision = "B";
  expected.iteration = "3";
  expected.contextName = "Bike";
  ExpectOf(
      R"({"iteration":"3","x":{"id":"no","revision":["no",{"id":"no"}]},"revision":"B","y":[[{"id":"no"}]],
    "context":{"z":{"name":"no"},"name":"Bike"},"id":"D1"})",
      true, expected);
}

TEST_F(DocumentText, MayHaveNamesThatAreMuchLikeItsOwn) {
  DocumentRecord expected;
  expected.revision = "B";
  ExpectOf(
      R"({"i":"no","ids":"no","id ":"no","ID":"no","":"no","context":"no","revisio":"no","revision":"B"})",
      true, expected);
  ExpectOf(R"({"id)", false, {});
  ExpectOf(R"({"id"})", false, {});
  ExpectOf(R"({"id})", false, {});
}

TEST_F(DocumentText, MayHaveEscapesAndNegativeNumbers) {
  DocumentRecord expected;
  expected.id = "D\"\xC3\xA4";
  expected.dependencies.emplace_back().revNum = -7;
  ExpectOf(R"({"\u0069d":"D\"\u00e4","derivedSourceDependencies":[{"source":{"revNum":-7}}]})", true,
           expected);
}

TEST_F(DocumentText, LeavesNothingOfATextThatIsBrokenFarBehind) {
  const DocumentRecord known = Known();
  for (const char* text : {R"({"id":"D2","fileBasedAttributes":[{}],"revision":"B")",
                           R"({"id":"D2","fileBasedAttributes":[{}],"revision":"B"}x)",
                           R"({"id":"D2","secondaryContents":[{"id":"x"},{"id":"y",}]})",
                           R"({"id":"D2","revision":"B\x"})", "", "{", "nonsense"}) {
    ExpectOf(text, false, {});
    ExpectOf(text, false, known, &known);
  }
}

TEST_F(DocumentText, OfAnotherKindLeavesWhatIsKnown) {
  const DocumentRecord known = Known();
  for (const char* text :
       {"null", "7", "-1.5", "\"id\"", R"([{"id":"D2","cadContent":{"contentSections":[1]}}])", "[]"}) {
    ExpectOf(text, false, {});
    ExpectOf(text, false, known, &known);
  }
}

TEST_F(DocumentText, IsReadOnTopOfWhatIsKnown) {
  const DocumentRecord known = Known();
  DocumentRecord expected = known;
  expected.revision = "B";
  expected.fileBasedAttributes.emplace_back();
  ExpectOf(R"({"revision":"B","fileBasedAttributes":[{}]})", true, expected, &known);
}

TEST_F(DocumentText, IsBoundedByTheSettings) {
  const DocumentRecord known = Known();
  const std::string text = R"({"id":"abcde"})";
  DocumentRecord expected;
  expected.id = "abcde";
  SetLargestJson(std::to_string(text.size()));
  SetLongestJsonText("5");
  ExpectOf(text, true, expected);
  SetLargestJson(std::to_string(text.size() - 1));
  ExpectOf(text, false, known, &known);
  SetLargestJson("");
  SetLongestJsonText("4");
  ExpectOf(text, false, known, &known);
  ExpectOf(R"({"id":"abcd","revision":"x","none":"abcde"})", false, {});
}

TEST_F(DocumentText, IsBoundedInItsNesting) {
  const auto nested = [](std::size_t levels) {
    return R"({"id":"D1","x":)" + std::string(levels, '[') + std::string(levels, ']') + "}";
  };
  DocumentRecord expected;
  expected.id = "D1";
  ExpectOf(nested(maximumJsonDepth - 1), true, expected);
  ExpectOf(nested(maximumJsonDepth), false, {});
}

TEST_F(DocumentText, IsRefusedWhenThereIsNoMemoryForItsRecord) {
  if (!vtdirect_test::memoryIsMeasured) GTEST_SKIP() << "the address space belongs to the sanitizer";
  const DocumentRecord known = Known();
  std::string sections = R"({"cadContent":{"contentSections":[)";
  for (std::size_t section = 0; section < 8 * mebibyte; ++section) sections += "0,";
  sections += "0]}}";
  rlimit before{};
  getrlimit(RLIMIT_AS, &before);
  const rlimit little{400 * mebibyte, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_AS, &little), 0);
  const Outcome outcome = Read(sections, &known);
  setrlimit(RLIMIT_AS, &before);
  EXPECT_FALSE(outcome.isObject);
  EXPECT_EQ(outcome.record, known);
}

}  // namespace
