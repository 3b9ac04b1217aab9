#include <gmock/gmock.h>

#include "tests/e2e/many/many_fixture.h"

using testing::HasSubstr;

namespace vtdirect_test {

class ChangeMany : public ManyTest {};

TEST_F(ChangeMany, ChecksOutAndUndoesWhatAPatternFinds) {
  Serve();
  const ProcessResult out = Run({"checkout", std::string(framePath) + "f*.lxz"});
  EXPECT_EQ(out.status, 0) << out.err;
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(HolderOf("D1002"), "anna");
  EXPECT_EQ(HolderOf("D1028"), "");
  const ProcessResult undone = Run({"undo", forkPath, std::string(framePath) + "frame.lxz"});
  EXPECT_EQ(undone.status, 0) << undone.err;
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_EQ(TemporaryWorkspaces(), 0U);
}

TEST_F(ChangeMany, TakesAFolderForItsDocumentsAndEndsTheCheckoutsOfThisMachineInIt) {
  Serve();
  const ProcessResult out = Run({"checkout", "-r", framePath});
  EXPECT_EQ(out.status, 0) << out.err;
  for (const char* id : {"D1001", "D1002", "D1028"}) EXPECT_EQ(HolderOf(id), "anna") << id;

  ASSERT_EQ(Run({"undo", weldingPath}).status, 0);
  const ProcessResult told = Run({"checkin", "-r", bikePath, "--dry-run"});
  EXPECT_EQ(told.status, 0) << told.err;
  EXPECT_EQ(std::count(told.out.begin(), told.out.end(), '\n'), 2);
  EXPECT_EQ(HolderOf("D1001"), "anna");
  const ProcessResult in = Run({"checkin", "-r", bikePath});
  EXPECT_EQ(in.status, 0) << in.err;
  for (const char* id : {"D1001", "D1002"}) EXPECT_EQ(HolderOf(id), "") << id;

  const ProcessResult nothing = Run({"undo", "-r", bikePath});
  EXPECT_EQ(nothing.status, 0) << nothing.err;
  EXPECT_EQ(nothing.out, "");
  EXPECT_THAT(nothing.err, HasSubstr("vtdirect has checked out nothing there"));
}

// The product's tree has the fork twice: in its folder, and in the workspace "Anna's bench", which shows it.
TEST_F(ChangeMany, EndsACheckoutOnceThatAWorkspaceOfTheFolderShowsToo) {
  Serve();
  constexpr const char* productPath = "//sim/Products/Trekking Bike/";
  ASSERT_EQ(Run({"checkout", forkPath}).status, 0);
  for (const char* command : {"checkin", "undo"}) {
    const ProcessResult told = Run({command, "-r", productPath, "--dry-run"});
    EXPECT_EQ(told.status, 0) << told.err;
    EXPECT_EQ(std::count(told.out.begin(), told.out.end(), '\n'), 1) << told.out;
  }
  const ProcessResult undone = Run({"undo", "-r", productPath});
  EXPECT_EQ(undone.status, 0) << undone.err;
  EXPECT_EQ(HolderOf("D1002"), "");
}

TEST_F(ChangeMany, ChecksInWhatItCanAndTellsTheRest) {
  Serve();
  ASSERT_EQ(Run({"checkout", forkPath}).status, 0);
  WriteFile(Home("list"), std::string(weldingPath) + "\n" + forkPath + "\n");
  const ProcessResult result = Run({"checkin", "--from", Home("list")});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_THAT(result.err, HasSubstr("vtdirect: 1 of 2 failed:\n"));
}

TEST_F(ChangeMany, ChangesNothingFurtherAfterAFailureWhenItIsToldSo) {
  Serve();
  EXPECT_EQ(Run({"checkout", "--stop-on-error", noSuchPath, forkPath}).status, 6);
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_EQ(Run({"checkout", "--stop-on-error", forkPath, std::string(framePath) + "none*"}).status, 6);
  EXPECT_EQ(HolderOf("D1001"), "");
}

TEST_F(ChangeMany, StoresFilesInAFolder) {
  Serve();
  WriteFile(Home("one.lxz"), "one");
  WriteFile(Home("two.lxz"), "two");
  const ProcessResult result = Run({"put", Home("one.lxz"), Home("two.lxz"), framePath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(Run({"get", std::string(framePath) + "one.lxz", "-o", "-"}).out, "one");
  EXPECT_EQ(Run({"get", std::string(framePath) + "two.lxz", "-o", "-"}).out, "two");
}

TEST_F(ChangeMany, StoresTheFilesOfAListAndOfAPattern) {
  Serve();
  WriteFile(Here("one.lxz"), "one");
  WriteFile(Here("two.lxz"), "two");
  WriteFile(Here("three.lxz"), "three");
  WriteFile(Home("list"), "one.lxz\n");
  const ProcessResult listed = Run({"put", "--from", Home("list"), framePath});
  EXPECT_EQ(listed.status, 0) << listed.err;
  EXPECT_EQ(Run({"get", std::string(framePath) + "one.lxz", "-o", "-"}).out, "one");
  EXPECT_EQ(Run({"get", std::string(framePath) + "two.lxz", "-o", "-"}).status, 6);
  const ProcessResult matched = Run({"put", "t*.lxz", framePath});
  EXPECT_EQ(matched.status, 0) << matched.err;
  EXPECT_EQ(Run({"get", std::string(framePath) + "two.lxz", "-o", "-"}).out, "two");
  EXPECT_EQ(Run({"get", std::string(framePath) + "three.lxz", "-o", "-"}).out, "three");
}

TEST_F(ChangeMany, TellsOfAPatternThatNoFileMatches) {
  Serve();
  WriteFile(Here("one.lxz"), "one");
  const ProcessResult result = Run({"put", "*.none", "one.lxz", framePath});
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err, HasSubstr("1 of 2 failed:\nvtdirect:   no file matches *.none\n"));
  EXPECT_EQ(Run({"get", std::string(framePath) + "one.lxz", "-o", "-"}).out, "one");
  EXPECT_EQ(Run({"put", "o*.lxz", forkPath}).status, 2) << "a pattern may find several";
}

TEST_F(ChangeMany, RefusesFilesThatHaveNoPlaceOfTheirOwn) {
  Serve();
  std::filesystem::create_directory(Home("sub"));
  WriteFile(Home("one.lxz"), "one");
  WriteFile(Home("sub/one.lxz"), "other");
  EXPECT_EQ(Run({"put", Home("one.lxz"), Home("sub/one.lxz"), framePath}).status, 2);
  EXPECT_EQ(Run({"put", Home("one.lxz"), Home("one.lxz"), forkPath}).status, 2);
  WriteFile(Home("two.lxz"), "two");
  EXPECT_EQ(Run({"put", Home("one.lxz"), Home("two.lxz"), framePath, "--viewable", Home("one.lxz")}).status,
            2);
  EXPECT_EQ(server().Log(), "");
}

TEST_F(ChangeMany, StoresTheOthersWhenOneFails) {
  Serve();
  WriteFile(Home("two.lxz"), "two");
  const ProcessResult result = Run({"put", Home("none.lxz"), Home("two.lxz"), framePath});
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err, HasSubstr("1 of 2 failed:"));
  EXPECT_EQ(Run({"get", std::string(framePath) + "two.lxz", "-o", "-"}).out, "two");
  EXPECT_EQ(Run({"put", "--stop-on-error", Home("none.lxz"), Home("two.lxz"), std::string(bikePath)}).status,
            8);
  EXPECT_EQ(Run({"get", std::string(bikePath) + "two.lxz", "-o", "-"}).status, 6);
}

}  // namespace vtdirect_test
