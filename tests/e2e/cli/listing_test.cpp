#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

#include "tests/e2e/cli/vtdirect_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace vtdirect_test {
namespace {

constexpr const char* foldersPath = "//sim/Products/Trekking Bike/Folders";

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// What the demo repository holds, as paths, in the order of their bytes. The user is anna.
const std::vector<std::string>& DemoTree() {
  static const std::vector<std::string> tree = [] {
    const std::string cargo = "//sim/Products/Lastenrad Größe L/";
    const std::string bike = "//sim/Products/Trekking Bike/";
    const std::string drive = bike + "Folders/Drivetrain/";
    std::vector<std::string> paths = {"//sim/Libraries/",
                                      "//sim/Libraries/Materials/",
                                      "//sim/Libraries/Materials/Folders/",
                                      "//sim/Libraries/Materials/Folders/Lacke/",
                                      "//sim/Libraries/Materials/Folders/Lacke/nachtblau.lxz",
                                      "//sim/Libraries/Materials/Workspaces/",
                                      "//sim/Libraries/Standard Parts/",
                                      "//sim/Libraries/Standard Parts/Folders/",
                                      "//sim/Libraries/Standard Parts/Folders/Bolts/",
                                      "//sim/Libraries/Standard Parts/Folders/Bolts/bolt M6.lxz",
                                      "//sim/Libraries/Standard Parts/Workspaces/",
                                      "//sim/Products/",
                                      cargo,
                                      cargo + "Folders/",
                                      cargo + "Folders/Drivetrain/",
                                      cargo + "Folders/Drivetrain/gear.lxz",
                                      cargo + "Workspaces/",
                                      cargo + "Workspaces/Größe L/",
                                      bike,
                                      bike + "Folders/",
                                      bike + "Folders/paint shop scan.bin",
                                      bike + "Folders/empty note.lxz",
                                      bike + "Folders/no content.lxz",
                                      bike + "Folders/handlebar.asm",
                                      drive,
                                      drive + "gear.lxz",
                                      drive + "bearing 1%2f2%22.lxz",
                                      drive + "odd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz",
                                      drive + "O'Ring 12mm.lxz",
                                      drive + "brake.lxz",
                                      drive + "crank.lxz",
                                      drive + "Chains/",
                                      drive + "Chains/chain guard 28 inch.lxz",
                                      drive + "Chains/chain.lxz",
                                      bike + "Folders/Frame/",
                                      bike + "Folders/Frame/fork.lxz",
                                      bike + "Folders/Frame/frame.lxz",
                                      bike + "Folders/Frame/welding manual.xml",
                                      bike + "Folders/Größen & Maße/",
                                      bike + "Folders/Größen & Maße/Größentabelle Rahmen.lxz",
                                      bike + "Folders/Manuals/",
                                      bike + "Folders/Manuals/chain manual.xml",
                                      bike + "Folders/Nothing yet/",
                                      bike + "Folders/Translations/",
                                      bike + "Folders/Translations/welding manual.xlf",
                                      bike + "Folders/Translations/welding manual_de.xlf",
                                      bike + "Folders/Translations/welding manual_fr.xlf",
                                      bike + "Workspaces/",
                                      bike + "Workspaces/Anna's bench/",
                                      bike + "Workspaces/Anna's bench/crank.lxz",
                                      bike + "Workspaces/Anna's bench/saddle.lxz",
                                      bike + "Workspaces/Anna's bench/fork.lxz",
                                      "//sim/Projects/",
                                      "//sim/Projects/Spring Launch/",
                                      "//sim/Projects/Spring Launch/Folders/",
                                      "//sim/Projects/Spring Launch/Folders/Plans/",
                                      "//sim/Projects/Spring Launch/Folders/Plans/launch plan.lxz",
                                      "//sim/Projects/Spring Launch/Workspaces/",
                                      "//sim/Projects/Umrüstung Nabendynamo/",
                                      "//sim/Projects/Umrüstung Nabendynamo/Folders/",
                                      "//sim/Projects/Umrüstung Nabendynamo/Folders/nabendynamo.lxz",
                                      "//sim/Projects/Umrüstung Nabendynamo/Workspaces/",
                                      "//sim/Sites/",
                                      "//sim/Sites/Werk Nord/",
                                      "//sim/Sites/Werk Nord/Folders/",
                                      "//sim/Sites/Werk Nord/Folders/hall layout.lxz",
                                      "//sim/Sites/Werk Nord/Workspaces/",
                                      "//sim/Sites/Werk Süd/",
                                      "//sim/Sites/Werk Süd/Folders/",
                                      "//sim/Sites/Werk Süd/Folders/Hallenplan Süd.lxz",
                                      "//sim/Sites/Werk Süd/Workspaces/"};
    std::sort(paths.begin(), paths.end());
    return paths;
  }();
  return tree;
}

}  // namespace

