#include "browsing/cad_name_search.h"

#include "base/result.h"
#include "tests/wire/browsing/location_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;

class CadNameSearch : public LocationTest {
 protected:
  std::size_t FindInGadget(const std::string& cadName = "gear.lxz") {
    auto found = FindDocumentByCadNameInContext(Begin(connection), cadName, ContextKind::Product, "Gadget");
    record = std::move(found.record);
    return found.count;
  }
  DocumentRecord record;
};

const std::string objects = Get(ObjectsPath("gear.lxz"));
const std::string contexts = Get(ContextsPath("Product"));
constexpr const char* contextId = "OR:vn.Example:5";

// ---- Anywhere on the server.

TEST_F(CadNameSearch, ReadsTheFirstDocumentWithTheName) {
  wire.Then(200, Objects({{"D1", "1"}, {"D2", "2"}})).Then(200, Json({.id = "D1"}));
  EXPECT_TRUE(HandOver(FindDocumentByCadName(Begin(connection), "gear.lxz"), record));
  EXPECT_EQ(record.id, "D1");
  EXPECT_THAT(
      wire.requests(),
      ElementsAre(
          SentRequest{serverUrl,
                      "GET /vt/servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number"
                      "&$filter=CADName eq 'gear.lxz'",
                      "Accept: application/json",
                      {}},
          SentRequest{
              serverUrl, "GET /vt/servlet/rest/v1/dkm/documents/D1", "Accept: application/json", {}}));
  ExpectQuiet();
}

TEST_F(CadNameSearch, EscapesTheNameAlone) {
  wire.Then(200, "[]");
  EXPECT_FALSE(HandOver(FindDocumentByCadName(Begin(connection), "big gear's.lxz"), record));
  EXPECT_THAT(wire.lines(), ElementsAre(Get(ObjectsPath("big%20gear%27s.lxz"))));
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed find any document with CADName big gear's.lxz")));
}

TEST_F(CadNameSearch, TracesThatNoneWasFoundForAFailedQueryAndForAnEmptyOneAndForAWrappedOne) {
  wire.Then(500).Then(200, "[]").Then(200, R"({"items":[{"id":"D1"}]})");
  EXPECT_FALSE(HandOver(FindDocumentByCadName(Begin(connection), "a"), record));
  EXPECT_FALSE(HandOver(FindDocumentByCadName(Begin(connection), "b"), record));
  EXPECT_FALSE(HandOver(FindDocumentByCadName(Begin(connection), "c"), record));
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed find any document with CADName a"),
                                    Error("Failed find any document with CADName b"),
                                    Error("Failed find any document with CADName c")));
}

TEST_F(CadNameSearch, TracesADocumentThatWasFoundAndCannotBeRead) {
  wire.Then(200, Objects({{"D1", "1"}})).Then(403);
  EXPECT_FALSE(HandOver(FindDocumentByCadName(Begin(connection), "gear.lxz"), record));
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed get document with CADName gear.lxz id D1")));
}

// ---- In a context.

TEST_F(CadNameSearch, CountsNothingForAFailedQueryWithoutATrace) {
  wire.Then(500);
  EXPECT_EQ(FindInGadget(), 0u);
  ExpectQuiet();
}

TEST_F(CadNameSearch, CountsNothingForNoRowsWithATrace) {
  wire.Then(200, "[]");
  EXPECT_EQ(FindInGadget(), 0u);
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed find any document with CADName gear.lxz")));
}

TEST_F(CadNameSearch, TakesASingleRowWhateverItsContext) {
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({.id = "D1", .contextName = "Elsewhere"}));
  EXPECT_EQ(FindInGadget(), 1u);
  EXPECT_EQ(record.id, "D1");
  EXPECT_THAT(wire.lines(), ElementsAre(objects, Get(DocumentPath("D1"))));
  ExpectQuiet();
}

TEST_F(CadNameSearch, CountsNothingForASingleRowThatCannotBeRead) {
  wire.Then(200, Objects({{"D1", "1"}})).Then(404);
  EXPECT_EQ(FindInGadget(), 0u);
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed get document with CADName gear.lxz id D1")));
}

