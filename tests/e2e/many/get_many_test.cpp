#include <gmock/gmock.h>

#include <chrono>

#include "tests/e2e/many/many_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;

namespace vtdirect_test {

class GetMany : public ManyTest {};

TEST_F(GetMany, BringsEachToAFileOfItsName) {
  Serve();
  const ProcessResult result = Run({"get", forkPath, server().Uid("D1002"), weldingPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(FilesHere(), ElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
  EXPECT_EQ(ReadFile(Here("fork.lxz")), BytesOf("D1001"));
  EXPECT_EQ(ReadFile(Here("frame.lxz")), BytesOf("D1002"));
  const std::size_t bytes = BytesOf("D1001").size() + BytesOf("D1002").size() + BytesOf("D1028").size();
  EXPECT_EQ(result.err, "vtdirect: 3 of 3 documents saved, " + std::to_string(bytes) + " bytes\n");
}

TEST_F(GetMany, MatchesPatternsWithTheListing) {
  Serve();
  EXPECT_EQ(Run({"get", std::string(framePath) + "f*.lxz"}).status, 0);
  EXPECT_THAT(FilesHere(), ElementsAre("fork.lxz", "frame.lxz"));
  EXPECT_EQ(Run({"get", "//sim/Products/*/Folders/Drivetrain/gear.lx?", "-o", "gears/"}).status, 8);
  std::filesystem::create_directory(Here("gears"));
  EXPECT_EQ(Run({"get", "//sim/Products/*/Folders/Drivetrain/gear.lx?", "-o", "gears"}).status, 0);
  EXPECT_THAT(FilesHere(), IsSupersetOf({"gears/gear.lxz", "gears/gear%(2).lxz"}));
  const ProcessResult none = Run({"get", std::string(framePath) + "*.none"});
  EXPECT_EQ(none.status, 6);
  EXPECT_THAT(none.err, HasSubstr("nothing matches " + std::string(framePath) + "*.none"));
}

TEST_F(GetMany, MatchesTheNameOfADocumentThatHasWildcardsInIt) {
  Serve();
  EXPECT_EQ(Run({"get", std::string(drivetrainPath) + "odd*name.lxz"}).status, 0);
  EXPECT_THAT(FilesHere(), ElementsAre("odd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz"));
  EXPECT_EQ(ReadFile(Here("odd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz")), BytesOf("D1007"));
}

TEST_F(GetMany, BringsAFolderWithAllThatIsInIt) {
  Serve();
  const ProcessResult result = Run({"get", "-r", bikePath, "--parallel", "8"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(FilesHere(), IsSupersetOf({"Folders/Frame/fork.lxz", "Folders/Drivetrain/O'Ring 12mm.lxz",
                                         "Folders/Drivetrain/odd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz",
                                         "Folders/Größen & Maße/Größentabelle Rahmen.lxz"}));
  EXPECT_EQ(ReadFile(Here("Folders/Drivetrain/bearing 1%2f2%22.lxz")), BytesOf("D1006"));
  EXPECT_TRUE(std::filesystem::is_directory(Here("Folders/Nothing yet")));
  // A document without a content is somebody's work that has just begun, and no failure.
  EXPECT_THAT(result.err, HasSubstr("no content.lxz has no content on the server yet"));
}

TEST_F(GetMany, TakesAFolderWithoutItsSlashAndADocumentAsItIs) {
  Serve();
  const std::string folder = std::string(framePath).substr(0, std::string(framePath).size() - 1);
  EXPECT_EQ(Run({"get", "-r", folder, "-o", "into"}).status, 0);
  EXPECT_THAT(FilesHere(),
              ElementsAre("into/Frame/fork.lxz", "into/Frame/frame.lxz", "into/Frame/welding manual.xml"));
  EXPECT_EQ(Run({"get", "-r", forkPath}).status, 0);
  EXPECT_THAT(FilesHere(), testing::Contains("fork.lxz"));
  // Without -r a folder is no document, whatever else is asked for.
  EXPECT_EQ(Run({"get", framePath, forkPath}).status, 2);
}

TEST_F(GetMany, AsksForAContentByTwoRequestsOnceTheListingIsThere) {
  Serve();
  EXPECT_EQ(Run({"get", "-r", framePath}).status, 0);
  EXPECT_EQ(Requests("content/streams/"), 3U);
  // Three of the listing, and what finds out the server; then two for each of the three documents.
  const std::size_t all = Requests("\"method\":\"GET\"");
  ASSERT_EQ(Run({"get", "-r", framePath}).status, 0);
  const std::size_t second = Requests("\"method\":\"GET\"") - all;
  ASSERT_EQ(Run({"get", "-r", otherDrivetrainPath}).status, 0);
  const std::size_t oneDocument = Requests("\"method\":\"GET\"") - all - second;
  EXPECT_EQ(second - oneDocument, 2U * (3U - 1U));
}

TEST_F(GetMany, KeepsDocumentsOfOneNameApart) {
  Serve();
  const std::string gear = std::string(drivetrainPath) + "gear.lxz";
  const std::string otherGear = std::string(otherDrivetrainPath) + "gear.lxz";
  EXPECT_EQ(Run({"get", gear, otherGear}).status, 0);
  EXPECT_EQ(ReadFile(Here("gear.lxz")), BytesOf("D1003"));
  EXPECT_EQ(ReadFile(Here("gear%(2).lxz")), BytesOf("D1013"));
  EXPECT_EQ(Run({"get", "-r", drivetrainPath, otherDrivetrainPath}).status, 0);
  EXPECT_EQ(ReadFile(Here("Drivetrain/gear.lxz")), BytesOf("D1003"));
  EXPECT_EQ(ReadFile(Here("Drivetrain%(2)/gear.lxz")), BytesOf("D1013"));
}

TEST_F(GetMany, BringsADocumentThatIsNamedTwiceOnce) {
  Serve();
  EXPECT_EQ(Run({"get", forkPath, forkPath}).status, 0);
  EXPECT_EQ(Run({"get", "-r", framePath, std::string(framePath) + "*"}).status, 0);
  EXPECT_THAT(FilesHere(),
              ElementsAre("Frame/fork.lxz", "Frame/frame.lxz", "Frame/welding manual.xml", "fork.lxz"));
}

TEST_F(GetMany, ReplacesNothingThatItDidNotWrite) {
  Serve();
  std::filesystem::create_directory(Here("Frame"));
  WriteFile(Here("Frame/fork.lxz"), "mine");
  const ProcessResult result = Run({"get", "-r", framePath});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(ReadFile(Here("Frame/fork.lxz")), "mine");
  EXPECT_EQ(ReadFile(Here("Frame/frame.lxz")), BytesOf("D1002"));
  EXPECT_THAT(result.err, HasSubstr("Frame/fork.lxz is there and was not saved by vtdirect"));
  // What it wrote it replaces, unless somebody has changed it.
  WriteFile(Here("Frame/frame.lxz"), "changed");
  EXPECT_EQ(Run({"get", "-r", framePath}).status, 8);
  EXPECT_EQ(ReadFile(Here("Frame/frame.lxz")), "changed");
  EXPECT_EQ(Run({"get", "-r", "--force", framePath}).status, 0);
  EXPECT_EQ(ReadFile(Here("Frame/fork.lxz")), BytesOf("D1001"));
}

TEST_F(GetMany, WritesIntoNoDirectoryThatALinkLeadsTo) {
  Serve();
  std::filesystem::create_directory(Home("elsewhere"));
  std::filesystem::create_directory_symlink(Home("elsewhere"), Here("Frame"));
  const ProcessResult result = Run({"get", "-r", framePath});
  EXPECT_EQ(result.status, 8);
  EXPECT_TRUE(std::filesystem::is_empty(Home("elsewhere"))) << result.err;
}

TEST_F(GetMany, CarriesOnAndTellsTheFailuresOnceMoreAtTheEnd) {
  Serve();
  const ProcessResult result = Run({"get", "--parallel", "1", noSuchPath, forkPath});
  EXPECT_EQ(result.status, 6);
  EXPECT_THAT(FilesHere(), ElementsAre("fork.lxz"));
  const std::string failure = "not found: " + std::string(noSuchPath);
  EXPECT_THAT(result.err, testing::StartsWith("vtdirect: " + failure));
  EXPECT_THAT(result.err, HasSubstr("vtdirect: 1 of 2 documents saved"));
  EXPECT_THAT(result.err, HasSubstr("vtdirect: 1 of 2 failed:\nvtdirect:   " + failure));
  const ProcessResult stopped = Run({"get", "--parallel", "1", "--stop-on-error", noSuchPath, weldingPath});
  EXPECT_EQ(stopped.status, 6);
  EXPECT_THAT(FilesHere(), ElementsAre("fork.lxz"));
}

TEST_F(GetMany, TakesAddressesFromAFile) {
  Serve();
  WriteFile(Home("list"), std::string(forkPath) + "\n" + server().Uid("D1002") + "\n");
  EXPECT_EQ(Run({"get", "--from", Home("list")}).status, 0);
  EXPECT_THAT(FilesHere(), ElementsAre("fork.lxz", "frame.lxz"));
  WriteFile(Home("zeros"), std::string(weldingPath) + '\0');
  EXPECT_EQ(Run({"get", "--from", Home("zeros"), "-0"}).status, 0);
  EXPECT_THAT(FilesHere(), ElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
  // Nothing on standard input is no address.
  EXPECT_EQ(Run({"get", "--from", "-"}).status, 0);
  EXPECT_EQ(Run({"get", "--from", Home("no such list")}).status, 8);
}

TEST_F(GetMany, TellsEachFileWhenItIsAsked) {
  Serve();
  const ProcessResult result = Run({"get", "-v", "--parallel", "1", forkPath, weldingPath});
  EXPECT_THAT(result.err, testing::StartsWith("vtdirect: saved fork.lxz, "));
  EXPECT_THAT(result.err, HasSubstr("\nvtdirect: saved welding manual.xml, "));
  const ProcessResult json = Run({"get", "--json", "-r", framePath});
  EXPECT_THAT(json.out, HasSubstr("\"command\":\"get\",\"address\":\"" + std::string(forkPath) +
                                  "\",\"uid\":\"" + server().Uid("D1001")));
  EXPECT_THAT(
      json.out,
      HasSubstr("\"file\":\"Frame/fork.lxz\",\"bytes\":" + std::to_string(BytesOf("D1001").size()) + "}\n"));
  EXPECT_EQ(json.err, "");
}

TEST_F(GetMany, RefusesOneTargetForSeveral) {
  Serve();
  EXPECT_EQ(Run({"get", forkPath, weldingPath, "-o", "-"}).status, 2);
  EXPECT_EQ(Run({"get", forkPath, weldingPath, "-o", "file"}).status, 2);
  EXPECT_EQ(Run({"get", forkPath, weldingPath, "--parallel", "17"}).status, 2);
  EXPECT_THAT(FilesHere(), IsEmpty());
}

TEST_F(GetMany, AsksAServerThatIsGoneOnceForAll) {
  Serve();
  const std::string url = server().url();
  StopServer();
  const ProcessResult result = Run({"--server", "sim=" + url, "get", forkPath, weldingPath, noSuchPath});
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.err, HasSubstr("2 objects were not asked for, since the server can't be used"));
}

TEST_F(GetMany, BringsTheWorkingCopyOfWhatIsCheckedOut) {
  Serve();
  ASSERT_EQ(Run({"checkout", forkPath}).status, 0);
  WriteFile(Home("edited"), "edited");
  ASSERT_EQ(Run({"put", Home("edited"), forkPath}).status, 0);
  ASSERT_EQ(Run({"get", "-r", framePath}).status, 0);
  EXPECT_EQ(ReadFile(Here("Frame/fork.lxz")), "edited");
  ASSERT_EQ(Run({"get", "-r", "--base", framePath, "-o", "base"}).status, 0);
  EXPECT_EQ(ReadFile(Here("base/Frame/fork.lxz")), BytesOf("D1001"));
}

TEST_F(GetMany, RepeatsAQuestionThatTheServerWasTooBusyFor) {
  Serve({"--fault", "GET *content/streams/*=503*2"});
  const ProcessResult result = Run({"get", "--parallel", "1", forkPath, weldingPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(ReadFile(Here("fork.lxz")), BytesOf("D1001"));
  EXPECT_THAT(result.err, testing::StartsWith("vtdirect: 2 of 2 documents saved"));
}

TEST_F(GetMany, RepeatsATransferThatBrokeOff) {
  Serve({"--fault", "GET *content/streams/*=cut:10*1"});
  EXPECT_EQ(Run({"get", "-r", framePath}).status, 0);
  EXPECT_THAT(FilesHere(), ElementsAre("Frame/fork.lxz", "Frame/frame.lxz", "Frame/welding manual.xml"));
  EXPECT_EQ(Requests("content/streams/"), 4U);
}

TEST_F(GetMany, RepeatsAListingToo) {
  Serve({"--fault", "GET *FolderContents*=503*1"});
  EXPECT_EQ(Run({"get", "-r", framePath}).status, 0);
  EXPECT_THAT(FilesHere(), ElementsAre("Frame/fork.lxz", "Frame/frame.lxz", "Frame/welding manual.xml"));
}

TEST_F(GetMany, ComesBackNoEarlierThanABusyServerAsksFor) {
  Serve({"--fault", "GET *content/streams/*=busy:1*1"});
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(Run({"get", "--parallel", "1", forkPath, weldingPath}).status, 0);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
  EXPECT_THAT(FilesHere(), ElementsAre("fork.lxz", "welding manual.xml"));
}

TEST_F(GetMany, KeepsTheAskedPauseWhenItsExchangesAreLoggedToo) {
  Serve({"--fault", "GET *content/streams/*=busy:1*1"});
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(Run({"get", "--log-http", "log.har", forkPath, weldingPath}).status, 0);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
}

TEST_F(GetMany, DoesNotWaitForAServerThatAsksForMoreThanAMinute) {
  Serve({"--fault", "GET *content/streams/*=busy:3600*1"});
  EXPECT_NE(Run({"get", "--parallel", "1", forkPath, weldingPath}).status, 0);
  EXPECT_THAT(FilesHere(), ElementsAre("welding manual.xml"));
  EXPECT_EQ(Requests("content/streams/"), 2U);
}

TEST_F(GetMany, RepeatsNothingWhenItIsToldSoAndForOneDocumentAlone) {
  Serve({"--fault", "GET *content/streams/*=503"});
  const ProcessResult none = Run({"get", "--retries", "0", "--parallel", "1", forkPath, weldingPath});
  EXPECT_NE(none.status, 0);
  EXPECT_THAT(none.err, HasSubstr("2 of 2 failed:"));
  EXPECT_EQ(Requests("content/streams/"), 2U);
  EXPECT_NE(Run({"get", forkPath}).status, 0);
  EXPECT_EQ(Requests("content/streams/"), 3U);
  EXPECT_NE(Run({"get", "--retries", "1", forkPath, forkPath}).status, 0);
  EXPECT_EQ(Requests("content/streams/"), 5U);
}

// Several programs keep what they have saved in one place, at one time.
TEST_F(GetMany, LosesNoRecordWhenSeveralProgramsSaveSideBySide) {
  Serve();
  std::vector<std::unique_ptr<Process>> programs;
  for (int number = 0; number < 8; ++number) {
    programs.push_back(Start({"get", "-r", framePath, "-o", "of" + std::to_string(number)}));
  }
  for (const auto& program : programs) {
    const ProcessResult result = program->Wait();
    EXPECT_EQ(result.status, 0) << result.err;
  }
  // Each file is known as saved, so none of them takes --force.
  for (int number = 0; number < 8; ++number) {
    EXPECT_EQ(Run({"get", "-r", framePath, "-o", "of" + std::to_string(number)}).status, 0);
  }
}

}  // namespace vtdirect_test
