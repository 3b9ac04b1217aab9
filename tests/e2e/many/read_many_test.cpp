#include <gmock/gmock.h>

#include "tests/e2e/many/many_fixture.h"

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace vtdirect_test {

class ReadMany : public ManyTest {};

TEST_F(ReadMany, TellsOfEachInTheOrderInWhichTheyWereGiven) {
  Serve();
  const ProcessResult result = Run({"info", weldingPath, forkPath, framePath, "--parallel", "3"});
  EXPECT_EQ(result.status, 0) << result.err;
  const std::size_t welding = result.out.find("address: " + std::string(weldingPath) + "\n");
  const std::size_t fork = result.out.find("\n\naddress: " + std::string(forkPath) + "\n");
  const std::size_t frame = result.out.find("\n\naddress: " + std::string(framePath) + "\n");
  EXPECT_EQ(welding, 0U);
  EXPECT_LT(welding, fork);
  EXPECT_LT(fork, frame);
  EXPECT_NE(frame, std::string::npos);
  // One object reads as it always did.
  EXPECT_THAT(Run({"info", forkPath}).out, testing::Not(testing::EndsWith("\n\n")));
}

TEST_F(ReadMany, FindsByAPatternWhatTheFolderHolds) {
  Serve();
  const ProcessResult result = Run({"status", std::string(framePath) + "f*"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "up-to-date\tB.1\tB.1\tnone\t" + std::string(forkPath) + "\n" +
                            "up-to-date\tA.3\tA.3\tnone\t" + std::string(framePath) + "frame.lxz\n");
  // A pattern that ends in "/" finds folders, and only info tells of those.
  const ProcessResult folders = Run({"info", std::string(bikePath) + "F*/"});
  EXPECT_THAT(folders.out, StartsWith("address: " + std::string(framePath) + "\n"));
}

TEST_F(ReadMany, TellsTheVersionsOfEachWithItsAddress) {
  Serve();
  const ProcessResult result = Run({"versions", forkPath, std::string(framePath) + "frame.lxz"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, StartsWith("B.1\t" + server().Uid("D1001")));
  EXPECT_THAT(result.out, HasSubstr("\tlatest\t" + std::string(forkPath) + "\n"));
  EXPECT_THAT(result.out, HasSubstr("\t\t" + std::string(framePath) + "frame.lxz\n"));
}

TEST_F(ReadMany, TakesAFolderForTheDocumentsInItAndBelowIt) {
  Serve();
  const std::string frame = framePath;
  const ProcessResult result = Run({"status", "--recursive", frame.substr(0, frame.size() - 1)});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, StartsWith("up-to-date\tB.1\tB.1\tnone\t" + std::string(forkPath) +
                                     "\nup-to-date\tA.3\tA.3\tnone\t" + frame + "frame.lxz\nup-to-date\t"));
  EXPECT_THAT(result.out, EndsWith("\t" + std::string(weldingPath) + "\n"));
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 3);
  const ProcessResult above = Run({"info", "--json", "-r", bikePath});
  for (const std::string& path : {std::string(forkPath), std::string(drivetrainPath) + "gear.lxz"}) {
    EXPECT_THAT(above.out, HasSubstr("\"address\":\"" + path + "\""));
  }
  EXPECT_THAT(above.out, Not(HasSubstr("\"kind\":\"folder\"")));
  EXPECT_THAT(Run({"versions", "-r", frame}).out, HasSubstr("\tlatest\t" + std::string(weldingPath) + "\n"));
}

TEST_F(ReadMany, TellsOfADocumentOnceThatFoldersAndPatternsShow) {
  Serve();
  const ProcessResult result =
      Run({"status", "-r", framePath, std::string(framePath) + "f*", bikePath + std::string("Fr*/")});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 3);
}

TEST_F(ReadMany, TellsOfAFolderThatIsNotThereOrIsEmpty) {
  Serve();
  const ProcessResult none = Run({"status", "-r", std::string(bikePath) + "None/", forkPath});
  EXPECT_EQ(none.status, 6);
  EXPECT_THAT(none.out, HasSubstr("\tnone\t" + std::string(forkPath) + "\n"));
  const ProcessResult empty = Run({"status", "-r", std::string(bikePath) + "Nothing yet/"});
  EXPECT_EQ(empty.status, 0) << empty.err;
  EXPECT_THAT(empty.err, HasSubstr("there are no documents"));
}

TEST_F(ReadMany, GivesTheWorstExitStatusAndAllResults) {
  Serve();
  const std::string older = std::string(forkPath) + "|A.1";
  const ProcessResult result = Run({"status", older, noSuchPath, weldingPath});
  EXPECT_EQ(result.status, 6);
  EXPECT_THAT(result.out, StartsWith("outdated\tA.1\tB.1\t"));
  EXPECT_THAT(result.out, HasSubstr("\nfailed\t\t\t\t" + std::string(noSuchPath) + "\nup-to-date\t"));
  EXPECT_EQ(Run({"status", older, weldingPath}).status, 10);
}

TEST_F(ReadMany, TellsOneObjectOfAListAsOneOfMany) {
  Serve();
  WriteFile(Home("list"), std::string(forkPath) + "\n");
  const ProcessResult result = Run({"info", "--json", "--from", Home("list")});
  EXPECT_EQ(result.out, Run({"info", "--json", forkPath}).out);
  EXPECT_EQ(Run({"info", "--from", "-"}).out, "");
}

TEST_F(ReadMany, LogsInOnceForAll) {
  environment_["VTDIRECT_USER"] = "anna";
  environment_["VTDIRECT_PASSWORD"] = "wrong";
  Serve({"--user", "anna:a"});
  const ProcessResult result = Run({"info", forkPath, weldingPath, framePath});
  EXPECT_EQ(result.status, 4);
  EXPECT_THAT(result.err, HasSubstr("2 objects were not asked for"));
  environment_["VTDIRECT_PASSWORD"] = "a";
  EXPECT_EQ(Run({"info", forkPath, weldingPath, framePath}).status, 0);
}

}  // namespace vtdirect_test
