#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/e2e/many/many_fixture.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {

/// Stores a directory, with all that is in it, in a folder of a server.
class PutDirectory : public ManyTest {
 protected:
  /// Writes a file below the directory "up", and makes the directories that it is in.
  void WriteUp(const std::string& path, const std::string& content) {
    const std::string file = Here("up/" + path);
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    WriteFile(file, content);
  }
  [[nodiscard]] std::string OnServer(const std::string& address) {
    return RunElsewhere({"get", address, "-o", "-"}).out;
  }
  /// Requests of the log that change something.
  [[nodiscard]] std::size_t Changes() const {
    return Requests("\"method\":\"POST\"") + Requests("\"method\":\"PATCH\"");
  }
};

TEST_F(PutDirectory, StoresEachFileInTheFolderOfItsPath) {
  Serve();
  WriteUp("top.lxz", "top");
  WriteUp("Frame/fork.lxz", "edited");
  WriteUp("Frame/new.lxz", "new");
  const ProcessResult result = Run({"put", "-r", "up", bikePath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(OnServer(std::string(bikePath) + "top.lxz"), "top");
  EXPECT_EQ(OnServer(std::string(framePath) + "new.lxz"), "new");
  EXPECT_EQ(OnServer(forkPath), "edited");
  // The document that was there has got an iteration, and no other one has come beside it.
  EXPECT_THAT(Run({"versions", forkPath}).out, HasSubstr("B.2"));
  EXPECT_EQ(Run({"get", "-r", bikePath, "-o", "got"}).status, 0);
  EXPECT_EQ(ReadFile(Here("got/Folders/top.lxz")), "top");
  EXPECT_EQ(ReadFile(Here("got/Folders/Frame/new.lxz")), "new");
  EXPECT_EQ(ReadFile(Here("got/Folders/Frame/fork.lxz")), "edited");
}

TEST_F(PutDirectory, AddressesDocumentsByTheNamesThatGetHasEscaped) {
  Serve();
  WriteUp("Frame/one%2ftwo.lxz", "slash");
  WriteUp("Frame/%2edotted.lxz", "dot");
  WriteUp("Frame/100% done%41.lxz", "as it is");
  const ProcessResult result = Run({"put", "-r", "up/", bikePath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(OnServer(std::string(framePath) + "one%2ftwo.lxz"), "slash");
  EXPECT_EQ(OnServer(std::string(framePath) + ".dotted.lxz"), "dot");
  EXPECT_EQ(OnServer(std::string(framePath) + "100%25 done%2541.lxz"), "as it is");
  EXPECT_EQ(Run({"get", "-r", framePath}).status, 0);
  EXPECT_EQ(ReadFile(Here("Frame/%2edotted.lxz")), "dot");
  // A document that is created keeps the escapes of its path in its name; the path goes on leading to it.
  EXPECT_EQ(ReadFile(Here("Frame/one%252ftwo.lxz")), "slash");
  WriteUp("Frame/one%2ftwo.lxz", "later");
  EXPECT_EQ(Run({"put", "-r", "up", bikePath, "--if-changed"}).status, 0);
  EXPECT_EQ(OnServer(std::string(framePath) + "one%2ftwo.lxz"), "later");
  EXPECT_THAT(Run({"versions", std::string(framePath) + "one%2ftwo.lxz"}).out, HasSubstr("A.2"));
}

TEST_F(PutDirectory, TakesWhatGetHasBroughtForWhatItIs) {
  Serve();
  ASSERT_EQ(Run({"get", "-r", drivetrainPath}).status, 0);
  ASSERT_THAT(FilesHere(), testing::Contains("Drivetrain/odd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz"));
  // These two are checked out by others and by other means, and refused for that.
  ASSERT_TRUE(std::filesystem::remove(Here("Drivetrain/brake.lxz")));
  ASSERT_TRUE(std::filesystem::remove(Here("Drivetrain/crank.lxz")));
  const std::size_t files = FilesHere().size();
  const ProcessResult result = Run({"put", "-r", "Drivetrain", drivetrainPath, "--dry-run"});
  EXPECT_EQ(result.status, 0) << result.err;
  std::size_t iterations = 0;
  for (std::size_t at = 0; (at = result.out.find("would iterate\t", at)) != std::string::npos; ++at)
    ++iterations;
  EXPECT_EQ(iterations, files) << result.out;
  EXPECT_EQ(Run({"put", "-r", "Drivetrain", drivetrainPath, "--if-changed"}).status, 0);
  EXPECT_EQ(Changes(), 0U);
}

TEST_F(PutDirectory, SendsNothingOfATrial) {
  Serve();
  WriteUp("top.lxz", "top");
  WriteUp("Frame/fork.lxz", "edited");
  const ProcessResult result = Run({"put", "-r", "up", bikePath, "--dry-run"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "would iterate\tup/Frame/fork.lxz\t" + server().Uid("D1001") +
                            "&file=/fork.lxz\n"
                            "would create\tup/top.lxz\t" +
                            bikePath + "top.lxz\n");
  EXPECT_EQ(Changes(), 0U);
}

TEST_F(PutDirectory, StoresTheOthersWhenTheServerHasNoSuchFolder) {
  Serve();
  WriteUp("Frame/new.lxz", "new");
  WriteUp("Wheels/front.lxz", "front");
  WriteUp("Wheels/Spokes/left.lxz", "left");
  std::filesystem::create_directories(Here("up/Empty"));
  const ProcessResult result = Run({"put", "-r", "up", bikePath});
  EXPECT_EQ(result.status, 6);
  const std::string failure =
      "there is no folder " + std::string(bikePath) +
      "Wheels/; 2 files of up/Wheels/ are not sent; vtdirect makes no folders: make it";
  EXPECT_THAT(result.err, testing::StartsWith("vtdirect: created"));
  EXPECT_THAT(result.err, HasSubstr("vtdirect: " + failure));
  EXPECT_THAT(result.err, HasSubstr("1 of 2 failed:\nvtdirect:   " + failure));
  EXPECT_THAT(result.err, Not(HasSubstr("Empty")));
  EXPECT_EQ(OnServer(std::string(framePath) + "new.lxz"), "new");
  // Who asked for more than there is may have meant something else.
  WriteUp("Frame/newer.lxz", "newer");
  EXPECT_EQ(Run({"put", "-r", "up", bikePath, "--stop-on-error"}).status, 6);
  EXPECT_EQ(Run({"get", std::string(framePath) + "newer.lxz", "-o", "-"}).status, 6);
}

// Not to know what is in a folder is no reason to create a document in it.
TEST_F(PutDirectory, SendsNothingToAFolderThatCouldNotBeListed) {
  Serve({"--fault", "GET *FolderContents*=503"});
  WriteUp("top.lxz", "top");
  WriteUp("Frame/new.lxz", "new");
  const ProcessResult result = Run({"put", "-r", "up", bikePath});
  EXPECT_NE(result.status, 0);
  EXPECT_NE(result.status, 6);
  EXPECT_THAT(result.err, HasSubstr("cannot list " + std::string(bikePath)));
  EXPECT_THAT(result.err, HasSubstr("2 files of up are not sent"));
  EXPECT_THAT(result.err, Not(HasSubstr("there is no folder")));
  EXPECT_EQ(Changes(), 0U);
}

TEST_F(PutDirectory, LeavesOutWhatIsHiddenAndWhatIsNoFile) {
  Serve();
  WriteUp("new.lxz", "new");
  WriteUp(".vtdirect/files.db", "kept");
  WriteUp(".secret", "secret");
  std::filesystem::create_directories(Home("elsewhere"));
  WriteFile(Home("elsewhere/other.lxz"), "other");
  std::filesystem::create_symlink(Home("elsewhere/other.lxz"), Here("up/link.lxz"));
  std::filesystem::create_directory_symlink(Home("elsewhere"), Here("up/Frame"));
  ASSERT_EQ(mkfifo(Here("up/pipe").c_str(), 0600), 0);
  const ProcessResult result = Run({"put", "-r", "up", bikePath, "--dry-run"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "would create\tup/new.lxz\t" + std::string(bikePath) + "new.lxz\n");
  EXPECT_EQ(result.err,
            "vtdirect: left out up/.secret: it is hidden\n"
            "vtdirect: left out up/.vtdirect: it is hidden\n"
            "vtdirect: left out up/Frame: it is a symbolic link\n"
            "vtdirect: left out up/link.lxz: it is a symbolic link\n"
            "vtdirect: left out up/pipe: it is no regular file\n");
}

// Both names mean "one/two.lxz".
TEST_F(PutDirectory, SendsNeitherOfTwoFilesThatWouldBecomeOneDocument) {
  Serve();
  WriteUp("one%2ftwo.lxz", "one");
  WriteUp("one%2Ftwo.lxz", "other");
  WriteUp("new.lxz", "new");
  const ProcessResult result = Run({"put", "-r", "up", bikePath});
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err, HasSubstr("2 of 3 failed:"));
  EXPECT_EQ(OnServer(std::string(bikePath) + "new.lxz"), "new");
  EXPECT_EQ(Run({"get", std::string(bikePath) + "one%2ftwo.lxz", "-o", "-"}).status, 6);
}

// A file that is called like the second of two documents is not the one of a document of that odd name.
TEST_F(PutDirectory, CreatesNoDocumentOfANameThatGetHasMade) {
  Serve();
  WriteUp("Frame/fork%(0000999999).lxz", "second");
  const ProcessResult result = Run({"put", "-r", "up", bikePath});
  EXPECT_EQ(result.status, 6);
  EXPECT_THAT(result.err, HasSubstr("up/Frame/fork%(0000999999).lxz is called as get calls"));
  EXPECT_EQ(Changes(), 0U);
}

TEST_F(PutDirectory, ListsEachFolderThatFilesGoToAndNoOther) {
  Serve();
  WriteUp("Frame/fork%(1).lxz", "not sent");
  ASSERT_EQ(Run({"put", "-r", "up", bikePath}).status, 6);
  const std::size_t one = Requests("FolderContents");
  for (int number = 2; number < 10; ++number) WriteUp("Frame/fork%(" + std::to_string(number) + ").lxz", "");
  ASSERT_EQ(Run({"put", "-r", "up", bikePath}).status, 6);
  EXPECT_EQ(Requests("FolderContents"), 2 * one);
}

TEST_F(PutDirectory, RefusesWhatIsNoDirectoryOrNoFolder) {
  Serve();
  WriteUp("one.lxz", "one");
  EXPECT_EQ(Run({"put", "-r", "up/one.lxz", bikePath}).status, 2);
  EXPECT_EQ(Run({"put", "-r", "none", bikePath}).status, 8);
  EXPECT_EQ(Run({"put", "-r", "up", "up", bikePath}).status, 2);
  EXPECT_EQ(Run({"put", "-r", "up", forkPath}).status, 2);
  EXPECT_EQ(Run({"put", "-r", "up", bikePath, "--viewable", "up/one.lxz"}).status, 2);
  EXPECT_EQ(server().Log(), "");
  const ProcessResult missing = Run({"put", "-r", "up", std::string(bikePath) + "Nowhere/"});
  EXPECT_EQ(missing.status, 6);
  EXPECT_THAT(missing.err, HasSubstr("1 file of up is not sent"));
  EXPECT_EQ(Changes(), 0U);
}

}  // namespace vtdirect_test
