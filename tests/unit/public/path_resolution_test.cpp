#include "public/path_resolution.h"

#include "tests/unit/public/fake_server.h"

namespace {

using namespace VtDirectManager;
using namespace lxservices::cms_interface;
using namespace vtdirect_test;

class Resolution : public FakeServerTest {
 protected:
  // Records a call as "status text".
  StatusCallback Status() {
    return [this](StatusCode code, const char* text) {
      statuses.push_back(std::to_string(code) + " " + (text != nullptr ? text : "(null)"));
    };
  }

  Lines statuses;
};

using TargetResolution = Resolution;
using FileResolution = Resolution;
using TargetIds = Resolution;

TEST_F(TargetResolution, TakesAVfsPathApartAndAsksNothing) {
  const PathTarget target = ResolveTarget("korvufenloom-vfs://plm/Products/Bike/a|B.3", Status(), 0);
  ASSERT_NE(target.server, nullptr);
  EXPECT_EQ(target.nickname, "plm");
  EXPECT_EQ(target.relativePath, "Products/Bike/a|B.3");
  EXPECT_EQ(target.base, "");
  EXPECT_EQ(target.id, "");
  EXPECT_TRUE(answers.calls.empty());
  EXPECT_TRUE(statuses.empty());
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(TargetResolution, FindsNoServerOfAnUnreadableUrlForATextThatIsNoAddress) {
  UpdateServerList({{"bad", "ftp://plm.example/"}});
  for (const char* text : {"hello", "", "http://plm.example/", "//"}) {
    trace.Clear();
    EXPECT_EQ(ResolveTarget(text, {}, 0).server, nullptr) << text;
    ASSERT_EQ(trace.lines().size(), 1u) << text;
    EXPECT_EQ(trace.lines().front().text, "Failed to connect to server path " + std::string(text) + "\n");
  }
}

TEST_F(TargetResolution, TakesTheBareForm) {
  const PathTarget target = ResolveTarget("//plm/x", {}, 0);
  ASSERT_NE(target.server, nullptr);
  EXPECT_EQ(target.relativePath, "x");
}

TEST_F(TargetResolution, TakesAUidApartAndAsksNothing) {
  const PathTarget target = ResolveTarget("korvufenloom-vt://plm.example/vt/?id=D1|W2&file=/a", Status(), 0);
  ASSERT_NE(target.server, nullptr);
  EXPECT_EQ(target.nickname, "");
  EXPECT_EQ(target.relativePath, "");
  EXPECT_EQ(target.base, plmKey);
  EXPECT_EQ(target.id, "D1|W2");
  EXPECT_TRUE(answers.calls.empty());
  EXPECT_TRUE(statuses.empty());
}

TEST_F(TargetResolution, FindsTheServerOfAUidWithoutTheClosingSlashOrAnId) {
  EXPECT_NE(ResolveTarget("korvufenloom-vt://plm.example/vt?id=D1", {}, 0).server, nullptr);
  EXPECT_NE(ResolveTarget("korvufenloom-vt://plm.example/vt/", {}, 0).server, nullptr);
}

TEST_F(TargetResolution, GivesNothingForNullWithoutATraceOrACall) {
  const PathTarget target = ResolveTarget(nullptr, Status(), 0);
  EXPECT_EQ(target.server, nullptr);
  EXPECT_TRUE(statuses.empty());
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(TargetResolution, ReportsAnUnknownNicknameOnce) {
  const PathTarget target = ResolveTarget("//nobody/a", Status(), 0);
  EXPECT_EQ(target.server, nullptr);
  EXPECT_EQ(target.nickname + target.relativePath + target.base + target.id, "");
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to connect to server path //nobody/a\n"}}));
  EXPECT_EQ(statuses, Lines{"1 (null)"});
}

TEST_F(TargetResolution, TracesAtTheLevelOfAMissWhenItIsToBeQuiet) {
  EXPECT_EQ(ResolveTarget("//nobody/a", Status(), ResolveQuiet).server, nullptr);
  EXPECT_EQ(trace.lines(), (Traces{{1, "VtDirect", "Failed to connect to server path //nobody/a\n"}}));
  EXPECT_EQ(statuses, Lines{"1 (null)"});
}

TEST_F(TargetResolution, FailsForTextsThatAreNeitherForm) {
  for (const char* text : {"", "x", "/plm/a", "http://plm/a", "vndir://plm/a", "korvufenloom-vfs:plm"}) {
    trace.Clear();
    EXPECT_EQ(ResolveTarget(text, {}, 0).server, nullptr) << text;
    EXPECT_EQ(trace.lines(),
              (Traces{{3, "VtDirect", std::string("Failed to connect to server path ") + text + "\n"}}));
  }
}

TEST_F(TargetResolution, AddsNoServerForAUidThatIsNotInTheTable) {
  EXPECT_EQ(ResolveTarget("korvufenloom-vt://other.example/?id=D1", Status(), 0).server, nullptr);
  EXPECT_EQ(TableNow().servers.size(), 1u);
  EXPECT_EQ(statuses, Lines{"1 (null)"});
}

TEST_F(TargetResolution, ShowsAPercentSignOfAPathAsItStands) {
  EXPECT_EQ(ResolveTarget("//%s%n/100%", {}, 0).server, nullptr);
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to connect to server path //%s%n/100%\n"}}));
}

TEST_F(TargetResolution, ProbesOnlyWhenAskedTo) {
  EXPECT_NE(ResolveTarget("//plm/a", Status(), ResolveProbe).server, nullptr);
  EXPECT_EQ(answers.calls, Lines{"TestConnection"});
  EXPECT_TRUE(statuses.empty());
}

TEST_F(TargetResolution, ReportsAServerThatDoesNotAnswerTheProbe) {
  answers.reachable = false;
  const PathTarget target = ResolveTarget("//plm/a", Status(), ResolveProbe);
  EXPECT_EQ(target.server, nullptr);
  EXPECT_EQ(target.nickname, "");
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to connect to server path //plm/a\n"}}));
  EXPECT_EQ(statuses, Lines{"1 (null)"});
}

TEST_F(TargetResolution, DoesNotProbeAServerThatIsNotThere) {
  EXPECT_EQ(ResolveTarget("//nobody/a", {}, ResolveProbe).server, nullptr);
  EXPECT_TRUE(answers.calls.empty());
}

TEST_F(TargetResolution, TakesTheOtherTwoBitsForNothing) {
  EXPECT_NE(ResolveTarget("//plm/a", {}, 1 | 8).server, nullptr);
  EXPECT_EQ(ResolveTarget("//nobody/a", {}, 1 | 8).server, nullptr);
  EXPECT_TRUE(answers.calls.empty());
  EXPECT_EQ(trace.lines().front().type, 3);
}

TEST_F(TargetIds, OfAUidAreThoseOfTheText) {
  answers.idsByPath[""] = "wrong";
  EXPECT_EQ(IdOfTarget(ResolveTarget("korvufenloom-vt://plm.example/vt/?id=D1", {}, 0)), "D1");
  EXPECT_TRUE(answers.calls.empty());
}

TEST_F(TargetIds, OfAPathByIdAreThoseOfTheText) {
  const auto id = [](const char* path) { return IdOfTarget(ResolveTarget(path, {}, 0)); };
  EXPECT_EQ(id("//plm/?id=D1001"), "D1001");
  EXPECT_EQ(id("//plm/?id=D1001&x=1"), "D1001");
  EXPECT_EQ(id("//plm/?id=D1|W2/a"), "D1|W2/a");
  EXPECT_EQ(id("//plm/?id="), "");
  EXPECT_TRUE(answers.calls.empty());
}

TEST_F(TargetIds, OfAnyOtherPathAreAskedFor) {
  answers.idsByPath["a/b"] = "D1|W2";
  EXPECT_EQ(IdOfTarget(ResolveTarget("//plm/a/b", {}, 0)), "D1|W2");
  EXPECT_EQ(IdOfTarget(ResolveTarget("//plm/x?id=D1", {}, 0)), "");
  EXPECT_EQ(IdOfTarget(ResolveTarget("//plm", {}, 0)), "");
  EXPECT_EQ(answers.calls, (Lines{"ResolvePath(a/b)", "ResolvePath(x?id=D1)", "ResolvePath()"}));
}

TEST_F(FileResolution, GivesServerAndId) {
  answers.idsByPath["a"] = "D1";
  const FileTarget target = ResolveFileTarget("//plm/a", Status(), 0);
  EXPECT_NE(target.server, nullptr);
  EXPECT_EQ(target.id, "D1");
  EXPECT_TRUE(statuses.empty());
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(FileResolution, ReportsAnUnknownServerOnce) {
  EXPECT_EQ(ResolveFileTarget("//nobody/a", Status(), 0).server, nullptr);
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to connect to server path //nobody/a\n"}}));
  EXPECT_EQ(statuses, Lines{"1 (null)"});
}

TEST_F(FileResolution, ReportsAnObjectThatIsNotThereOnceAndWithoutALineEnd) {
  const FileTarget target = ResolveFileTarget("//plm/a", Status(), 0);
  EXPECT_EQ(target.server, nullptr);
  EXPECT_EQ(target.id, "");
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to find file //plm/a"}}));
  EXPECT_EQ(statuses, Lines{"4 (null)"});
}

TEST_F(FileResolution, TracesAnObjectThatIsNotThereAsAMissWhenItIsToBeQuiet) {
  EXPECT_EQ(ResolveFileTarget("//plm/a", {}, ResolveQuiet).server, nullptr);
  EXPECT_EQ(trace.lines(), (Traces{{1, "VtDirect", "Failed to find file //plm/a"}}));
}

TEST_F(FileResolution, AsksForTheObjectOfAUidWithoutAnId) {
  EXPECT_EQ(ResolveFileTarget("korvufenloom-vt://plm.example/vt/", {}, 0).server, nullptr);
  EXPECT_EQ(answers.calls, Lines{"ResolvePath()"});
}

TEST_F(FileResolution, FailsSilentlyForAPathWhenItNeedsAnId) {
  answers.idsByPath["a"] = "D1";
  for (const char* path : {"//plm/a", "//plm/?id=D1", "korvufenloom-vt://plm.example/vt/?file=/a"}) {
    const FileTarget target = ResolveFileTarget(path, Status(), ResolveNeedId);
    EXPECT_EQ(target.server, nullptr);
    EXPECT_EQ(target.id, "");
  }
  EXPECT_TRUE(answers.calls.empty());
  EXPECT_TRUE(trace.lines().empty());
  EXPECT_TRUE(statuses.empty());
}

TEST_F(FileResolution, StillReportsAnUnknownServerWhenItNeedsAnId) {
  EXPECT_EQ(ResolveFileTarget("//nobody/a", Status(), ResolveNeedId).server, nullptr);
  EXPECT_EQ(statuses, Lines{"1 (null)"});
  EXPECT_EQ(trace.lines().size(), 1u);
}

TEST_F(FileResolution, TakesAUidWithAnIdWhenItNeedsOne) {
  EXPECT_EQ(ResolveFileTarget("korvufenloom-vt://plm.example/vt/?id=D1", {}, ResolveNeedId).id, "D1");
}

TEST_F(FileResolution, HandsItsFlagsOnToTheProbe) {
  answers.reachable = false;
  EXPECT_EQ(ResolveFileTarget("korvufenloom-vt://plm.example/vt/?id=D1", Status(), ResolveProbe).server,
            nullptr);
  EXPECT_EQ(statuses, Lines{"1 (null)"});
}

TEST_F(FileResolution, GivesNothingForNullWithoutATraceOrACall) {
  EXPECT_EQ(ResolveFileTarget(nullptr, Status(), 0).server, nullptr);
  EXPECT_TRUE(statuses.empty());
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(FileResolution, KeepsNoCallback) {
  auto token = std::make_shared<int>(0);
  const StatusCallback status = [token](StatusCode, const char*) {};
  const long before = token.use_count();
  (void)ResolveFileTarget("//nobody/a", status, 0);
  (void)ResolveFileTarget("//plm/a", status, 0);
  EXPECT_EQ(token.use_count(), before);
}

}  // namespace