class ListingOfEachGeneration : public VtDirect, public testing::WithParamInterface<const char*> {
 protected:
  // A gateway that doesn't escape can't tell a "/" in a name from one between names, so this is one that
  // does.
  void SetUp() override {
    Serve({"--generation", GetParam(), "--gateway-escapes"});
    environment_["FENLOOM_REST_SNXGW_NOW_ESCAPES"] = "1";
  }
};

INSTANTIATE_TEST_SUITE_P(Generations, ListingOfEachGeneration,
                         testing::Values("gateway", "schema1", "schema4", "schema5"));

TEST_P(ListingOfEachGeneration, ShowsOneTreeOfDocuments) {
  const ProcessResult result = Run({"tree", "--cad", "--full-paths", "//sim"});
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  std::vector<std::string> lines = LinesOf(result.out);
  std::sort(lines.begin(), lines.end());
  EXPECT_EQ(lines, DemoTree());
}

TEST_P(ListingOfEachGeneration, GoesDownFromTheServerToADocumentWithAndWithoutAClosingSlash) {
  for (const char* end : {"", "/"}) {
    EXPECT_EQ(Run({"ls", std::string("//sim") + end}).out, "Products/\nLibraries/\nProjects/\nSites/\n");
    EXPECT_THAT(LinesOf(Run({"ls", std::string("//sim/Products") + end}).out),
                UnorderedElementsAre("Trekking Bike/", "Lastenrad Größe L/"));
    EXPECT_EQ(Run({"ls", std::string("//sim/Products/Trekking Bike") + end}).out, "Folders/\nWorkspaces/\n");
    EXPECT_THAT(LinesOf(Run({"ls", foldersPath + std::string("/Frame") + end}).out),
                UnorderedElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
    EXPECT_THAT(
        LinesOf(Run({"ls", std::string("//sim/Products/Trekking Bike/Workspaces/Anna's bench") + end}).out),
        UnorderedElementsAre("crank.lxz", "saddle.lxz", "fork.lxz"));
  }
  const ProcessResult empty = Run({"ls", foldersPath + std::string("/Nothing yet")});
  EXPECT_EQ(empty.out, "");
  EXPECT_EQ(empty.status, 0);
}

TEST_P(ListingOfEachGeneration, SaysThatADocumentIsNoFolder) {
  for (const char* command : {"ls", "tree"}) {
    for (const std::string& address : {foldersPath + std::string("/Frame/fork.lxz"), server().Uid("D1001"),
                                       std::string("//sim/?id=D1001")}) {
      const ProcessResult result = Run({command, address});
      EXPECT_EQ(result.out, "");
      EXPECT_EQ(result.err,
                "vtdirect: " + address +
                    " is a document and no folder; vtdirect info and vtdirect versions tell of it\n");
      EXPECT_EQ(result.status, 1);
    }
  }
}

TEST_P(ListingOfEachGeneration, Gives6ForAFolderThatIsNotThere) {
  for (const char* command : {"ls", "tree"}) {
    for (const std::string& path :
         {foldersPath + std::string("/Frame/none"), std::string("//sim/Nonsense"),
          std::string("//sim/Products/Trekking Bike/Nonsense"), std::string("//sim/Products/None/Folders"),
          std::string("//sim/Products/Trekking Bike/Workspaces/None")}) {
      const ProcessResult result = Run({command, path});
      EXPECT_EQ(result.out, "") << path;
      EXPECT_EQ(result.err, "vtdirect: not found: " + path + "\n");
      EXPECT_EQ(result.status, 6) << path;
    }
  }
}

TEST_F(VtDirect, ListsTheServersWithoutAnyRequest) {
  Serve();
  EXPECT_EQ(Run({"ls"}).out, "sim/\n");
  EXPECT_EQ(Run({"ls", "-s", "arch=http://a/", "--json"}).out,
            "{\"schema\":2,\"command\":\"ls\",\"path\":\"//arch/\",\"name\":\"arch\",\"kind\":\"server\"}\n"
            "{\"schema\":2,\"command\":\"ls\",\"path\":\"//sim/\",\"name\":\"sim\",\"kind\":\"server\"}\n");
  EXPECT_EQ(server().Log(), "");
}

TEST_F(VtDirect, ShowsNumbersTitlesAndVersions) {
  Serve();
  const ProcessResult result = Run({"ls", "-l", "--versions", foldersPath + std::string("/Drivetrain")});
  EXPECT_EQ(result.err, "");
  EXPECT_THAT(
      LinesOf(result.out),
      UnorderedElementsAre("d\tChains/\t\t\t", "-\tgear.lxz\t0000100003\tGear\tB.2 B.1 A.2 A.1",
                           "-\tbearing 1%2f2%22.lxz\t0000 1000 06\tBearing 1/2\"\tA.1",
                           "-\todd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz\t0000100007\tAll ten\tA.2 A.1",
                           "-\tO'Ring 12mm.lxz\t0000100008\tO'Ring\tA.1",
                           "-\tbrake.lxz\t0000100015\tBrake\tA.1", "-\tcrank.lxz\t0000100016\tCrank\tA.1"));
}

TEST_F(VtDirect, ShowsVersionsWithTheirIdsAsJson) {
  Serve();
  const ProcessResult result = Run({"ls", "--json", "--versions", foldersPath + std::string("/Frame/")});
  EXPECT_THAT(
      result.out,
      HasSubstr("{\"schema\":2,\"command\":\"ls\",\"path\":\"//sim/Products/Trekking "
                "Bike/Folders/Frame/fork.lxz\",\"name\":\"fork.lxz\",\"kind\":\"document\",\"versions\":"
                "[\"B.1\",\"A.2\",\"A.1\"],\"version_ids\":[\"D1001\",\"D1201\",\"D1101\"]}\n"));
}

TEST_F(VtDirect, NotesWhatAListingDoesNotShow) {
  Serve({"--generation", "gateway"});
  const ProcessResult result = Run({"ls", "-l", "--versions", foldersPath + std::string("/Frame")});
  EXPECT_THAT(LinesOf(result.out),
              UnorderedElementsAre("-\tfork.lxz\t\t\t", "-\tframe.lxz\t\t\t", "-\twelding manual.xml\t\t\t"));
  EXPECT_THAT(result.err, HasSubstr("shows no numbers and titles"));
  EXPECT_THAT(result.err, HasSubstr("shows no versions"));
  EXPECT_EQ(result.status, 0);
}

TEST_F(VtDirect, PrintsRowsAsTheyArrive) {
  Serve({"--page-size", "1", "--fault", "GET *skiptoken*=stall"});
  const auto process = Start({"ls", foldersPath + std::string("/Frame")});
  EXPECT_TRUE(WaitUntil([&] { return process->OutputSoFar().find('\n') != std::string::npos; }));
  EXPECT_TRUE(process->Running());
  EXPECT_THAT(LinesOf(process->OutputSoFar()), testing::SizeIs(1));
  process->Signal(15);
  EXPECT_EQ(process->Wait().status, 143);
}

TEST_F(VtDirect, ListsManyRowsInTheMemoryOfFew) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP()
      << "AddressSanitizer holds freed memory back, so that the peak says nothing; the plain build tells";
#endif
  const auto peakOf = [this](const std::string& rows) {
    const TemporaryDirectory directory;
    const Simulator simulator(directory.path(), {"--seed", "bulk:" + rows, "--page-size", "500"});
    const ProcessResult result = Run(
        {"ls", "-l", "--versions", "-s", "many=" + simulator.url(), "//many/Products/Bulk/Folders/Parts"});
    EXPECT_EQ(std::to_string(LinesOf(result.out).size()), rows);
    return result.peakKilobytes;
  };
  const long few = peakOf("1000");
  const long many = peakOf("20000");
  EXPECT_GT(few, 0);
  // 19,000 rows, kept, would take more than a megabyte in their texts alone.
  EXPECT_LT(many, few + 1024);
}

