#include "documents/checkout/checkout_state.h"

#include "tests/wire/browsing/location_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using testing::ElementsAre;

class CheckoutState : public LocationTest {
 protected:
  bool Ask(const char* id) { return server->GetCheckoutServer()->GetCheckoutState(id, state); }
  void Expect(bool inWorkspace, bool inUserWorkspace, bool checkedOut, bool checkedOutByYou, bool isLatest) {
    EXPECT_EQ(state.inWorkspace, inWorkspace);
    EXPECT_EQ(state.inUserWorkspace, inUserWorkspace);
    EXPECT_EQ(state.checkedOut, checkedOut);
    EXPECT_EQ(state.checkedOutByYou, checkedOutByYou);
    EXPECT_EQ(state.isLatest, isLatest);
  }
  VtCheckoutState state;
};

const std::string document = Get(DocumentPath("D1"));

TEST_F(CheckoutState, TracesADocumentThatCannotBeReadAndLeavesTheStateAlone) {
  state.isLatest = true;
  wire.Then(404);
  EXPECT_FALSE(Ask("D1|W2"));
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to locate document D1|W2 on server\n")));
  Expect(false, false, false, false, true);
}

TEST_F(CheckoutState, TellsOfADocumentThatNobodyHasCheckedOut) {
  wire.Then(200, Json({.isLatest = true})).Then(200, Docs({{}}));
  EXPECT_TRUE(Ask("D1"));
  EXPECT_THAT(wire.lines(), ElementsAre(document, Get(VersionsPath("D1"))));
  Expect(false, false, false, false, true);
  ExpectQuiet();
}

TEST_F(CheckoutState, TellsWhoHasADocument) {
  wire.Then(200, Json({.isCheckout = true, .isLatest = true, .checkoutByUser = "Ada"})).Then(200, "[]");
  EXPECT_TRUE(Ask("D1"));
  EXPECT_EQ(state.checkedOutBy, "Ada");
  Expect(false, false, true, false, true);
}

TEST_F(CheckoutState, TellsOfTheOriginalOfACheckoutByTheUser) {
  const Doc original{.isCheckout = true, .isCheckoutByYou = true, .isLatest = true};
  wire.Then(200, Json(original)).Then(200, Docs({original}));
  EXPECT_TRUE(Ask("D1"));
  EXPECT_THAT(wire.lines(), ElementsAre(document, Get(NumberPath("0042", "C5"))));
  Expect(false, false, true, true, true);
}

TEST_F(CheckoutState, TellsOfTheCopyOfACheckoutByTheUser) {
  wire.Then(200, Json({.isCheckoutByYou = true, .isLatest = true})).Then(200, Docs({{.id = "D0"}}));
  EXPECT_TRUE(Ask("D1|W2"));
  Expect(true, true, true, true, false);
}

TEST_F(CheckoutState, CountsADocumentThatWasNeverCheckedInAsCheckedOutByTheUser) {
  wire.Then(200, Json({.isLatest = true, .folderPath = ""})).Then(200, Docs({{}}));
  EXPECT_TRUE(Ask("D1"));
  Expect(true, true, true, true, false);
}

TEST_F(CheckoutState, TellsOfATemporaryCheckoutByOneRequest) {
  state.inUserWorkspace = true;
  wire.Then(200, Json({.isCheckout = true, .isCheckoutByYou = true, .isLatest = true}));
  EXPECT_TRUE(Ask("D1|W2|D3|T"));
  EXPECT_THAT(wire.lines(), ElementsAre(document));
  Expect(true, false, true, true, true);
}

TEST_F(CheckoutState, CountsNoWorkingCopyWhenTheServerCannotTell) {
  wire.Then(200, Json({.isCheckout = true, .isCheckoutByYou = true})).Then(500, "down");
  EXPECT_TRUE(Ask("D1"));
  Expect(false, false, true, true, false);
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to find doc number 0042 with response: down")));
}

}  // namespace
}  // namespace vtdirect_test
