#include "browsing/latest_version.h"

#include "base/settings.h"
#include "browsing/document_details.h"
#include "tests/wire/browsing/location_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;

/// The newest version as GetDocumentDetails finds it. Each test writes the answers and what must be sent.
class LatestVersion : public LocationTest {
 protected:
  LatestVersion() { services.dynamicDocPresent = services.dynamicDocV2 = true; }

  void Ask(const char* id) {
    DocumentQuery query;
    query.latest = &latest;
    ASSERT_EQ(GetDocumentDetails(Begin(connection, services), ParseCheckoutId(id), query), Ok);
  }

  void ExpectLatest(const std::string& id, const std::string& version, bool isLatest) {
    EXPECT_EQ(latest.id, id);
    EXPECT_EQ(latest.version, version);
    EXPECT_EQ(latest.isLatest, isLatest);
    ExpectQuiet();
  }

  LatestInfo latest;
};

const std::string document = Get(DocumentPath("D1"));
const std::string versions = Get(VersionsPath("D1"));
const std::string dynamicV2 = Get(DynamicV2Path("gear.lxz"));
const std::string dynamicV1 = Get(DynamicV1Path("gear.lxz"));
const std::string cad = Get(CadPath("gear.lxz"));

// ---- Which searches are made.

TEST_F(LatestVersion, ComesFromASingleCandidateWithoutReadingIt) {
  wire.Then(200, Json({.revision = "A", .iteration = "1"})).Then(200, Candidates({{"D9", "A.4", ""}}));
  Ask("D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV2));
  ExpectLatest("D9", "A.4", false);
}

TEST_F(LatestVersion, IsTheDocumentItselfWhenTheCandidateHasItsVersion) {
  wire.Then(200, Json({.revision = "A", .iteration = "4"})).Then(200, Candidates({{"D9", "A.4", ""}}));
  Ask("D1");
  // The version decides and not the id.
  ExpectLatest("D9", "A.4", true);
}

TEST_F(LatestVersion, IsLookedForByTheNameOfTheDocumentRead) {
  wire.Then(200, Json({.cadName = "my gear.lxz"})).Then(200, Candidates({{"D9", "A.4", ""}}));
  Ask("D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, Get(DynamicV2Path("my%20gear.lxz"))));
}

TEST_F(LatestVersion, IsLookedForByTheFirstServiceVersionOnAServerWithoutTheSecond) {
  services.dynamicDocV2 = false;
  wire.Then(200, Json({})).Then(200, Candidates({{"D9", "A.4", ""}}));
  Ask("D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV1));
  ExpectLatest("D9", "A.4", false);
}

TEST_F(LatestVersion, ComesFromTheVersionListOnAServerWithoutTheServices) {
  services = {};
  SetBrowseCadDocuments("on");
  wire.Then(200, Json({})).Then(200, Docs({{.id = "D2", .iteration = "2", .isLatest = true}}));
  Ask("D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, versions));
  ExpectLatest("D2", "A.2", false);
}

TEST_F(LatestVersion, ComesFromTheVersionListAloneWithBothSettingsOff) {
  SetBrowseDynamicDocuments("false");
  SetBrowseCadDocuments("false");
  services.cadDocPresent = true;
  wire.Then(200, Json({})).Then(200, Docs({{.id = "D2", .iteration = "2", .isLatest = true}}));
  Ask("D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, versions));
  ExpectLatest("D2", "A.2", false);
}

TEST_F(LatestVersion, IsLookedForAmongCadDocumentsWhenThereIsNoDynamicOne) {
  SetBrowseCadDocuments("on");
  services.cadDocPresent = true;
  wire.Then(200, Json({})).Then(200, Candidates({})).Then(200, Candidates({{"D9", "A.4", ""}}));
  Ask("D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV2, cad));
  ExpectLatest("D9", "A.4", false);
}

TEST_F(LatestVersion, IsLookedForAmongCadDocumentsAloneWithTheOtherSettingOff) {
  SetBrowseDynamicDocuments("false");
  SetBrowseCadDocuments("on");
  services.cadDocPresent = true;
  wire.Then(200, Json({})).Then(200, Candidates({{"D9", "A.4", ""}}));
  Ask("D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, cad));
  ExpectLatest("D9", "A.4", false);
}

TEST_F(LatestVersion, IsNotLookedForAmongCadDocumentsWhenThereIsADynamicOneOrTheServiceIsMissing) {
  SetBrowseCadDocuments("on");
  services.cadDocPresent = true;
  wire.Then(200, Json({})).Then(200, Candidates({{"D9", "A.4", ""}}));
  Ask("D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV2));
  wire.ClearRequests();
  services.cadDocPresent = false;
  wire.Then(200, Json({})).Then(200, Candidates({})).Then(200, Docs({}));
  Ask("D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV2, versions));
}

// ---- Several candidates.

TEST_F(LatestVersion, IsTheFirstOfSeveralCandidatesWithTheSameMaster) {
  wire.Then(200, Json({}));
  wire.Then(200, Candidates({{"D7", "C.1", ""}, {"D8", "B.2", ""}, {"D9", "A.9", ""}}));
  wire.Then(200, Json({.id = "D7", .masterId = "M2"})).Then(200, Json({.id = "D8", .masterId = "M1"}));
  Ask("D1");
  EXPECT_THAT(wire.lines(),
              ElementsAre(document, dynamicV2, Get(DocumentPath("D7")), Get(DocumentPath("D8"))));
  ExpectLatest("D8", "B.2", false);
}

TEST_F(LatestVersion, IsTheCandidateOfTheAskedIdInAWorkspaceWithoutReadingIt) {
  wire.Then(200, Json({.masterId = "M1"}));
  wire.Then(200, Candidates({{"D7", "C.1", ""}, {"D1", "B.2", "x"}, {"D9", "A.9", ""}}));
  wire.Then(200, Json({.id = "D7", .masterId = "M2"}));
  Ask("D1|W2");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV2, Get(DocumentPath("D7"))));
  // Checked out, but it is the copy that is asked about.
  ExpectLatest("D1|W2", "B.2", false);
}

TEST_F(LatestVersion, MayBeAnEarlierCandidateOfTheMasterThanTheAskedIdInAWorkspace) {
  wire.Then(200, Json({}));
  wire.Then(200, Candidates({{"D7", "C.1", ""}, {"D1", "B.2", ""}}));
  wire.Then(200, Json({.id = "D7", .masterId = "M1"}));
  Ask("D1|W2");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV2, Get(DocumentPath("D7"))));
  ExpectLatest("D7|W2", "C.1", false);
}

TEST_F(LatestVersion, ReadsACandidateOfTheAskedIdOutsideAWorkspace) {
  wire.Then(200, Json({})).Then(200, Candidates({{"D1", "A.1", ""}, {"D2", "A.1", ""}})).Then(200, Json({}));
  Ask("D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV2, document));
  ExpectLatest("D1", "A.1", true);
}

TEST_F(LatestVersion, ComesFromTheVersionListWhenNoneOfSeveralCandidatesHasTheMaster) {
  wire.Then(200, Json({})).Then(200, Candidates({{"D7", "C.1", ""}, {"D8", "B.2", ""}}));
  wire.Then(200, Json({.masterId = "M2"})).Then(404);
  wire.Then(200, Docs({{.id = "D3", .iteration = "3", .isLatest = true}}));
  Ask("D1");
  EXPECT_THAT(wire.lines(),
              ElementsAre(document, dynamicV2, Get(DocumentPath("D7")), Get(DocumentPath("D8")), versions));
  ExpectLatest("D3", "A.3", false);
}

TEST_F(LatestVersion, TakesNoCandidateThatCannotBeReadForOneWithoutAMaster) {
  wire.Then(200, Json({.masterId = ""})).Then(200, Candidates({{"D7", "C.1", ""}, {"D8", "B.2", ""}}));
  wire.Then(500).ThenFail(du::http::ErrorCode::NoConnection);
  wire.Then(200, Docs({}));
  Ask("D1");
  ExpectLatest("D1", "A.1", false);
}

// ---- A single candidate that is checked out.

TEST_F(LatestVersion, OfADocumentCheckedOutBySomebodyElseIsTheListedOneWithTheCandidatesVersion) {
  wire.Then(200, Json({.revision = "A", .iteration = "1"})).Then(200, Candidates({{"D9", "A.2", "x"}}));
  wire.Then(200, Docs({{.id = "D1", .iteration = "1"},
                       {.id = "D2", .iteration = "2"},
                       {.id = "D3", .iteration = "2", .isLatest = true}}));
  Ask("D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV2, versions));
  ExpectLatest("D2", "A.2", false);
}

TEST_F(LatestVersion, OfACheckedOutCandidateWithTheDocumentsVersionIsTheDocumentsVersion) {
  wire.Then(200, Json({.isLatest = false})).Then(200, Candidates({{"D9", "A.1", "x"}}));
  wire.Then(200, Docs({{.id = "D1", .iteration = "1"}, {.id = "D2", .iteration = "2", .isLatest = true}}));
  Ask("D1");
  ExpectLatest("D1", "A.1", true);
}

TEST_F(LatestVersion, OfACheckedOutCandidateThatIsTheDocumentItselfOutsideAWorkspaceIsTheListedOne) {
  wire.Then(200, Json({.isLatest = true})).Then(200, Candidates({{"D1", "A.1", "x"}}));
  wire.Then(200, Docs({{.id = "D5", .iteration = "1"}}));
  Ask("D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV2, versions));
  ExpectLatest("D5", "A.1", true);
}

TEST_F(LatestVersion, OfACheckedOutCandidateOfAnotherIdInAWorkspaceIsTheListedOneInTheWorkspace) {
  wire.Then(200, Json({})).Then(200, Candidates({{"D9", "A.2", "x"}}));
  wire.Then(200, Docs({{.id = "D2", .iteration = "2"}}));
  Ask("D1|W2");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV2, versions));
  ExpectLatest("D2|W2", "A.2", false);
}

TEST_F(LatestVersion, OfACheckedOutCandidateThatIsTheDocumentItselfInAWorkspaceIsThatCandidate) {
  wire.Then(200, Json({})).Then(200, Candidates({{"D1", "A.1", "x"}}));
  Ask("D1|W2");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV2));
  ExpectLatest("D1|W2", "A.1", true);
}

TEST_F(LatestVersion, StaysWithTheDocumentAndNamesNoVersionWhenTheListLacksTheCandidatesVersion) {
  wire.Then(200, Json({.isLatest = true})).Then(200, Candidates({{"D9", "A.7", "x"}}));
  wire.Then(200, Docs({{.id = "D2", .iteration = "2", .isLatest = true}}));
  Ask("D1|W2");
  ExpectLatest("D1|W2", "", true);
}

TEST_F(LatestVersion, StaysWithTheDocumentAndNamesNoVersionWhenTheListFails) {
  wire.Then(200, Json({.isLatest = true})).Then(200, Candidates({{"D9", "A.1", "x"}})).Then(500);
  Ask("D1");
  ExpectLatest("D1", "", true);
}

TEST_F(LatestVersion, ComparesACandidatesVersionAsItsWholeText) {
  // "A.B.1" is the revision "A.B" with the iteration "1", or the revision "A" with the iteration "B.1".
  wire.Then(200, Json({.revision = "A"})).Then(200, Candidates({{"D9", "A.B.1", "x"}}));
  wire.Then(200, Docs({{.id = "D2", .revision = "A", .iteration = "B.1"},
                       {.id = "D3", .revision = "A.B", .iteration = "1"}}));
  Ask("D1");
  ExpectLatest("D2", "A.B.1", false);
}

// ---- The version list.

TEST_F(LatestVersion, IsTheGreatestOfTheListsNewest) {
  wire.Then(200, Json({.revision = "A", .iteration = "9"})).Then(200, Candidates({}));
  wire.Then(200, Docs({{.id = "D2", .revision = "A", .iteration = "10", .isLatest = true},
                       {.id = "D3", .revision = "B", .iteration = "1", .isLatest = true},
                       {.id = "D4", .revision = "A", .iteration = "11", .isLatest = true}}));
  Ask("D1");
  ExpectLatest("D3", "B.1", false);
}

TEST_F(LatestVersion, ComparesIterationsFirstByLength) {
  wire.Then(200, Json({.iteration = "9"})).Then(200, Candidates({}));
  wire.Then(200, Docs({{.id = "D2", .iteration = "10", .isLatest = true}}));
  Ask("D1");
  ExpectLatest("D2", "A.10", false);
}

TEST_F(LatestVersion, ComparesIterationsByLengthEvenWithZerosInFront) {
  wire.Then(200, Json({.iteration = "10"})).Then(200, Candidates({}));
  wire.Then(200, Docs({{.id = "D2", .iteration = "009", .isLatest = true}}));
  Ask("D1");
  ExpectLatest("D2", "A.009", false);
}

TEST_F(LatestVersion, ComparesRevisionsFirstByLength) {
  wire.Then(200, Json({.revision = "Z", .iteration = "9"})).Then(200, Candidates({}));
  wire.Then(200, Docs({{.id = "D2", .revision = "AA", .iteration = "1", .isLatest = true}}));
  Ask("D1");
  ExpectLatest("D2", "AA.1", false);
}

TEST_F(LatestVersion, ComparesRevisionsBeforeIterations) {
  wire.Then(200, Json({.revision = "B", .iteration = "1"})).Then(200, Candidates({}));
  wire.Then(200, Docs({{.id = "D2", .revision = "A", .iteration = "99", .isLatest = true}}));
  Ask("D1");
  ExpectLatest("D1", "B.1", false);
}

TEST_F(LatestVersion, ComparesTextsOfOneLengthByTheirBytes) {
  wire.Then(200, Json({.revision = "Z"})).Then(200, Candidates({}));
  wire.Then(200, Docs({{.id = "D2", .revision = "a", .isLatest = true}}));
  Ask("D1");
  ExpectLatest("D2", "a.1", false);
}

TEST_F(LatestVersion, PassesOverListedVersionsThatAreNotTheNewestOfTheirRevision) {
  wire.Then(200, Json({.isLatest = true})).Then(200, Candidates({}));
  wire.Then(200, Docs({{.id = "D2", .revision = "B", .iteration = "7", .isLatest = false}}));
  Ask("D1");
  ExpectLatest("D1", "A.1", true);
}

TEST_F(LatestVersion, StaysWithTheDocumentForAListedEqualVersion) {
  wire.Then(200, Json({.isLatest = true})).Then(200, Candidates({}));
  wire.Then(200, Docs({{.id = "D2", .isLatest = true}}));
  Ask("D1");
  ExpectLatest("D1", "A.1", true);
}

TEST_F(LatestVersion, IsWhatTheDocumentSaysOfItselfWhenTheListFails) {
  wire.Then(200, Json({.isLatest = true}))
      .Then(200, Candidates({}))
      .ThenFail(du::http::ErrorCode::NoConnection);
  Ask("D1");
  ExpectLatest("D1", "A.1", true);
}

TEST_F(LatestVersion, FromTheListStandsInTheWorkspace) {
  wire.Then(200, Json({})).Then(200, Candidates({}));
  wire.Then(200, Docs({{.id = "D2", .iteration = "2", .isLatest = true}}));
  Ask("D1|W2");
  ExpectLatest("D2|W2", "A.2", false);
}

TEST_F(LatestVersion, OfATemporaryCheckoutIsThatOfTheDocumentBeforeItWithoutAWorkspace) {
  wire.Then(200, Json({})).Then(200, Candidates({{"D1", "A.1", "x"}}));
  wire.Then(200, Docs({{.id = "D2", .iteration = "2", .isLatest = true}}));
  Ask("D1|W2|D3|T");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV2, versions));
  ExpectLatest("D1", "", false);
}

TEST_F(LatestVersion, IsReportedWithTheIdOfTheRecordWhenTheServerAnswersWithAnother) {
  wire.Then(200, Json({.id = "D1-canonical"})).Then(200, Candidates({})).Then(200, "[]");
  Ask("D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, dynamicV2, versions));
  ExpectLatest("D1-canonical", "A.1", false);
}

}  // namespace
}  // namespace vtdirect_test