TEST_F(VtDirect, Gives11ForAListingThatBreaksOff) {
  Serve({"--page-size", "2", "--fault", "GET *skiptoken*=500"});
  const ProcessResult ls = Run({"ls", foldersPath + std::string("/Frame")});
  EXPECT_THAT(LinesOf(ls.out), testing::SizeIs(2));
  EXPECT_EQ(ls.err,
            "vtdirect: the listing of " + std::string(foldersPath) + "/Frame broke off after 2 entries\n");
  EXPECT_EQ(ls.status, 11);
  Serve({"--page-size", "1", "--fault", "GET *skiptoken*=500"});
  EXPECT_EQ(Run({"ls", foldersPath + std::string("/Frame")}).err,
            "vtdirect: the listing of " + std::string(foldersPath) + "/Frame broke off after 1 entry\n");
}

TEST_F(VtDirect, EndsAListingWhenItsOutputCannotBeWritten) {
  Serve({"--page-size", "1"});
  outFile_ = "/dev/full";
  EXPECT_EQ(Run({"ls", foldersPath + std::string("/Frame")}).status, 8);
  // The second row is not asked for any more.
  EXPECT_THAT(server().Log(), testing::Not(HasSubstr("skiptoken")));
}

TEST_F(VtDirect, PrintsATreeIndentedWithDocumentsFirstAndFoldersByName) {
  Serve();
  const ProcessResult result = Run({"tree", foldersPath});
  EXPECT_EQ(result.status, 0);
  const std::vector<std::string> lines = LinesOf(result.out);
  ASSERT_EQ(lines.size(), 26U);
  EXPECT_THAT(std::vector<std::string>(lines.begin(), lines.begin() + 3),
              UnorderedElementsAre("paint shop scan.bin", "empty note.lxz", "no content.lxz"));
  EXPECT_EQ(lines[3], "Drivetrain/");
  EXPECT_EQ(lines[10], "  Chains/");
  EXPECT_THAT(std::vector<std::string>(lines.begin() + 11, lines.begin() + 13),
              UnorderedElementsAre("    chain guard 28 inch.lxz", "    chain.lxz"));
  EXPECT_EQ(lines[13], "Frame/");
}

