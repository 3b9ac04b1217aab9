#include <gmock/gmock.h>

#include <algorithm>

#include "tests/e2e/cli/vtdirect_fixture.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace vtdirect_test {
namespace {

constexpr const char* forkAddress = "//sim/Products/Trekking Bike/Folders/Frame/fork.lxz";
constexpr const char* fullFork = "korvufenloom-vfs://sim/Products/Trekking Bike/Folders/Frame/fork.lxz";

std::ptrdiff_t RequestsIn(const std::string& log) {
  return std::count(log.begin(), log.end(), '\n');
}

}  // namespace

class QuestionsToEachGeneration : public VtDirect, public testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override { Serve({"--generation", GetParam()}); }
};

INSTANTIATE_TEST_SUITE_P(Generations, QuestionsToEachGeneration,
                         testing::Values("gateway", "schema1", "schema4", "schema5"));

TEST_P(QuestionsToEachGeneration, TellWhetherObjectsAreUpToDate) {
  const std::string newest = server().Uid("D1001");
  const std::string older = server().Uid("D1101");
  const std::string brunos = server().Uid("D1015");
  const ProcessResult result = Run({"status", newest, older, forkAddress, brunos});
  EXPECT_EQ(result.out, "up-to-date\tB.1\tB.1\tnone\t" + newest + "\noutdated\tA.1\tB.1\tnot-possible\t" +
                            older + "\nup-to-date\tB.1\tB.1\tnone\t" + forkAddress +
                            "\nup-to-date\tA.1\tA.1\tby-other (bruno)\t" + brunos + "\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 10);
  EXPECT_EQ(Run({"status", newest}).status, 0);
}

TEST_P(QuestionsToEachGeneration, GiveThePathsOfAnObject) {
  for (const std::string& address :
       {server().Uid("D1001"), std::string("//sim/?id=D1001"), std::string(forkAddress)}) {
    EXPECT_EQ(Run({"path", address}).out, fullFork + std::string("\n"));
    EXPECT_EQ(Run({"path", "--latest", address}).out, fullFork + std::string("\n"));
    EXPECT_EQ(Run({"path", "--versioned", address}).out, fullFork + std::string("\n"));
    EXPECT_EQ(Run({"path", "--folder", address}).out,
              "korvufenloom-vfs://sim/Products/Trekking Bike/Folders/Frame/\n");
  }
  EXPECT_EQ(Run({"path", "--versioned", server().Uid("D1201")}).out, fullFork + std::string("|A.2\n"));
}

TEST_P(QuestionsToEachGeneration, FindTheObjectOfAPathAndOfAPathWithAVersion) {
  EXPECT_EQ(Run({"uid", forkAddress}).out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(Run({"uid", forkAddress + std::string("|A.2")}).out, server().Uid("D1201") + "&file=/fork.lxz\n");
}

TEST_P(QuestionsToEachGeneration, GiveTheUrlOfAContent) {
  const std::string url = "http://" + server().authority() + forkContent;
  EXPECT_EQ(Run({"url", forkAddress}).out, url + "\n");
  EXPECT_THAT(Run({"url", "--json", server().Uid("D1001")}).out,
              testing::StartsWith("{\"schema\":2,\"command\":\"url\",\"url\":\"" + url +
                                  "\",\"cache_key\":\"_lxvdccache:"));
  const ProcessResult empty = Run({"url", server().Uid("D1011")});
  EXPECT_EQ(empty.status, 7);
  EXPECT_EQ(empty.out, "");
}

TEST_P(QuestionsToEachGeneration, DescribeADocumentWithItsVersionsAndItsPlace) {
  const ProcessResult result = Run({"info", server().Uid("D1101")});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_THAT(result.out, HasSubstr("\nkind: document\nuid: " + server().Uid("D1101") +
                                    "&file=/fork.lxz\ntitle: Fork\nnumber: 0000100001\nname: fork.lxz\n"
                                    "version: A.1\nlatest_version: B.1\nlatest_uid: " +
                                    server().Uid("D1001") +
                                    "&file=/fork.lxz\ncheckout: not-possible\n"
                                    "path_latest: " +
                                    fullFork + "\npath_versioned: " + fullFork +
                                    "|A.1\nfolder: korvufenloom-vfs://sim/Products/Trekking "
                                    "Bike/Folders/Frame/\nwritable: yes\n"));
  EXPECT_THAT(result.out, HasSubstr("\nweb_page: "));
  EXPECT_THAT(result.out, HasSubstr("\ncheckout_supported: yes\n"));
}

TEST_P(QuestionsToEachGeneration, DescribeAFolder) {
  const ProcessResult result = Run({"info", "//sim/Products/Trekking Bike/Folders/Frame"});
  EXPECT_EQ(result.status, 0);
  const bool details = GetParam() == std::string("schema4") || GetParam() == std::string("schema5");
  const bool versions = GetParam() == std::string("schema5");
  EXPECT_THAT(result.out,
              HasSubstr("\nexists: yes\nkind: folder\npath: //sim/Products/Trekking Bike/Folders/Frame/\n"
                        "writable: yes\nshows_details: " +
                        std::string(details ? "yes" : "no") + "\nshows_versions: " +
                        std::string(versions ? "yes" : "no") + "\ncheckout_supported: yes\n"));
}

TEST_P(QuestionsToEachGeneration, ListVersionsAsFarAsTheServerShowsThem) {
  const std::string b1 = server().Uid("D1001");
  const std::string a2 = server().Uid("D1201");
  const std::string a1 = server().Uid("D1101");
  for (const std::string& address : {a2, forkAddress + std::string("|A.2"), std::string("//sim/?id=D1201")}) {
    const ProcessResult result = Run({"versions", address});
    EXPECT_EQ(result.status, 0);
    if (GetParam() == std::string("schema5")) {
      EXPECT_EQ(result.out, "B.1\t" + b1 + "\tlatest\nA.2\t" + a2 + "\nA.1\t" + a1 + "\n");
      EXPECT_EQ(result.err, "");
    } else {
      EXPECT_EQ(result.out, "A.2\t" + a2 + "&file=/fork.lxz\nB.1\t" + b1 + "&file=/fork.lxz\tlatest\n");
      EXPECT_THAT(result.err, HasSubstr("lists no versions here"));
    }
  }
}

// Of the folder's three documents the fork alone is of revision B, so it comes first.
TEST_F(VtDirect, TellsAFolderFromADocumentThatIsNotThere) {
  Serve();
  const std::string frame = "//sim/Products/Trekking Bike/Folders/Frame";
  for (const std::string& folder :
       {frame, frame + "/", std::string("//sim/Products/"), std::string("//sim/")}) {
    for (const char* command : {"url", "versions", "uid", "browse-url", "open"}) {
      const ProcessResult result = Run({command, folder});
      EXPECT_EQ(result.status, 1) << command << " " << result.out;
      EXPECT_THAT(result.err, HasSubstr(folder + " is a folder, and this command takes a document"))
          << command;
    }
  }
  // What closes with "/" has no name for a file, which is seen without a request.
  const ProcessResult unnamed = Run({"get", frame + "/"});
  EXPECT_EQ(unnamed.status, 2);
  EXPECT_THAT(unnamed.err, HasSubstr("\"vtdirect get -r '" + frame + "/'\" fetches a folder"));
  for (const std::string& folder : {frame, frame + "/"}) {
    for (const std::vector<std::string>& rest : {std::vector<std::string>{}, {"-o", "x"}}) {
      if (rest.empty() && folder.ends_with('/')) continue;
      std::vector<std::string> words{"get", folder};
      words.insert(words.end(), rest.begin(), rest.end());
      const ProcessResult result = Run(words);
      EXPECT_EQ(result.status, 1) << folder;
      EXPECT_THAT(result.err, HasSubstr(folder + " is a folder; nothing was fetched; \"vtdirect get -r '" +
                                        folder + "'\" fetches it"));
    }
  }
  EXPECT_EQ(Run({"uid", frame + "/none.lxz"}).status, 6);
  EXPECT_EQ(Run({"get", "//sim/Products/Trekking Bike/Folders/None/", "-o", "x"}).status, 6);
}

TEST_F(VtDirect, Gives11ForVersionsWhoseListingBreaksOffAndPrintsWhatIsKnown) {
  Serve({"--page-size", "1", "--fault", "GET *FolderContents*skiptoken*=500"});
  const std::string frame = "//sim/Products/Trekking Bike/Folders/Frame/frame.lxz|A.2";
  const std::string a2 = server().Uid("D1202") + "&file=/frame.lxz";
  const std::string a3 = server().Uid("D1002") + "&file=/frame.lxz";
  const ProcessResult result = Run({"versions", frame});
  EXPECT_EQ(result.out, "A.2\t" + a2 + "\nA.3\t" + a3 + "\tlatest\n");
  EXPECT_EQ(result.err,
            "vtdirect: the listing of korvufenloom-vfs://sim/Products/Trekking Bike/Folders/Frame/ broke off "
            "after 1 entry\n");
  EXPECT_EQ(result.status, 11);

  const ProcessResult json = Run({"versions", "--json", frame});
  EXPECT_THAT(json.out, HasSubstr("\"latest\":true,\"complete\":false}\n"));
  EXPECT_THAT(json.out, testing::Not(HasSubstr("\"complete\":true")));
  EXPECT_EQ(json.status, 11);

  // What was looked for came before the listing broke.
  const ProcessResult fork = Run({"versions", forkAddress});
  EXPECT_EQ(std::count(fork.out.begin(), fork.out.end(), '\n'), 3);
  EXPECT_EQ(fork.err, "");
  EXPECT_EQ(fork.status, 0);
}

TEST_F(VtDirect, Gives11ForVersionsWhoseListingFailsAtOnce) {
  Serve({"--fault", "GET *FolderContents*expand=Versions*=500"});
  const ProcessResult result = Run({"versions", server().Uid("D1001")});
  EXPECT_EQ(result.out, "B.1\t" + server().Uid("D1001") + "&file=/fork.lxz\tlatest\n");
  EXPECT_THAT(result.err,
              testing::StartsWith("vtdirect: the listing of korvufenloom-vfs://sim/Products/Trekking "
                                  "Bike/Folders/Frame/ failed (list the folder: refused, HTTP 500"));
  EXPECT_EQ(result.status, 11);
}

TEST_F(VtDirect, SaysThatTheVersionsOfACadDocumentAreListedWithItsSwitch) {
  Serve();
  const std::string handlebar = server().Uid("D1012");
  const ProcessResult without = Run({"versions", handlebar});
  EXPECT_EQ(without.out, "A.1\t" + handlebar + "&file=/handlebar.asm\tlatest\n");
  EXPECT_EQ(without.err,
            "vtdirect: the listing of the folder does not show this object: shown are the version of the "
            "object and the newest; CAD documents are listed with --cad\n");
  EXPECT_EQ(without.status, 0);

  const ProcessResult with = Run({"versions", "--cad", handlebar});
  EXPECT_EQ(with.out, "A.1\t" + handlebar + "\tlatest\n");
  EXPECT_EQ(with.err, "");
  EXPECT_EQ(with.status, 0);
}

TEST_P(QuestionsToEachGeneration, Give6ForAnObjectThatIsNotThere) {
  for (const char* command : {"status", "versions", "path", "url", "info", "uid"}) {
    for (const std::string& address :
         {server().Uid("D9999"), std::string("//sim/Products/Trekking Bike/Folders/Frame/none.lxz")}) {
      // The newest iteration's path is the path itself, and nobody is asked.
      if (command == std::string("path") && address.starts_with("//")) continue;
      const ProcessResult result = Run({command, address});
      EXPECT_EQ(result.status, 6) << command << " " << address;
      EXPECT_THAT(result.err, HasSubstr("not found: " + address));
    }
  }
}

TEST_F(VtDirect, GivesThePathOfAWorkingCopyInItsWorkspace) {
  Serve();
  const ProcessResult uid = Run({"uid", "//sim/Products/Trekking Bike/Workspaces/Anna's bench/crank.lxz"});
  EXPECT_EQ(uid.status, 0);
  const std::string address = uid.out.substr(0, uid.out.find('\n'));
  EXPECT_EQ(Run({"path", address}).out,
            "korvufenloom-vfs://sim/Products/Trekking Bike/Workspaces/Anna's bench/crank.lxz\n");
  EXPECT_THAT(Run({"status", address}).out, HasSubstr("\tA.1\tworkspace (anna)\t"));
}

TEST_F(VtDirect, AsksForOneFormOfAPathAtATime) {
  Serve();
  EXPECT_EQ(Run({"path", "--latest", "--folder", forkAddress}).status, 2);
  EXPECT_EQ(server().Log(), "");
}

TEST_F(VtDirect, TellsTheWorstOfSeveralStatuses) {
  Serve();
  const std::string dead = "http://127.0.0.1:" + std::to_string(UnusedPort()) + "/";
  const ProcessResult missing = Run({"status", server().Uid("D1101"), server().Uid("D9999"), forkAddress});
  EXPECT_EQ(missing.status, 6);
  EXPECT_THAT(missing.out, HasSubstr("\nfailed\t\t\t\t" + server().Uid("D9999") + "\nup-to-date\t"));
  const ProcessResult unlisted = Run({"status", forkAddress, "//other/x"});
  EXPECT_EQ(unlisted.status, 9);
  EXPECT_THAT(unlisted.out, HasSubstr("up-to-date\tB.1\tB.1\tnone\t"));
  const ProcessResult unreachable = Run({"status", "-s", "dead=" + dead, "//dead/Products/x", forkAddress});
  EXPECT_EQ(unreachable.status, 3);
  EXPECT_THAT(unreachable.out, HasSubstr("failed\t\t\t\t//dead/Products/x\nup-to-date\t"));
  EXPECT_THAT(unreachable.err, HasSubstr("cannot connect to " + dead));
  EXPECT_EQ(Run({"status", forkAddress, "nonsense"}).status, 2);
}

TEST_F(VtDirect, AsksAServerThatCannotBeUsedOnce) {
  Serve({"--fault", "* *=503"});
  EXPECT_EQ(Run({"status", server().Uid("D1001")}).status, 3);
  const std::ptrdiff_t ofOne = RequestsIn(server().Log());
  EXPECT_GT(ofOne, 0);
  const ProcessResult several =
      Run({"status", server().Uid("D1001"), server().Uid("D1002"), forkAddress, "//sim/?id=D1003"});
  EXPECT_EQ(several.status, 3);
  EXPECT_EQ(std::count(several.out.begin(), several.out.end(), '\n'), 4);
  EXPECT_EQ(RequestsIn(server().Log()), 2 * ofOne);
}

TEST_F(VtDirect, AsksAServerThatCannotBeUsedOnceForPathsToo) {
  Serve({"--fault", "* *=503"});
  EXPECT_EQ(Run({"status", forkAddress}).status, 3);
  const std::ptrdiff_t ofOne = RequestsIn(server().Log());
  EXPECT_GT(ofOne, 0);
  EXPECT_EQ(Run({"status", forkAddress, forkAddress, forkAddress}).status, 3);
  EXPECT_EQ(RequestsIn(server().Log()), 2 * ofOne);
}

TEST_F(VtDirect, LetsTheRefusalOfOneServerNotCountForAnother) {
  Serve();
  const TemporaryDirectory directory;
  const Simulator closed(directory.path(), {"--user", "anna:secret"});
  const ProcessResult result = Run(
      {"status", "--no-prompt", "-s", "closed=" + closed.url(), closed.Uid("D1001"), server().Uid("D9999")});
  EXPECT_EQ(result.status, 4);
  EXPECT_THAT(result.err, HasSubstr("demands credentials"));
  EXPECT_THAT(result.err, HasSubstr("not found: " + server().Uid("D9999")));
}

}  // namespace vtdirect_test
