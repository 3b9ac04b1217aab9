#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/e2e/cli/put_fixture.h"

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;
using testing::StartsWith;

namespace vtdirect_test {
namespace {

const std::string frameFolder = "//sim/Products/Trekking Bike/Folders/Frame/";
const std::string bench = "//sim/Products/Trekking Bike/Workspaces/Anna's bench/";

}  // namespace

class PutToEachGeneration : public PutTest, public testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override { Serve({"--generation", GetParam()}); }
};

INSTANTIATE_TEST_SUITE_P(Generations, PutToEachGeneration,
                         testing::Values("gateway", "schema1", "schema4", "schema5"));

TEST_P(PutToEachGeneration, CreatesADocumentInAFolderUnderTheFilesName) {
  WriteFile(Here("new.lxz"), EveryByte());
  const ProcessResult result = Run({"put", "new.lxz", frameFolder});
  EXPECT_EQ(result.status, 0);
  const std::string id = IdIn(result.out);
  EXPECT_EQ(result.out, server().Uid(id) + "&file=/new.lxz\n");
  EXPECT_EQ(result.err, "vtdirect: created " + frameFolder + "new.lxz from new.lxz, 768 bytes\n");
  const ServerDocument document = DocumentOf(server(), id);
  EXPECT_EQ(document.name, "new.lxz");
  EXPECT_EQ(document.version, "A.1");
  EXPECT_EQ(document.folder, "/Trekking Bike/Frame");
  EXPECT_EQ(document.checkedOutBy, "");
  EXPECT_TRUE(document.bytes == EveryByte());
  EXPECT_TRUE(Content(frameFolder + "new.lxz") == EveryByte());
  EXPECT_THAT(HereNames(), ElementsAre("new.lxz"));
}

TEST_P(PutToEachGeneration, MakesANewIterationOfAnExistingDocument) {
  WriteFile(Here("any name.lxz"), "second gear");
  const ProcessResult result =
      Run({"put", "any name.lxz", "//sim/Products/Trekking Bike/Folders/Drivetrain/gear.lxz"});
  EXPECT_EQ(result.status, 0) << result.err;
  const ServerDocument document = DocumentOf(server(), IdIn(result.out));
  EXPECT_EQ(document.name, "gear.lxz");
  EXPECT_EQ(document.version, "B.3");
  EXPECT_EQ(document.bytes, "second gear");
  EXPECT_EQ(Content("//sim/Products/Trekking Bike/Folders/Drivetrain/gear.lxz"), "second gear");
}

TEST_P(PutToEachGeneration, ReplacesTheViewableOfTheIterationBefore) {
  WriteFile(Here("f.lxz"), "f");
  for (const char* viewable : {"first", "second"}) {
    WriteFile(Here("view"), viewable);
    EXPECT_EQ(Run({"put", "f.lxz", frameFolder, "--viewable", "view"}).status, 0);
  }
  const ProcessResult kept = Run({"put", "f.lxz", frameFolder});
  const ServerDocument document = DocumentOf(server(), IdIn(kept.out));
  EXPECT_EQ(document.version, "A.3");
  ASSERT_EQ(document.secondary.size(), 1U);
  EXPECT_EQ(document.secondary[0].category, "VIEWABLE");
  EXPECT_EQ(document.secondary[0].bytes, "second");
}

TEST_P(PutToEachGeneration, RefusesAFolderThatIsNotThere) {
  WriteFile(Here("new.lxz"), "x");
  const std::string folder = "//sim/Products/Trekking Bike/Folders/Frame/Nowhere/";
  const ProcessResult result = Run({"put", "new.lxz", folder});
  EXPECT_EQ(result.status, 6);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "vtdirect: there is no folder " + folder + " that you can see; nothing was sent\n");
  EXPECT_THAT(server().Log(), testing::Not(HasSubstr("creationFactory")));
}

TEST_P(PutToEachGeneration, StoresIntoAWorkingCopyByItsPathAndChecksItIn) {
  WriteFile(Here("crank.lxz"), "longer crank");
  const ProcessResult stored = Run({"put", "crank.lxz", bench});
  EXPECT_EQ(stored.status, 0) << stored.err;
  EXPECT_EQ(stored.out, server().Uid("D1026|W301") + "&file=/crank.lxz\n");
  EXPECT_EQ(DocumentOf(server(), "D1026").bytes, "longer crank");
  EXPECT_EQ(DocumentOf(server(), "D1016").checkedOutBy, "anna");

  WriteFile(Here("crank.lxz"), "longest crank");
  const ProcessResult checkedIn = Run({"put", "crank.lxz", bench, "--checkin"});
  EXPECT_EQ(checkedIn.status, 0) << checkedIn.err;
  const ServerDocument document = DocumentOf(server(), IdIn(checkedIn.out));
  EXPECT_EQ(document.version, "A.2");
  EXPECT_EQ(document.bytes, "longest crank");
  EXPECT_EQ(document.checkedOutBy, "");
  EXPECT_EQ(Content("//sim/Products/Trekking Bike/Folders/Drivetrain/crank.lxz"), "longest crank");
}