TEST_F(VtDirect, PrintsNoMoreLevelsOfATreeThanAskedFor) {
  Serve();
  const ProcessResult result = Run({"tree", "--depth", "2", "//sim/Products"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out,
            "Lastenrad Größe L/\n  Folders/\n  Workspaces/\nTrekking Bike/\n  Folders/\n  Workspaces/\n");
  EXPECT_EQ(Run({"tree", "--depth", "0", "//sim"}).status, 2);
  EXPECT_EQ(Run({"tree", "--depth", "65", "//sim"}).status, 2);
}

TEST_F(VtDirect, PrintsTheSameTreeWhenItListsSeveralFoldersAtOneTime) {
  Serve({"--user", "anna:secret"});
  WriteHome(".netrc", "machine 127.0.0.1 login anna password secret\n", 0600);
  const ProcessResult alone = Run({"tree", "//sim/Products"});
  EXPECT_EQ(alone.status, 0);
  EXPECT_THAT(alone.out, HasSubstr("chain.lxz"));
  for (const char* atOnce : {"1", "4", "16"}) {
    const ProcessResult result = Run({"tree", "--parallel", atOnce, "//sim/Products"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, alone.out);
  }
  EXPECT_EQ(Run({"tree", "--parallel", "0", "//sim"}).status, 2);
  EXPECT_EQ(Run({"tree", "--parallel", "17", "//sim"}).status, 2);
}

TEST_F(VtDirect, PassesOverAFolderThatCannotBeListedAmongSeveralAtOneTime) {
  Serve({"--generation", "gateway", "--fault", "GET *snx_gw*Frame*=500"});
  const ProcessResult alone = Run({"tree", "--full-paths", foldersPath});
  const ProcessResult result = Run({"tree", "--parallel", "4", "--full-paths", foldersPath});
  EXPECT_EQ(result.status, 11);
  EXPECT_EQ(result.out, alone.out);
  EXPECT_EQ(result.err, alone.err);
}

TEST_F(VtDirect, PassesOverAFolderOfATreeThatCannotBeListed) {
  Serve({"--generation", "gateway", "--fault", "GET *snx_gw*Frame*=500"});
  const ProcessResult result = Run({"tree", "--full-paths", foldersPath});
  EXPECT_EQ(result.status, 11);
  EXPECT_THAT(result.out, HasSubstr("/Folders/Frame/\n"));
  EXPECT_THAT(result.out, testing::Not(HasSubstr("fork.lxz")));
  EXPECT_THAT(result.out, HasSubstr("/Folders/Größen & Maße/Größentabelle Rahmen.lxz\n"));
  EXPECT_EQ(result.err, "vtdirect: warning: cannot list " + std::string(foldersPath) +
                            "/Frame/ to its end\nvtdirect: the tree is not complete: some folders could not "
                            "be listed\n");
}

TEST_F(VtDirect, EndsATreeWhenTheServerCannotBeUsedAnyMore) {
  Serve({"--generation", "gateway", "--fault", "GET *snx_gw*path=*=500", "--fault", "GET *OrvetGW*=503"});
  const ProcessResult result = Run({"tree", foldersPath});
  EXPECT_EQ(result.status, 3);
  // One folder has failed, and no other was tried.
  const std::string log = server().Log();
  std::size_t tries = 0;
  for (std::size_t at = 0; (at = log.find("folders?path=", at)) != std::string::npos; ++at) ++tries;
  EXPECT_EQ(tries, 1U);
}

}  // namespace vtdirect_test