TEST_F(CadNameSearch, CountsNothingForSeveralRowsInAnUnknownContext) {
  wire.Then(200, Objects({{"D1", "1"}, {"D2", "2"}})).Then(200, Context(contextId, "Other"));
  EXPECT_EQ(FindInGadget(), 0u);
  EXPECT_THAT(wire.lines(), ElementsAre(objects, contexts));
  EXPECT_THAT(Traced(), ElementsAre(Miss("Failed to read dir Gadget\n")));
}

TEST_F(CadNameSearch, FindsOfTwoDocumentsInTwoContextsTheOneInTheAskedContext) {
  wire.Then(200, Objects({{"D1", "0001"}, {"D2", "0002"}})).Then(200, Context(contextId, "Gadget"));
  wire.Then(200, "[]").Then(200, Docs({{.id = "D2"}}));
  EXPECT_EQ(FindInGadget(), 1u);
  EXPECT_EQ(record.id, "D2");
  EXPECT_THAT(wire.lines(), ElementsAre(objects, contexts, Get(NumberPath("0001", "OR%3Avn.Example%3A5")),
                                        Get(NumberPath("0002", "OR%3Avn.Example%3A5"))));
  ExpectQuiet();
}

TEST_F(CadNameSearch, TakesTheSmallestOfSeveralNumbersAndCountsThemAll) {
  // Sorted as texts, each number asked for once, all of them asked for.
  wire.Then(200, Objects({{"D9", "9"}, {"D1", "10"}, {"D2", "9"}, {"D3", "8"}}));
  wire.Then(200, Context(contextId, "Gadget"));
  wire.Then(200, Docs({{.id = "E10"}})).Then(200, "[]").Then(200, Docs({{.id = "E9"}}));
  EXPECT_EQ(FindInGadget(), 2u);
  EXPECT_EQ(record.id, "E10");
  EXPECT_THAT(wire.lines(), ElementsAre(objects, contexts, Get(NumberPath("10", "OR%3Avn.Example%3A5")),
                                        Get(NumberPath("8", "OR%3Avn.Example%3A5")),
                                        Get(NumberPath("9", "OR%3Avn.Example%3A5"))));
  EXPECT_THAT(Traced(), ElementsAre(Error("Found 2 document with CADName gear.lxz")));
}

TEST_F(CadNameSearch, CountsOneForSeveralRowsOfOneNumber) {
  wire.Then(200, Objects({{"D1", "1"}, {"D2", "1"}})).Then(200, Context(contextId, "Gadget"));
  wire.Then(200, Docs({{.id = "E1"}}));
  EXPECT_EQ(FindInGadget(), 1u);
  EXPECT_EQ(record.id, "E1");
  ExpectQuiet();
}

TEST_F(CadNameSearch, TracesACountOfNothingInTheContext) {
  wire.Then(200, Objects({{"D1", "1"}, {"D2", "2"}})).Then(200, Context(contextId, "Gadget"));
  wire.Then(200, "[]").Then(500, "no such scope");
  EXPECT_EQ(FindInGadget(), 0u);
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to find doc number 2 with response: no such scope"),
                                    Error("Found 0 document with CADName gear.lxz")));
}

TEST_F(CadNameSearch, PassesOverRowsWithoutANumber) {
  wire.Then(200, R"([{"id":"D1"},{"id":"D2","attributes":{"number":7}},7,{"attributes":{"number":"1"}}])");
  wire.Then(200, Context(contextId, "Gadget")).Then(200, Docs({{.id = "E1"}}));
  EXPECT_EQ(FindInGadget(), 1u);
  EXPECT_THAT(wire.lines(), ElementsAre(objects, contexts, Get(NumberPath("1", "OR%3Avn.Example%3A5"))));
}

TEST_F(CadNameSearch, LooksForAContextOfAnyKindBelowAnUnknownRoot) {
  wire.Then(200, Objects({{"D1", "1"}, {"D2", "2"}})).Then(200, Context(contextId, "Gadget"));
  wire.Then(200, "[]").Then(200, "[]");
  EXPECT_EQ(FindDocumentByCadNameInContext(Begin(connection), "gear.lxz", ContextKind::None, "Gadget").count,
            0u);
  EXPECT_EQ(wire.lines()[1], Get("servlet/rest/v1/contexts"));
}

