#include <gmock/gmock.h>

#include <string>

#include "tests/e2e/mount/mount_writing_fixture.h"

namespace vtdirect_test {
namespace {

// fio writes blocks at places of its own choice, and reads and verifies them after that.
class Fio : public MountWriting {
 protected:
  void SetUp() override {
    MountWriting::SetUp();
    if (!IsSkipped() && Shell("command -v fio").status != 0) GTEST_SKIP() << "there is no fio";
  }
  // fio begins a file that is too short by deleting it, which no document allows.
  void MakeLong(const std::string& name) {
    ASSERT_EQ(Run({"checkout", "-q", "//sim/" + name}).status, 0);
    ASSERT_EQ(Shell("head -c 1048576 /dev/zero >'" + Tree(name) + "'").err, "");
  }
  void Verify(const std::string& jobs) {
    const auto result = Shell(
        "fio --rw=randwrite --bs=4k --verify=crc32c --do_verify=1 --overwrite=1 --output=fio.out " + jobs);
    EXPECT_EQ(result.status, 0) << result.err << result.out << ReadFile(Here("fio.out"));
  }
  void ExpectTheServerHasWhatTheTreeShows(const std::string& name) {
    EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
    const std::string stored = OnServer("//sim/" + name);
    EXPECT_EQ(stored.size(), std::size_t{1} << 20U);
    EXPECT_TRUE(stored == Text(Tree(name)));
    EXPECT_NE(stored.find_first_not_of('\0'), std::string::npos);
  }
};

TEST_F(Fio, VerifiesWhatItWroteToADocument) {
  Serve();
  Mount({"--write"});
  MakeLong(forkAddress);
  Verify("--name=verify --size=1m --filename='" + Fork() + "'");
  ExpectTheServerHasWhatTheTreeShows(forkAddress);
}

TEST_F(Fio, VerifiesWhatSeveralJobsWroteToADocumentEach) {
  Serve();
  Mount({"--write"});
  std::string jobs = "--size=1m";
  const std::string names[] = {forkAddress, std::string(frameFolder) + "frame.lxz",
                               std::string(frameFolder) + "welding manual.xml"};
  for (const std::string& name : names) {
    MakeLong(name);
    jobs += " --name=job --filename='" + Tree(name) + "'";
  }
  Verify(jobs);
  for (const std::string& name : names) ExpectTheServerHasWhatTheTreeShows(name);
}

// Each of them has a quarter of the document, opens it, and closes it while others go on.
TEST_F(Fio, VerifiesWhatSeveralJobsWroteToOneDocument) {
  Serve();
  Mount({"--write"});
  MakeLong(forkAddress);
  for (const std::string kind : {"", "--thread "}) {
    Verify(kind + "--name=verify --numjobs=4 --size=256k --offset_increment=256k --filename='" + Fork() +
           "'");
    ExpectTheServerHasWhatTheTreeShows(forkAddress);
  }
}

}  // namespace
}  // namespace vtdirect_test
