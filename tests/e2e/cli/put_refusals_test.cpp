#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/e2e/cli/put_fixture.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {
namespace {

const std::string frameFolder = "//sim/Products/Trekking Bike/Folders/Frame/";
const std::string drivetrainFolder = "//sim/Products/Trekking Bike/Folders/Drivetrain/";

}  // namespace

/// What is refused before anything is sent.
class PutRefusal : public PutTest {
 protected:
  void SetUp() override {
    Serve();
    WriteFile(Here("f"), "content");
  }

  /// Expects that nothing was sent, and gives what was said.
  std::string Refuse(const std::vector<std::string>& arguments, int status) {
    std::vector<std::string> words = {"put"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const ProcessResult result = Run(words);
    EXPECT_EQ(result.status, status) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(server().Log(), Not(HasSubstr("\"POST\"")));
    return result.err;
  }
};

TEST_F(PutRefusal, OfAFileThatCannotBeSentComesWithoutARequest) {
  ASSERT_EQ(mkdir(Here("d").c_str(), 0700), 0);
  ASSERT_EQ(mkfifo(Here("pipe").c_str(), 0600), 0);
  EXPECT_EQ(Refuse({"none", frameFolder}, 8),
            "vtdirect: cannot read none: No such file or directory; nothing was sent\n");
  EXPECT_EQ(Refuse({"d", frameFolder}, 8), "vtdirect: cannot read d: it is a directory; nothing was sent\n");
  EXPECT_EQ(Refuse({"pipe", frameFolder}, 8),
            "vtdirect: cannot read pipe: it is no regular file; nothing was sent\n");
  EXPECT_EQ(Refuse({"f", frameFolder, "--viewable", "none"}, 8),
            "vtdirect: cannot read none: No such file or directory; nothing was sent\n");
  EXPECT_EQ(Refuse({"f", frameFolder, "--metadata", "d"}, 8),
            "vtdirect: cannot read d: it is a directory; nothing was sent\n");
  EXPECT_EQ(server().Log(), "");
}

TEST_F(PutRefusal, OfAFileWithoutPermissionComesWithoutARequest) {
  ASSERT_EQ(chmod(Here("f").c_str(), 0), 0);
  if (access(Here("f").c_str(), R_OK) == 0) GTEST_SKIP() << "this user reads every file";
  EXPECT_EQ(Refuse({"f", frameFolder}, 8), "vtdirect: cannot read f: Permission denied; nothing was sent\n");
  EXPECT_EQ(server().Log(), "");
}

TEST_F(PutRefusal, OfACallThatCannotBeMeantComesWithoutARequest) {
  EXPECT_THAT(Refuse({"f"}, 2), HasSubstr("ADDRESS"));
  EXPECT_THAT(Refuse({"f", "nonsense"}, 2), HasSubstr("neither a path"));
  EXPECT_THAT(Refuse({"f", "//other/x/"}, 9), HasSubstr("no server \"other\" is listed"));
  EXPECT_THAT(Refuse({"f", frameFolder, "--kind", "drawing"}, 2),
              HasSubstr("--kind takes fenlet, general or ugc"));
  EXPECT_THAT(Refuse({"f", frameFolder, "--kind", "ugc", "--viewable", "f"}, 2),
              HasSubstr("--viewable is for Fenlet documents alone, not for ugc ones"));
  EXPECT_THAT(Refuse({"f", frameFolder, "--kind", "general", "--language", "de"}, 2),
              HasSubstr("--language is for Fenlet documents alone"));
  EXPECT_THAT(Refuse({"f", frameFolder, "--language", ""}, 2), HasSubstr("--language takes"));
  EXPECT_THAT(Refuse({"f", frameFolder, "--viewable", ""}, 2), HasSubstr("--viewable takes a file name"));
  EXPECT_THAT(Refuse({"f", frameFolder, "--link", "nothing"}, 2), HasSubstr("\"nothing\" is no link"));
  EXPECT_THAT(Refuse({"f", "//sim/Products/Trekking Bike/x"}, 2), HasSubstr("no document can be at"));
  EXPECT_THAT(Refuse({"f", "//sim/Products/Trekking Bike/Workspaces/x"}, 2),
              HasSubstr("no document can be at"));
  EXPECT_EQ(server().Log(), "");
}

TEST_F(PutRefusal, OfANameThatIsNoTextComesWithoutARequest) {
  WriteFile(Here("bad\xff.lxz"), "content");
  EXPECT_EQ(
      Refuse({"bad\xff.lxz", frameFolder}, 2),
      "vtdirect: no document can be called bad\\xFF.lxz: its name is no UTF-8; name the document after the "
      "folder's path\n");
  EXPECT_EQ(server().Log(), "");
}

TEST_F(PutRefusal, OfALinkThatLeadsNowhereComesBeforeTheFileIsSent) {
  EXPECT_THAT(Refuse({"f", frameFolder, "--link", "a=" + frameFolder + "none.lxz"}, 6),
              HasSubstr("the link a: not found: " + frameFolder + "none.lxz"));
  EXPECT_THAT(Refuse({"f", frameFolder, "--link", "a=" + server().Uid("D9999")}, 6),
              HasSubstr("the link a: not found"));
  // What is told of the link is not what was traced of the new document before.
  EXPECT_THAT(Refuse({"f", frameFolder + "new.lxz", "--link", "a=" + frameFolder + "none.lxz"}, 6),
              Not(HasSubstr("CADName new.lxz")));
}

TEST_F(PutRefusal, OfALinkToAnotherServerComesBeforeTheFileIsSent) {
  const TemporaryDirectory directory;
  const Simulator other(directory.path(), {});
  EXPECT_THAT(
      Refuse({"f", frameFolder, "--server", "other=" + other.url(), "--link", "a=//other/?id=D1001"}, 2),
      HasSubstr("on another server than the document; nothing was sent"));
}

TEST_F(PutRefusal, OfADocumentThatSomebodyElseHasCheckedOutNamesHim) {
  EXPECT_THAT(
      Refuse({"f", drivetrainFolder + "brake.lxz"}, 1),
      HasSubstr(server().Uid("D1015") + "&file=/brake.lxz is checked out by bruno; nothing was sent"));
}

TEST_F(PutRefusal, OfADocumentThatOneHasCheckedOutByOtherMeansTellsOfTheWorkingCopy) {
  EXPECT_THAT(Refuse({"f", drivetrainFolder + "crank.lxz"}, 1),
              HasSubstr("no working copy of it is kept here"));
}

TEST_F(PutRefusal, OfAnOlderIterationTellsOfTheNewest) {
  EXPECT_THAT(Refuse({"f", server().Uid("D1102")}, 1), HasSubstr("is not the newest iteration"));
  EXPECT_THAT(Refuse({"f", frameFolder + "frame.lxz|A.1"}, 1), HasSubstr("is not the newest iteration"));
  EXPECT_THAT(Refuse({"f", frameFolder + "frame.lxz|Z.1"}, 6), HasSubstr("leave the version away"));
}

// Every way of writing the same place is that place.
TEST_F(PutRefusal, OfAnotherPlaceIsNoneOfTheSameOne) {
  Serve({"--upload-port", std::to_string(UnusedPort())});
  WriteFile(Here("top.lxz"), "content");
  const std::string folders = "//sim/Products/Trekking Bike/Folders/";
  const std::vector<std::string> same{folders,
                                      folders + "top.lxz",
                                      "korvufenloom-vfs:" + folders,
                                      "//same/Products/Trekking Bike/Folders/top.lxz",
                                      folders + "Frame//fork.lxz",
                                      "//sim/Products/Trekking Bike/Workspaces/Anna's bench/crank.lxz"};
  for (const std::string& address : same) {
    const ProcessResult result = Run({"--server", "same=" + server().url(), "put", "top.lxz", address});
    EXPECT_EQ(result.status, 0) << address << ": " << result.err;
  }
}

TEST_F(PutRefusal, OfAFolderWithoutItsSlashTellsOfTheSlash) {
  EXPECT_THAT(Refuse({"f", "//sim/Products/Trekking Bike/Folders/Frame"}, 1), HasSubstr("end it with \"/\""));
}

TEST_F(PutRefusal, OfWhatIsNotThereTellsSo) {
  EXPECT_THAT(Refuse({"f", server().Uid("D9999")}, 6), HasSubstr("not found"));
  EXPECT_THAT(Refuse({"f", "//sim/?id=D9999"}, 6), HasSubstr("not found"));
  EXPECT_THAT(Refuse({"f", "//sim/Products/None/Folders/"}, 6), HasSubstr("there is no folder"));
  EXPECT_THAT(Refuse({"f", "//sim/Products/Trekking Bike/Workspaces/None/"}, 6),
              HasSubstr("there is no folder"));
  const std::string dead = "http://127.0.0.1:" + std::to_string(UnusedPort()) + "/";
  EXPECT_THAT(Refuse({"f", "//dead/Products/X/Folders/", "--server", "dead=" + dead}, 3),
              AllOf(HasSubstr("cannot connect to " + dead + ": the machine 127.0.0.1 refuses connections"),
                    HasSubstr("; nothing was sent")));
}

}  // namespace vtdirect_test
