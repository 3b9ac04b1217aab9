#include "documents/checkout/working_copy.h"

#include "base/result.h"
#include "tests/wire/browsing/location_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;

class WorkingCopy : public LocationTest {
 protected:
  WorkingCopy() {
    record.id = "D1";
    record.contextId = "C5";
    record.contextName = "Gadget";
    record.revision = "A";
    record.iteration = "1";
    record.master.number = "00 42";
  }
  DocumentRecord record;
  bool answer = true;
};

TEST_F(WorkingCopy, IsADocumentWithOneVersionAndNoFolder) {
  wire.Then(200, Docs({{}}));
  EXPECT_TRUE(HandOver(IsWorkingCopy(Begin(connection), record), answer));
  EXPECT_TRUE(answer);
  EXPECT_THAT(wire.lines(), ElementsAre(Get(VersionsPath("D1"))));
  ExpectQuiet();
}

TEST_F(WorkingCopy, IsNoDocumentWithOneVersionInAFolder) {
  record.folderPath = "/Gadget/Sub";
  wire.Then(200, Docs({{}}));
  EXPECT_TRUE(HandOver(IsWorkingCopy(Begin(connection), record), answer));
  EXPECT_FALSE(answer);
}

TEST_F(WorkingCopy, IsNoDocumentWithNoneOrSeveralVersions) {
  wire.Then(200, "[]");
  EXPECT_TRUE(HandOver(IsWorkingCopy(Begin(connection), record), answer));
  EXPECT_FALSE(answer);
  answer = true;
  wire.Then(200, Docs({{}, {}}));
  EXPECT_TRUE(HandOver(IsWorkingCopy(Begin(connection), record), answer));
  EXPECT_FALSE(answer);
}

TEST_F(WorkingCopy, IsNoDocumentWhoseVersionsCannotBeReadAndThatIsNoFailure) {
  wire.Then(500);
  EXPECT_TRUE(HandOver(IsWorkingCopy(Begin(connection), record), answer));
  EXPECT_FALSE(answer);
  ExpectQuiet();
}

class CheckedOutByYou : public WorkingCopy {
 protected:
  CheckedOutByYou() { record.isCheckoutByYou = true; }
};

TEST_F(CheckedOutByYou, IsTheCopyWhenAnotherDocumentHasTheSameVersion) {
  wire.Then(200, Docs({{.id = "D8", .iteration = "2"}, {.id = "D9"}}));
  EXPECT_TRUE(HandOver(IsWorkingCopy(Begin(connection), record), answer));
  EXPECT_TRUE(answer);
  EXPECT_THAT(wire.lines(), ElementsAre(Get(NumberPath("00%2042", "C5"))));
  ExpectQuiet();
}

TEST_F(CheckedOutByYou, IsTheOriginalWhenOnlyItselfHasItsVersion) {
  wire.Then(200, Docs({{.id = "D1"}, {.id = "D8", .iteration = "2"}, {.id = "D9", .revision = "B"}}));
  EXPECT_TRUE(HandOver(IsWorkingCopy(Begin(connection), record), answer));
  EXPECT_FALSE(answer);
}

TEST_F(CheckedOutByYou, IsUnknownWhenTheSearchFails) {
  wire.Then(500, "down");
  EXPECT_EQ(IsWorkingCopy(Begin(connection), record), std::nullopt);
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to find doc number 00 42 with response: down")));
}

}  // namespace
}  // namespace vtdirect_test