// ---- By number.

class LatestByNumber : public CadNameSearch {
 protected:
  bool Find(const std::vector<Doc>& docs) {
    wire.Then(200, Docs(docs));
    return HandOver(FindLatestDocumentByNumber(Begin(connection), "42", "C5"), record);
  }
};

TEST_F(LatestByNumber, AsksInTheScopeOrEverywhere) {
  wire.Then(200, "[]").Then(200, "[]");
  EXPECT_FALSE(HandOver(FindLatestDocumentByNumber(Begin(connection), "4 2", "C/5"), record));
  EXPECT_FALSE(HandOver(FindLatestDocumentByNumber(Begin(connection), "42", ""), record));
  EXPECT_THAT(wire.lines(), ElementsAre(Get("servlet/rest/v1/dkm/documents/search?number=4%202&scope=C%2F5"),
                                        Get("servlet/rest/v1/dkm/documents/search?number=42")));
  ExpectQuiet();
}

TEST_F(LatestByNumber, RefusesTwoMastersOfOneNumber) {
  EXPECT_FALSE(Find({{.id = "D1", .masterId = "M1"}, {.id = "D2", .masterId = "M2"}}));
  EXPECT_EQ(record.id, "");
  EXPECT_THAT(Traced(), ElementsAre(Error("Found multiple docs with the same number 42")));
}

TEST_F(LatestByNumber, RefusesAListWithAnElementThatIsNoDocument) {
  wire.Then(200, List({Json({}), "7"}));
  EXPECT_FALSE(HandOver(FindLatestDocumentByNumber(Begin(connection), "42", "C5"), record));
  EXPECT_THAT(Traced(), ElementsAre(Error("Found multiple docs with the same number 42")));
}

TEST_F(LatestByNumber, ComparesRevisionsAsBytesSoThatALongerOneMayBeTheOlder) {
  EXPECT_TRUE(Find({{.id = "D1", .revision = "AA"}, {.id = "D2", .revision = "B"}}));
  EXPECT_EQ(record.id, "D2");
  EXPECT_TRUE(Find({{.id = "D3", .revision = "9"}, {.id = "D4", .revision = "10"}}));
  EXPECT_EQ(record.id, "D3");
}

TEST_F(LatestByNumber, ComparesIterationsAsDecimalNumbers) {
  EXPECT_TRUE(Find({{.id = "D1", .iteration = "9"}, {.id = "D2", .iteration = "10"}}));
  EXPECT_EQ(record.id, "D2");
  EXPECT_TRUE(Find({{.id = "D3", .iteration = "10"}, {.id = "D4", .iteration = "009"}}));
  EXPECT_EQ(record.id, "D3");
}

TEST_F(LatestByNumber, ComparesRevisionsBeforeIterations) {
  EXPECT_TRUE(Find({{.id = "D1", .revision = "B", .iteration = "1"},
                    {.id = "D2", .revision = "A", .iteration = "5"},
                    {.id = "D3", .revision = "B", .iteration = "2"}}));
  EXPECT_EQ(record.id, "D3");
}

TEST_F(LatestByNumber, KeepsTheFirstOfEqualVersions) {
  EXPECT_TRUE(Find({{.id = "D1"}, {.id = "D2"}}));
  EXPECT_EQ(record.id, "D1");
}

TEST_F(LatestByNumber, TakesIterationsThatAreNoNumberForZero) {
  EXPECT_TRUE(Find({{.id = "D1", .iteration = "x"}, {.id = "D2", .iteration = "1"}}));
  EXPECT_EQ(record.id, "D2");
  EXPECT_TRUE(Find(
      {{.id = "D3", .iteration = "2"}, {.id = "D4", .iteration = "99999999999999999999999999999999999999"}}));
  EXPECT_EQ(record.id, "D4");
}

}  // namespace
}  // namespace vtdirect_test