TEST_F(PutTest, CreatesADocumentByItsName) {
  Serve();
  WriteFile(Here("local"), "content");
  const ProcessResult result = Run({"put", "local", frameFolder + "other.lxz", "--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  const std::string uid = server().Uid(IdIn(result.out)) + "&file=/other.lxz";
  EXPECT_EQ(result.out, "{\"schema\":2,\"command\":\"put\",\"address\":\"" + frameFolder +
                            "other.lxz\",\"file\":\"local\",\"bytes\":7,\"action\":\"created\",\"uid\":\"" +
                            uid + "\",\"checked_in\":false,\"checkout\":\"none\"}\n");
  EXPECT_EQ(DocumentOf(server(), IdIn(uid)).name, "other.lxz");
}

TEST_F(PutTest, CreatesADocumentInTheRootFolderOfAContext) {
  Serve();
  WriteFile(Here("plan.lxz"), "content");
  const ProcessResult result = Run({"put", "plan.lxz", "//sim/Projects/Umrüstung Nabendynamo/Folders/"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(DocumentOf(server(), IdIn(result.out)).folder, "/Umrüstung Nabendynamo");
  EXPECT_EQ(Content("//sim/Projects/Umrüstung Nabendynamo/Folders/plan.lxz"), "content");
}

TEST_F(PutTest, StoresAnEmptyFile) {
  Serve();
  WriteFile(Here("empty.lxz"), "");
  const ProcessResult result = Run({"put", "empty.lxz", frameFolder});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(DocumentOf(server(), IdIn(result.out)).bytes, "");
}

TEST_F(PutTest, NamesTheDocumentAfterTheFileEscapedAsInAPath) {
  Serve();
  // Nine of the ten characters; the tenth, "/", can be in no local name.
  for (const auto& [local, stored] :
       {std::pair("odd|\\<>:\"?*%.lxz", "odd%7c%5c%3c%3e%3a%22%3f%2a%25.lxz"),
        std::pair("Größe 漢字 №1.lxz", "Größe 漢字 №1.lxz"), std::pair("x & y='z'+#.lxz", "x & y='z'+#.lxz"),
        std::pair("-leading", "-leading")}) {
    WriteFile(Here(local), "content");
    const ProcessResult result = Run({"put", std::string("./") + local, frameFolder});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(DocumentOf(server(), IdIn(result.out)).name, stored);
    EXPECT_EQ(Content(result.out.substr(0, result.out.size() - 1)), "content");
    EXPECT_EQ(Content(frameFolder + stored), "content");
  }
}

TEST_F(PutTest, TakesANameOf255Bytes) {
  Serve();
  const std::string name = std::string(251, 'n') + ".lxz";
  WriteFile(Here(name), "content");
  const ProcessResult result = Run({"put", name, frameFolder});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(DocumentOf(server(), IdIn(result.out)).name, name);
}

TEST_F(PutTest, CreatesDocumentsOfEachKind) {
  Serve();
  WriteFile(Here("f"), "content");
  const ServerDocument fenlet =
      DocumentOf(server(), IdIn(Run({"put", "f", frameFolder + "1", "--kind", "fenlet"}).out));
  EXPECT_EQ(fenlet.category, "FENLET");
  EXPECT_EQ(fenlet.masterCategory, "iso");
  EXPECT_EQ(fenlet.application, "MERIDOX");
  EXPECT_EQ(fenlet.applicationVersion, "310");
  const ServerDocument general =
      DocumentOf(server(), IdIn(Run({"put", "f", frameFolder + "2", "--kind", "general"}).out));
  EXPECT_EQ(general.category, "GENERAL");
  EXPECT_EQ(general.masterCategory, "OTHER");
  EXPECT_EQ(general.application, "MERIDOX");
  const ServerDocument ugc =
      DocumentOf(server(), IdIn(Run({"put", "f", frameFolder + "3", "--kind", "ugc"}).out));
  EXPECT_EQ(ugc.category, "DOVA_UGC");
  EXPECT_EQ(ugc.masterCategory, "kdx");
  EXPECT_EQ(ugc.application, "DOVA");
  EXPECT_EQ(ugc.applicationVersion, "42");
}

TEST_F(PutTest, StoresAllThatAFenletDocumentCanHave) {
  Serve();
  WriteFile(Here("main"), "content");
  WriteFile(Here("view"), "viewable");
  WriteFile(Here("meta"), "{\"commit\":1}");
  const ProcessResult result =
      Run({"put", "main", frameFolder + "all.lxz", "--viewable", "view", "--metadata", "meta", "--language",
           "de", "--link", "a=b%7c.lxz=" + server().Uid("D1002"), "--link", "gear=//sim/?id=D1003"});
  EXPECT_EQ(result.status, 0) << result.err;
  const ServerDocument document = DocumentOf(server(), IdIn(result.out));
  EXPECT_EQ(document.bytes, "content");
  ASSERT_THAT(document.secondary, SizeIs(2));
  EXPECT_EQ(document.secondary[0].category, "VIEWABLE");
  EXPECT_EQ(document.secondary[0].bytes, "viewable");
  EXPECT_FALSE(document.secondary[0].hidden);
  EXPECT_EQ(document.secondary[1].category, "VCSINFO");
  EXPECT_EQ(document.secondary[1].fileName, "cad-metadata.json");
  EXPECT_EQ(document.secondary[1].bytes, "{\"commit\":1}");
  EXPECT_TRUE(document.secondary[1].hidden);
  EXPECT_THAT(document.attributes,
              ElementsAre(Pair("ZVK_DD_LANGUAGE", "de"), Pair("ZVK_DD_TRANSLATE", "yes")));
  EXPECT_THAT(document.sources, ElementsAre(Pair("a=b|.lxz", "D1002"), Pair("gear", "D1003")));
}

TEST_F(PutTest, KeepsTheLinksAttributesAndViewableOfADocumentThatIsIterated) {
  Serve();
  WriteFile(Here("fork.lxz"), "new fork");
  const ProcessResult result = Run({"put", "fork.lxz", frameFolder});
  EXPECT_EQ(result.status, 0) << result.err;
  const ServerDocument document = DocumentOf(server(), IdIn(result.out));
  EXPECT_EQ(document.version, "B.2");
  EXPECT_EQ(document.bytes, "new fork");
  EXPECT_THAT(document.sources, ElementsAre(Pair("frame.lxz", "D1002")));
  EXPECT_EQ(document.attributes.at("ZVK_DD_LANGUAGE"), "en");
  EXPECT_EQ(document.attributes.at("ZVK_DD_PAINT"), "Nachtblau");
  ASSERT_THAT(document.secondary, SizeIs(1));
  EXPECT_EQ(document.secondary[0].category, "VIEWABLE");
  EXPECT_EQ(document.secondary[0].bytes, "VIEWABLE of D1001\n");
}

TEST_F(PutTest, ChangesTheLinksOfADocumentAsItIsTold) {
  Serve();
  WriteFile(Here("fork.lxz"), "new fork");
  const ProcessResult added = Run({"put", "fork.lxz", server().Uid("D1001"), "--link",
                                   "gear=" + server().Uid("D1003"), "--language", "fr"});
  EXPECT_EQ(added.status, 0) << added.err;
  const ServerDocument more = DocumentOf(server(), IdIn(added.out));
  EXPECT_THAT(more.sources, ElementsAre(Pair("frame.lxz", "D1002"), Pair("gear", "D1003")));
  EXPECT_EQ(more.attributes.at("ZVK_DD_LANGUAGE"), "fr");
  const ProcessResult taken = Run({"put", "fork.lxz", frameFolder + "fork.lxz", "--link", "frame.lxz="});
  EXPECT_EQ(taken.status, 0) << taken.err;
  EXPECT_THAT(DocumentOf(server(), IdIn(taken.out)).sources, ElementsAre(Pair("gear", "D1003")));
}

TEST_F(PutTest, GivesAnIterationAViewableAndMetadataOfItsOwn) {
  Serve();
  WriteFile(Here("frame.lxz"), "new frame");
  WriteFile(Here("view"), "new view");
  WriteFile(Here("meta"), "new meta");
  const ProcessResult result =
      Run({"put", "frame.lxz", frameFolder, "--viewable", "view", "--metadata", "meta", "--checkin"});
  EXPECT_EQ(result.status, 0) << result.err;
  const ServerDocument document = DocumentOf(server(), IdIn(result.out));
  EXPECT_EQ(document.version, "A.4");
  ASSERT_THAT(document.secondary, SizeIs(2));
  EXPECT_EQ(document.secondary[0].bytes, "new view");
  EXPECT_EQ(document.secondary[1].bytes, "new meta");
}

TEST_F(PutTest, CreatesADocumentInAWorkspaceAndKeepsItsWorkingCopy) {
  Serve();
  WriteFile(Here("seat.lxz"), "first");
  const ProcessResult created = Run({"put", "seat.lxz", bench});
  EXPECT_EQ(created.status, 0) << created.err;
  const std::string id = IdIn(created.out);
  const std::string uid = server().Uid(id + "|W301") + "&file=/seat.lxz";
  EXPECT_EQ(created.out, uid + "\n");
  EXPECT_THAT(created.err, HasSubstr("vtdirect checkin '" + uid + "'"));
  EXPECT_EQ(DocumentOf(server(), id).folder, "");
  EXPECT_THAT(ReadFile(Home(".local/state/vtdirect/checkouts")), HasSubstr(id + "|W301"));

  WriteFile(Here("seat.lxz"), "second");
  const ProcessResult checkedIn = Run({"put", "seat.lxz", uid, "--checkin"});
  EXPECT_EQ(checkedIn.status, 0) << checkedIn.err;
  const ServerDocument document = DocumentOf(server(), IdIn(checkedIn.out));
  EXPECT_EQ(document.bytes, "second");
  EXPECT_EQ(document.folder, "/Trekking Bike");
  EXPECT_THAT(ReadFile(Home(".local/state/vtdirect/checkouts")), testing::Not(HasSubstr(id + "|W301")));
}

TEST_F(PutTest, StoresAllItCanIntoAWorkingCopyOfOnesOwnWorkspaceAndLeavesItCheckedOut) {
  Serve();
  WriteFile(Here("crank"), "new crank");
  WriteFile(Here("view"), "new view");
  WriteFile(Here("meta"), "new meta");
  const ProcessResult result =
      Run({"put", "crank", server().Uid("D1026|W301"), "--viewable", "view", "--metadata", "meta",
           "--language", "de", "--link", "gear=" + server().Uid("D1003"), "--json"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("\"action\":\"stored\""));
  EXPECT_THAT(result.out, EndsWith("\"checked_in\":false,\"checkout\":\"workspace\"}\n"));
  const ServerDocument document = DocumentOf(server(), "D1026");
  EXPECT_EQ(document.bytes, "new crank");
  EXPECT_EQ(document.checkedOutBy, "anna");
  ASSERT_THAT(document.secondary, SizeIs(2));
  EXPECT_EQ(document.secondary[0].bytes, "new view");
  EXPECT_EQ(document.secondary[1].bytes, "new meta");
  EXPECT_EQ(document.attributes.at("ZVK_DD_LANGUAGE"), "de");
  EXPECT_THAT(document.sources, ElementsAre(Pair("gear", "D1003")));
  EXPECT_THAT(DocumentOf(server(), "D1016").bytes, StartsWith("FENLET DRAWING\n"));
}

TEST_F(PutTest, FindsTheWorkspaceOfAWorkingCopyThatIsNamedByItsIdAlone) {
  Serve();
  WriteFile(Here("f"), "content");
  const ProcessResult result = Run({"put", "f", server().Uid("D1026")});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, server().Uid("D1026|W301") + "&file=/crank.lxz\n");
  EXPECT_EQ(DocumentOf(server(), "D1026").bytes, "content");
}

TEST_F(PutTest, MakesANewIterationOfADocumentThatAWorkspaceHoldsWithoutACheckout) {
  Serve();
  WriteFile(Here("f"), "content");
  const ProcessResult fork = Run({"put", "f", bench + "fork.lxz"});
  EXPECT_EQ(fork.status, 0) << fork.err;
  EXPECT_EQ(DocumentOf(server(), IdIn(fork.out)).version, "B.2");
  EXPECT_EQ(Content(frameFolder + "fork.lxz"), "content");

  // What a check-in in a workspace of one's own leaves is such a document too.
  const ProcessResult checkedIn = Run({"put", "f", bench + "crank.lxz", "--checkin"});
  ASSERT_EQ(checkedIn.status, 0) << checkedIn.err;
  const ProcessResult again = Run({"put", "f", checkedIn.out.substr(0, checkedIn.out.size() - 1)});
  EXPECT_EQ(again.status, 0) << again.err;
  EXPECT_EQ(DocumentOf(server(), IdIn(again.out)).version, "A.3");
}

TEST_F(PutTest, ReadsALinkOfTheDocumentThatCannotBeReadAsAReasonToStop) {
  Serve({"--fault", "GET *documents/D1002=404"});
  WriteFile(Here("fork.lxz"), "new fork");
  const ProcessResult result = Run({"put", "fork.lxz", server().Uid("D1001")});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("link frame.lxz to a document that can't be read now, and would lose it; "
                                    "nothing was sent"));
  EXPECT_THAT(server().Log(), testing::Not(HasSubstr("creationFactory")));
}

}  // namespace vtdirect_test
