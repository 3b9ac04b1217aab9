#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/e2e/cli/vtdirect_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace vtdirect_test {

TEST_F(VtDirect, DownloadsADocumentByteForByte) {
  Serve();
  const ProcessResult result = Run({"get", server().Uid("D1001"), "-o", "copy"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "");
  const std::string content = ReadFile(Here("copy"));
  EXPECT_THAT(content, StartsWith(forkHead));
  EXPECT_EQ(content, server().Get(forkContent));
  EXPECT_EQ(result.err, "vtdirect: saved copy, " + std::to_string(content.size()) + " bytes\n");
  EXPECT_THAT(HereNames(), ElementsAre("copy"));
}

TEST_F(VtDirect, DownloadsADocumentByItsPlaceAndItsVersion) {
  Serve();
  const std::string path = "//sim/Products/Trekking Bike/Folders/Frame/fork.lxz";
  EXPECT_THAT(Run({"get", path, "-o", "-"}).out, StartsWith(forkHead));
  EXPECT_THAT(Run({"get", path + "|A.1", "-o", "-"}).out,
              StartsWith("FENLET DRAWING\nname fork.lxz\nversion A.1\n"));
  EXPECT_EQ(Run({"get", path + "|C.1", "-o", "-"}).status, 6);
  EXPECT_EQ(Run({"get", "korvufenloom-vfs:" + path + "|A.1"}).status, 0);
  EXPECT_THAT(HereNames(), ElementsAre("fork.lxz"));
}

TEST_F(VtDirect, DownloadsALargeContentByteForByte) {
  Serve();
  EXPECT_EQ(Run({"get", server().Uid("D1009"), "-o", "copy"}).status, 0);
  const std::string content = ReadFile(Here("copy"));
  EXPECT_EQ(content.size(), 1'000'000U);
  EXPECT_TRUE(content == server().Get("/servlet/rest/v1/content/streams/10090/scan"));
}

TEST_F(VtDirect, DownloadsAnEmptyContent) {
  Serve();
  EXPECT_EQ(Run({"get", server().Uid("D1010"), "-o", "copy"}).status, 0);
  EXPECT_EQ(ReadFile(Here("copy")), "");
}

TEST_F(VtDirect, NamesTheFileAfterTheObjectEscaped) {
  Serve();
  EXPECT_EQ(Run({"get", server().Uid("D1007"), "--quiet"}).err, "");
  EXPECT_EQ(Run({"get", "//sim/?id=D1006"}).status, 0);
  EXPECT_THAT(HereNames(), ElementsAre("bearing 1%2f2%22.lxz", "odd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz"));
}

TEST_F(VtDirect, NamesAFileThatNeitherHidesNorLeavesTheDirectory) {
  Serve();
  EXPECT_EQ(Run({"get", server().Uid("D1001") + "&file=/..%2F..%2Fescaped"}).status, 0);
  EXPECT_EQ(Run({"get", server().Uid("D1001") + "&file=/.bashrc"}).status, 0);
  EXPECT_EQ(Run({"get", server().Uid("D1001") + "&file=/.."}).status, 0);
  EXPECT_EQ(Run({"get", server().Uid("D1001") + "&file=/a%0Ab"}).status, 0);
  EXPECT_THAT(HereNames(), ElementsAre("%2e.", "%2e.%2f..%2fescaped", "%2ebashrc", "a%0ab"));
}

TEST_F(VtDirect, PutsTheFileIntoADirectory) {
  Serve();
  ASSERT_EQ(mkdir(Here("d").c_str(), 0700), 0);
  EXPECT_EQ(Run({"get", server().Uid("D1001"), "-o", "d"}).status, 0);
  EXPECT_EQ(Run({"get", server().Uid("D1003"), "-o", "d/"}).status, 0);
  EXPECT_THAT(ReadFile(Here("d/fork.lxz")), StartsWith(forkHead));
  EXPECT_THAT(ReadFile(Here("d/gear.lxz")), StartsWith("FENLET DRAWING\nname gear.lxz\nversion B.2\n"));
  EXPECT_EQ(Run({"get", server().Uid("D1001"), "-o", "none/"}).status, 8);
}

TEST_F(VtDirect, WritesTheContentAloneToStandardOutput) {
  Serve();
  const ProcessResult result = Run({"get", server().Uid("D1001"), "-o", "-"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, server().Get(forkContent));
  EXPECT_EQ(result.err, "");
  EXPECT_THAT(HereNames(), IsEmpty());
}

TEST_F(VtDirect, WritesIntoADeviceAndLeavesItInPlace) {
  Serve();
  EXPECT_EQ(Run({"get", server().Uid("D1001"), "-o", "/dev/null"}).status, 0);
  struct stat facts = {};
  ASSERT_EQ(stat("/dev/null", &facts), 0);
  EXPECT_TRUE(S_ISCHR(facts.st_mode));
}

TEST_F(VtDirect, DescribesADownloadAsJson) {
  Serve();
  const ProcessResult result = Run({"get", server().Uid("D1010"), "-o", "copy", "--json"});
  EXPECT_EQ(result.out, "{\"schema\":2,\"command\":\"get\",\"address\":\"" + server().Uid("D1010") +
                            "\",\"uid\":\"" + server().Uid("D1010") +
                            "&file=/empty%20note.lxz\",\"file\":\"copy\",\"bytes\":0}\n");
  EXPECT_EQ(result.err, "");
}

TEST_F(VtDirect, ReplacesWhatWasThereWhenTheDownloadIsComplete) {
  Serve();
  WriteFile(Here("copy"), "old");
  ASSERT_EQ(symlink("copy", Here("link").c_str()), 0);
  EXPECT_EQ(Run({"get", "--force", server().Uid("D1001"), "-o", "link"}).status, 0);
  EXPECT_THAT(ReadFile(Here("copy")), StartsWith(forkHead));
  EXPECT_THAT(HereNames(), ElementsAre("copy", "link"));
}

TEST_F(VtDirect, LeavesAnExistingFileWhenAskedNotToReplaceIt) {
  Serve();
  WriteFile(Here("copy"), "old");
  EXPECT_EQ(Run({"get", server().Uid("D1001"), "-n", "-o", "copy"}).status, 8);
  EXPECT_EQ(ReadFile(Here("copy")), "old");
  EXPECT_EQ(Run({"get", server().Uid("D1001"), "-n", "-o", "other"}).status, 0);
}

class BrokenDownload : public VtDirect, public testing::WithParamInterface<const char*> {};

TEST_P(BrokenDownload, LeavesWhatWasThereAndNothingElse) {
  Serve({"--fault", GetParam()});
  WriteFile(Here("copy"), "old");
  const ProcessResult result =
      Run({"--stall-timeout", "1", "get", "-f", server().Uid("D1001"), "-o", "copy"});
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(ReadFile(Here("copy")), "old");
  EXPECT_THAT(HereNames(), ElementsAre("copy"));
  EXPECT_EQ(Run({"--stall-timeout", "1", "get", server().Uid("D1001"), "-o", "-"}).out, "");
}

INSTANTIATE_TEST_SUITE_P(Faults, BrokenDownload,
                         testing::Values("GET *streams*=cut:100", "GET *streams*=chunked-cut:100",
                                         "GET *streams*=stall:100", "GET *streams*=stall",
                                         "GET *streams*=drop", "GET *streams*=404", "GET *streams*=206"));

TEST_F(VtDirect, TellsHowFarABrokenDownloadCame) {
  Serve({"--fault", "GET *streams*=cut:100*1"});
  const std::string err = Run({"get", server().Uid("D1001")}).err;
  const std::string size = std::to_string(server().Get(forkContent).size());
  EXPECT_EQ(err,
            "vtdirect: the download of " + server().Uid("D1001") + " broke off after 100 bytes of " + size +
                ": the connection ended before the end of the answer; try again; if it stays so, ask who "
                "runs the server\n");
}

}  // namespace vtdirect_test
