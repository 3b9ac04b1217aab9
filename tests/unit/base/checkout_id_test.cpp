#include "base/checkout_id.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

using namespace lxservices::cms_interface::vantry;

// The four fields as one text: "document;workspace;working copy;T" or "...;-".
std::string Fields(const char* text) {
  const CheckoutId id = ParseCheckoutId(text);
  return id.document + ";" + id.workspace + ";" + id.workingCopy + ";" + (id.temporary ? "T" : "-");
}

TEST(CheckoutIdParsing, CutsTheTextAtEachBar) {
  EXPECT_EQ(Fields("D1"), "D1;;;-");
  EXPECT_EQ(Fields("D1|W2"), "D1;W2;;-");
  EXPECT_EQ(Fields("D1|W2|D3"), "D1;W2;D3;-");
  EXPECT_EQ(Fields("D1001|W77|D1002|T"), "D1001;W77;D1002;T");
}

TEST(CheckoutIdParsing, TakesANullTextAsEmpty) {
  EXPECT_EQ(Fields(nullptr), ";;;-");
  EXPECT_EQ(Fields(""), ";;;-");
}

TEST(CheckoutIdParsing, KeepsTheTextAsItWasGiven) {
  EXPECT_EQ(ParseCheckoutId("D1|W2|D3|F|T").text, "D1|W2|D3|F|T");
  EXPECT_EQ(ParseCheckoutId("").text, "");
}

// A host's text ends at its zero byte, and so does one that a server put into an id.
TEST(CheckoutIdParsing, EndsAtAZeroByte) {
  const CheckoutId id = ParseCheckoutId(std::string("D1|W\0|D3|T", 10));
  EXPECT_EQ(id.text, "D1|W");
  EXPECT_EQ(id.workspace, "W");
  EXPECT_FALSE(id.temporary);
}

TEST(CheckoutIdParsing, KeepsEmptyFieldsAtTheirPlaces) {
  EXPECT_EQ(Fields("|W2"), ";W2;;-");
  EXPECT_EQ(Fields("D1|W2||T"), "D1;W2;;T");
  EXPECT_EQ(Fields("|||"), ";;;-");
  EXPECT_EQ(Fields("D1|"), "D1;;;-");
}

TEST(CheckoutIdParsing, TakesAnyCapitalTOfTheFourthFieldForTemporary) {
  EXPECT_EQ(Fields("D1|W2|D3|FT"), "D1;W2;D3;T");
  EXPECT_EQ(Fields("D1|W2|D3|TF"), "D1;W2;D3;T");
  EXPECT_EQ(Fields("D1|W2|D3|t"), "D1;W2;D3;-");
  EXPECT_EQ(Fields("D1|W2|D3|"), "D1;W2;D3;-");
}

TEST(CheckoutIdParsing, IgnoresFurtherFields) {
  EXPECT_EQ(Fields("D1|W2|D3|F|T"), "D1;W2;D3;-");
  EXPECT_EQ(Fields("D1|W2|D3|T|x|y"), "D1;W2;D3;T");
}

TEST(CheckoutIdParsing, DoesNotTakeATOfAnEarlierFieldForTemporary) {
  EXPECT_EQ(Fields("T|T|T"), "T;T;T;-");
}

struct ValidityCase {
  const char* text;
  bool valid;
};

TEST(CheckoutIdValidity, NeedsTheFirstTwoFieldsAndTheThirdOfATemporaryId) {
  constexpr std::array cases{
      ValidityCase{"D1|W2", true},   ValidityCase{"D1|W2|D3|T", true}, ValidityCase{"D1|W2|D3", true},
      ValidityCase{"D1|W2||", true}, ValidityCase{"D1|W2||T", false},  ValidityCase{"D1", false},
      ValidityCase{"|W2", false},    ValidityCase{"D1||D3|T", false},  ValidityCase{"|W2|D3|T", false},
      ValidityCase{"", false},
  };
  for (const auto& [text, valid] : cases) EXPECT_EQ(IsValidForCheckout(ParseCheckoutId(text)), valid) << text;
}

TEST(WorkingDocument, IsTheFirstFieldOutsideATemporaryCheckout) {
  EXPECT_EQ(WorkingDocumentId(ParseCheckoutId("D1|W2")), "D1");
  EXPECT_EQ(WorkingDocumentId(ParseCheckoutId("D1|W2|D3")), "D1");
  EXPECT_EQ(WorkingDocumentId(ParseCheckoutId("D1")), "D1");
}

TEST(WorkingDocument, IsTheThirdFieldOfATemporaryCheckout) {
  EXPECT_EQ(WorkingDocumentId(ParseCheckoutId("D1|W2|D3|T")), "D3");
  EXPECT_EQ(WorkingDocumentId(ParseCheckoutId("D1|W2||T")), "");
}

TEST(WorkspaceOfAnId, IsTheSecondFieldUnlessTheCheckoutIsTemporary) {
  EXPECT_EQ(WorkspaceOf(ParseCheckoutId("D1|W2")), "W2");
  EXPECT_EQ(WorkspaceOf(ParseCheckoutId("D1|W2|D3|T")), "");
  EXPECT_EQ(WorkspaceOf(ParseCheckoutId("D1")), "");
}

TEST(TemporaryIdText, JoinsBaseWorkspaceWorkingAndTheLetter) {
  EXPECT_EQ(FormatTemporaryCheckoutId("W77", "D1001", "D1002"), "D1001|W77|D1002|T");
}

TEST(TemporaryIdText, IsEmptyUnlessAllThreeAreGiven) {
  EXPECT_EQ(FormatTemporaryCheckoutId("", "D1", "D2"), "");
  EXPECT_EQ(FormatTemporaryCheckoutId("W1", "", "D2"), "");
  EXPECT_EQ(FormatTemporaryCheckoutId("W1", "D1", ""), "");
}

TEST(TemporaryIdText, IsReadBackAsItWasWritten) {
  EXPECT_EQ(Fields(FormatTemporaryCheckoutId("W2", "D1", "D3").c_str()), "D1;W2;D3;T");
}

TEST(WorkspaceIdText, JoinsWorkingAndWorkspace) {
  EXPECT_EQ(FormatWorkspaceId("W2", "D3"), "D3|W2");
}

TEST(WorkspaceIdText, IsTheDocumentAloneWithoutAWorkspace) {
  EXPECT_EQ(FormatWorkspaceId("", "D3"), "D3");
  EXPECT_EQ(FormatWorkspaceId("", ""), "");
}

// The workspace alone decides on the form, so nothing before the bar is no failure here.
TEST(WorkspaceIdText, KeepsTheBarOfAWorkspaceWithoutADocument) {
  EXPECT_EQ(FormatWorkspaceId("W2", ""), "|W2");
}

}  // namespace
