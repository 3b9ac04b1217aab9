#include "public/outcome.h"
#include "tests/wire/public/listed_server.h"

// The length that the server's record of a document tells: asked for, and compared with what came.
namespace {

using namespace VtDirectManager;
using namespace vtdirect_test;

using ContentSize = ListedServerTest;

std::string DocumentWithSections(const std::string& sections) {
  return R"({"id":"D1","epmMaster":{"cadName":"fork.lxz"},"cadContent":{"contentSections":[)" + sections +
         "]}}";
}

std::string SectionWithSize(const std::string& size) {
  return R"({"id":"S1","contentUrl":["https://files.example:8443/store/f1"],"fileSize":)" + size + "}";
}

DownloadOptions Comparing(StatusCallback status) {
  return {std::move(status), {}, true};
}

TEST_F(ContentSize, IsThatOfTheFirstSectionAndTakesOneRequest) {
  transport.Then(200, DocumentWithSections(SectionWithSize("5000000000") + "," + SectionWithSize("7")));
  EXPECT_EQ(GetContentSize(uidOfD1), 5000000000u);
  EXPECT_EQ(transport.lines(), Lines{documentLine});
}

TEST_F(ContentSize, OfAnEmptyContentIsToldAsZero) {
  transport.Then(200, DocumentWithSections(SectionWithSize("0")));
  EXPECT_EQ(GetContentSize(uidOfD1), 0u);
}

TEST_F(ContentSize, IsNothingWhereTheServerDoesNotTellIt) {
  transport.Then(200, DocumentWithSections("")).Then(200, DocumentWithSections(SectionWithSize("-1")));
  transport.Then(200, DocumentWithSections(R"({"id":"S1"})")).Then(404);
  for (int count = 0; count < 4; ++count) EXPECT_FALSE(GetContentSize(uidOfD1).has_value());
  EXPECT_FALSE(GetContentSize(nullptr).has_value());
}

TEST_F(ContentSize, ThatIsComparedAndEqualMakesASuccess) {
  transport.Then(200, DocumentWithSections(SectionWithSize("5"))).Then(200, "bytes");
  std::string uid;
  EXPECT_TRUE(GetFile(uidOfD1, directory.File("copy").c_str(), uid, Comparing(Status())));
  EXPECT_EQ(uid, "korvufenloom-vt://plm.example/vt/?id=D1&file=/fork.lxz");
  EXPECT_EQ(statuses, Lines{"0 " + uid});
}

TEST_F(ContentSize, ThatIsComparedAndDiffersMakesAFailedDownload) {
  transport.Then(200, DocumentWithSections(SectionWithSize("6"))).Then(200, "bytes");
  const std::string copy = directory.File("copy");
  std::string uid = "before";
  EXPECT_FALSE(GetFile(uidOfD1, copy.c_str(), uid, Comparing(Status())));
  EXPECT_EQ(uid, "before");
  EXPECT_EQ(statuses, Lines{"10 (null)"});
  EXPECT_EQ(ReadFile(copy), "bytes");
  const auto lines = trace.lines();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1],
            (TraceLine{3, "VtDirect", "Downloaded 5 bytes of a document of 6 bytes to " + copy + "\n"}));
  EXPECT_EQ(lines[2], (TraceLine{3, "VtDirect", std::string("Failed to download ") + uidOfD1 + "\n"}));
}

TEST_F(ContentSize, ThatIsComparedEndsALongerContentAtOnce) {
  transport.Then(200, DocumentWithSections(SectionWithSize("6"))).Then(200, "bytes and more of them");
  const std::string copy = directory.File("copy");
  std::string uid = "before";
  const Outcome outcome;
  EXPECT_FALSE(GetFile(uidOfD1, copy.c_str(), uid, Comparing(Status())));
  EXPECT_EQ(uid, "before");
  EXPECT_EQ(statuses, Lines{"10 (null)"});
  EXPECT_EQ(ReadFile(copy), "bytes ") << "no more than the record says";
  const auto lines = trace.lines();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1], (TraceLine{3, "VtDirect",
                                 "Downloaded more than 6 bytes of a document of 6 bytes to " + copy + "\n"}));
  ASSERT_TRUE(outcome.Cause().has_value());
  EXPECT_EQ(outcome.Cause()->kind, FailureKind::AnswerBroken);
  EXPECT_EQ(outcome.Cause()->platformDetail, 26);
  EXPECT_EQ(outcome.Cause()->platformText,
            "The server's record says 6 bytes, and its content has more than 6");
}

TEST_F(ContentSize, ThatIsComparedTellsTheReasonOfAShorterContent) {
  transport.Then(200, DocumentWithSections(SectionWithSize("6"))).Then(200, "bytes");
  std::string uid;
  const Outcome outcome;
  EXPECT_FALSE(GetFile(uidOfD1, directory.File("copy").c_str(), uid, Comparing(Status())));
  ASSERT_TRUE(outcome.Cause().has_value());
  EXPECT_EQ(outcome.Cause()->platformText, "The server's record says 6 bytes, and its content has 5");
}

TEST_F(ContentSize, ThatIsComparedLeavesARefusalItsOwnWords) {
  transport.Then(200, DocumentWithSections(SectionWithSize("6"))).Then(404, "no such content here");
  const std::string copy = directory.File("copy");
  std::string uid;
  const Outcome outcome;
  EXPECT_FALSE(GetFile(uidOfD1, copy.c_str(), uid, Comparing({})));
  EXPECT_EQ(trace.lines()[1].text, "Failed to download file D1 with error: no such content here");
  ASSERT_TRUE(outcome.Cause().has_value());
  EXPECT_EQ(outcome.Cause()->platformDetail, 0);
}

TEST_F(ContentSize, IsNotComparedUnlessAskedForNorWhenNotTold) {
  transport.Then(200, DocumentWithSections(SectionWithSize("6"))).Then(200, "bytes");
  transport.Then(200, DocumentWithSections(SectionWithSize("null"))).Then(200, "bytes");
  const std::string copy = directory.File("copy");
  std::string uid;
  EXPECT_TRUE(GetFile(uidOfD1, copy.c_str(), uid, {}, {}));
  EXPECT_TRUE(GetFile(uidOfD1, copy.c_str(), uid, Comparing({})));
}

TEST_F(ContentSize, IsComparedByATaskToo) {
  ThenSchema();
  transport.Then(200, DocumentWithSections(SectionWithSize("4"))).Then(200, "bytes");
  EXPECT_TRUE(GetFileAsync(uidOfD1, directory.File("copy").c_str(), Comparing(Status())));
  EXPECT_EQ(statuses, Lines{"10 (null)"});
}

}  // namespace
