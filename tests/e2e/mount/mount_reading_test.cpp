#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <filesystem>

#include "tests/e2e/mount/mount_fixture.h"

namespace vtdirect_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

TEST_F(MountTest, ShowsContextsFoldersAndDocumentsByTheirNames) {
  Serve();
  Mount();
  EXPECT_THAT(Names(Tree()), ElementsAre("Libraries", "Products", "Projects", "Sites"));
  EXPECT_THAT(Names(Tree("Products")), ElementsAre("Lastenrad Größe L", "Trekking Bike"));
  EXPECT_THAT(Names(Tree("Products/Trekking Bike")), ElementsAre("Folders", "Workspaces"));
  EXPECT_THAT(Names(Tree(frameFolder)), ElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
  EXPECT_THAT(Names(Tree("Products/Trekking Bike/Folders/Nothing yet")), IsEmpty());
}

TEST_F(MountTest, GivesEachDocumentTheBytesOfItsNewestVersion) {
  Serve();
  Mount();
  const std::string content = server().Get(forkContent);
  ASSERT_THAT(content, StartsWith(forkHead));
  EXPECT_EQ(Text(Tree(forkAddress)), content);
  EXPECT_EQ(std::filesystem::file_size(Tree(forkAddress)), content.size());
  EXPECT_EQ(std::filesystem::file_size(Tree("Products/Trekking Bike/Folders/empty note.lxz")), 0U);
  EXPECT_EQ(Text(Tree("Products/Trekking Bike/Folders/no content.lxz")), "");
}

TEST_F(MountTest, TellsDocumentsOfOneNameApart) {
  Serve();
  Mount();
  EXPECT_EQ(Text(Tree(std::string(drivetrainFolder) + "gear.lxz")),
            server().Get("/servlet/rest/v1/content/streams/10030/gear.lxz"));
  EXPECT_EQ(Text(Tree("Products/Lastenrad Größe L/Folders/Drivetrain/gear.lxz")),
            server().Get("/servlet/rest/v1/content/streams/10130/gear.lxz"));
}

TEST_F(MountTest, EscapesANameThatNoFileCanHave) {
  Serve();
  Mount();
  const auto names = Names(Tree(drivetrainFolder));
  EXPECT_THAT(names, Contains("bearing 1%2f2%22.lxz"));
  EXPECT_THAT(names, Contains("odd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz"));
  EXPECT_THAT(names, Contains("O'Ring 12mm.lxz"));
  EXPECT_THAT(Text(Tree(std::string(drivetrainFolder) + "bearing 1%2f2%22.lxz")), HasSubstr("version A.1\n"));
}

TEST_F(MountTest, ShowsFilesThatNobodyCanChange) {
  Serve();
  Mount();
  struct stat status = {};
  ASSERT_EQ(stat(Tree(forkAddress).c_str(), &status), 0);
  EXPECT_EQ(status.st_mode, S_IFREG | 0444U);
  EXPECT_EQ(status.st_uid, getuid());
  EXPECT_NEAR(static_cast<double>(status.st_mtime), static_cast<double>(std::time(nullptr)), 60);
  EXPECT_EQ(open(Tree(forkAddress).c_str(), O_WRONLY | O_CLOEXEC), -1);
  EXPECT_EQ(errno, EROFS);
  EXPECT_EQ(mkdir(Tree("Products/new").c_str(), 0700), -1);
  EXPECT_EQ(errno, EROFS);
  EXPECT_EQ(unlink(Tree(forkAddress).c_str()), -1);
  EXPECT_EQ(errno, EROFS);
  EXPECT_EQ(ErrorOfReading(Tree("Products/nothing")), ENOENT);
  EXPECT_EQ(ErrorOfReading(Tree(std::string(frameFolder) + "nothing.lxz")), ENOENT);
}

TEST_F(MountTest, KeepsTheTimeOfAVersionFromOneMountToTheNext) {
  Serve();
  Mount();
  struct stat before = {};
  ASSERT_EQ(stat(Tree(forkAddress).c_str(), &before), 0);
  SignalMount(SIGTERM);
  EXPECT_EQ(WaitForMount().status, 0);
  SleepMilliseconds(1100);
  Mount();
  struct stat after = {};
  ASSERT_EQ(stat(Tree(forkAddress).c_str(), &after), 0);
  EXPECT_EQ(after.st_mtime, before.st_mtime);
  EXPECT_EQ(after.st_ino, before.st_ino);
}

TEST_F(MountTest, HoldsTheVersionsInAFolderThatNoListingShows) {
  Serve();
  Mount();
  EXPECT_THAT(Names(Tree(frameFolder)), Not(Contains(".versions")));
  const std::string versions = std::string(frameFolder) + ".versions";
  EXPECT_THAT(Names(Tree(versions)), ElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
  EXPECT_THAT(Names(Tree(versions + "/fork.lxz")), ElementsAre("A.1.lxz", "A.2.lxz", "B.1.lxz"));
  EXPECT_EQ(Text(Tree(versions + "/fork.lxz/A.1.lxz")),
            server().Get("/servlet/rest/v1/content/streams/11010/fork.lxz"));
  EXPECT_EQ(Text(Tree(versions + "/fork.lxz/B.1.lxz")), server().Get(forkContent));
  EXPECT_EQ(ErrorOfReading(Tree(versions + "/fork.lxz/C.1.lxz")), ENOENT);
}

TEST_F(MountTest, HoldsTheNewestVersionAloneWhereTheServerListsNone) {
  Serve({"--generation", "gateway"});
  Mount();
  EXPECT_THAT(Names(Tree(frameFolder)), ElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
  EXPECT_EQ(Text(Tree(forkAddress)), server().Get(forkContent));
  EXPECT_THAT(Names(Tree(std::string(frameFolder) + ".versions/fork.lxz")), ElementsAre("B.1.lxz"));
}

TEST_F(MountTest, TellsTheRestByExtendedAttributes) {
  Serve();
  Mount();
  EXPECT_EQ(Attribute(Tree(forkAddress), "user.vantry.uid"), server().Uid("D1001") + "&file=/fork.lxz");
  EXPECT_EQ(Attribute(Tree(forkAddress), "user.vantry.version"), "B.1");
  EXPECT_EQ(Attribute(Tree(forkAddress), "user.vantry.number"), "0000100001");
  EXPECT_EQ(Attribute(Tree(forkAddress), "user.vantry.name"), "Fork");
  EXPECT_EQ(Attribute(Tree(forkAddress), "user.vantry.checked_out_by"), "");
  EXPECT_EQ(Attribute(Tree(forkAddress), "user.vantry.writable"), "no");
  EXPECT_EQ(Attribute(Tree(forkAddress), "user.vantry.address"), "//sim/" + std::string(forkAddress));
  const std::string brake = Tree(std::string(drivetrainFolder) + "brake.lxz");
  EXPECT_EQ(Attribute(brake, "user.vantry.checked_out_by"), "bruno");
  EXPECT_EQ(Attribute(brake, "user.vantry.writable"), "no");
  EXPECT_EQ(Attribute(Tree(std::string(drivetrainFolder) + "crank.lxz"), "user.vantry.writable"), "yes");
  EXPECT_EQ(Attribute(Tree(forkAddress), "security.selinux"), "(errno " + std::to_string(ENODATA) + ")");
}

TEST_F(MountTest, ListsAFolderWithoutAskingForItsDocuments) {
  Serve({"--seed", "bulk:1000"});
  Mount();
  const std::size_t before = Requests();
  EXPECT_EQ(Names(Tree("Products/Bulk/Folders/Parts")).size(), 1000U);
  // The contexts, the folders, and the folder itself: a handful, whatever is in it.
  EXPECT_LT(Requests() - before, 20U);
  EXPECT_EQ(Asked("/dkm/documents/"), 0U);
}

TEST_F(MountTest, AsksForTheRecordOfAVersionOnce) {
  Serve({"--seed", "bulk:200"});
  Mount({"--refresh", "3600"});
  const std::string line = "ls -l \"$TREE/Products/Bulk/Folders/Parts\" | wc -l";
  ASSERT_EQ(Shell(line).out, "201\n");
  const std::size_t records = Asked("/dkm/documents/D1000");
  // One for each document, and some for the first few, which are found by their paths.
  EXPECT_GE(records, 200U);
  EXPECT_LE(records, 230U);
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  ASSERT_EQ(Shell(line).out, "201\n");
  EXPECT_EQ(Asked("/dkm/documents/D1000"), records);
}

TEST_F(MountTest, FetchesAttributesAheadForAProgramThatAsksOneAfterTheOther) {
  Serve({"--seed", "bulk:64"});
  Mount({"--parallel", "4"});
  const std::string folder = Tree("Products/Bulk/Folders/Parts");
  std::vector<std::string> listed;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    listed.push_back(entry.path().string());
  ASSERT_EQ(listed.size(), 64U);
  struct stat status = {};
  for (std::size_t index = 0; index < 3; ++index) ASSERT_EQ(stat(listed[index].c_str(), &status), 0);
  // Three were asked for in the order of the listing, and the next eight come without being asked for.
  const auto records = [this] { return Asked("/dkm/documents/D1000"); };
  EXPECT_TRUE(WaitUntil([&] { return records() >= 3 + 8; }));
  const std::size_t before = records();
  for (std::size_t index = 3; index < 5; ++index) ASSERT_EQ(stat(listed[index].c_str(), &status), 0);
  EXPECT_TRUE(WaitUntil([&] { return records() >= before + 2; }));
  EXPECT_LT(records(), 64U);
}

TEST_F(MountTest, ShowsWhatIsNewAfterTheTimeOfRefreshing) {
  Serve();
  Mount({"--refresh", "1"});
  ASSERT_THAT(Names(Tree(frameFolder)), ElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
  WriteFile(Here("new.lxz"), "FENLET new\n");
  ASSERT_EQ(Run({"put", "-q", "new.lxz", "//sim/" + std::string(frameFolder)}).status, 0);
  EXPECT_TRUE(WaitUntil([this] { return Names(Tree(frameFolder)).size() == 4; }));
  EXPECT_EQ(Text(Tree(std::string(frameFolder) + "new.lxz")), "FENLET new\n");
}

TEST_F(MountTest, ShowsWhatIsNewAtOnceWhenItIsTold) {
  Serve();
  Mount({"--refresh", "3600"});
  EXPECT_EQ(Text(Tree(forkAddress)), server().Get(forkContent));
  EXPECT_EQ(Names(Tree(frameFolder)).size(), 3U);
  WriteFile(Here("fork.lxz"), "FENLET DRAWING, another one\n");
  ASSERT_EQ(Run({"put", "-q", "fork.lxz", "//sim/" + std::string(forkAddress)}).status, 0);
  WriteFile(Here("new.lxz"), "FENLET new\n");
  ASSERT_EQ(Run({"put", "-q", "new.lxz", "//sim/" + std::string(frameFolder)}).status, 0);
  EXPECT_EQ(Names(Tree(frameFolder)).size(), 3U);
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_EQ(Names(Tree(frameFolder)).size(), 4U);
  EXPECT_EQ(Text(Tree(forkAddress)), "FENLET DRAWING, another one\n");
  EXPECT_EQ(Text(Tree(std::string(frameFolder) + "new.lxz")), "FENLET new\n");
}

}  // namespace
}  // namespace vtdirect_test
