#include "hosts/cli/files/fetch_record.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/files/sha256.h"
#include "tests/support/temporary_directory.h"

using vtdirect_test::TemporaryDirectory;
using vtdirect_test::WriteFile;

namespace vtdirect_cli {
namespace {

FetchRecord RecordOf(const std::string& path) {
  FetchRecord record = Measure(path).value();
  record.address = "//plm/a\tb";
  record.uid = "u";
  record.version = "B.1";
  return record;
}

}  // namespace

// The values are those of the standard's own examples.
TEST(Sha256, IsThatOfTheStandard) {
  EXPECT_EQ(Sha256OfText("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(Sha256OfText(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  const TemporaryDirectory directory;
  WriteFile(directory.File("f"), "abc");
  EXPECT_EQ(Sha256OfFile(directory.File("f")), Sha256OfText("abc"));
  EXPECT_EQ(Sha256OfFile(directory.File("none")), "");
  EXPECT_EQ(Sha256OfFile(directory.path()), "");
}

TEST(FetchRecords, KeepWhatIsKnownOfAFile) {
  const TemporaryDirectory directory;
  const FetchRecords records(directory.File("state/fetched"));
  const std::string file = directory.File("f");
  WriteFile(file, "abc");
  EXPECT_FALSE(records.Find(file));
  EXPECT_EQ(records.Keep(file, RecordOf(file)), "");
  const auto found = records.Find(file);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->address, "//plm/a\tb");
  EXPECT_EQ(found->uid, "u");
  EXPECT_EQ(found->version, "B.1");
  EXPECT_EQ(found->size, 3U);
  EXPECT_TRUE(IsAsRecorded(file, *found));
  WriteFile(file, "abd");
  EXPECT_FALSE(IsAsRecorded(file, *found));
  unlink(file.c_str());
  EXPECT_FALSE(IsAsRecorded(file, *found));
  EXPECT_FALSE(records.Find(directory.File("g")));
}

TEST(FetchRecords, KnowWhichFilesHaveTheBytesOfAWorkingCopy) {
  const TemporaryDirectory directory;
  const FetchRecords records(directory.File("records"));
  const std::string copy = "korvufenloom-vt://plm.example/vt/?id=D1|W7|D2|T";
  for (const auto& [name, use] :
       {std::pair{"stored", CopyUse::Stored}, std::pair{"fetched", CopyUse::Fetched},
        std::pair{"iteration", CopyUse::None}}) {
    const std::string file = directory.File(name);
    WriteFile(file, name);
    FetchRecord record = RecordOf(file);
    record.uid = copy;
    record.copyUse = use;
    ASSERT_EQ(records.Keep(file, record), "");
    EXPECT_EQ(records.Find(file)->copyUse, use);
  }
  EXPECT_EQ(records.OfWorkingCopy(copy).size(), 2U);
  EXPECT_EQ(records.OfWorkingCopy("korvufenloom-vt://plm.example/vt/?id=D3|W7|D4|T").size(), 0U);
}

TEST(FetchRecords, BelieveNoRecordThatIsBroken) {
  const TemporaryDirectory directory;
  const FetchRecords records(directory.path());
  const std::string file = directory.File("f");
  WriteFile(file, "abc");
  ASSERT_EQ(records.Keep(file, RecordOf(file)), "");
  const std::string place = directory.File(Sha256OfText(file));
  const std::string text = vtdirect_test::ReadFile(place);
  for (const std::string& broken :
       {std::string(), text.substr(0, text.size() - 1), text + "x", "y" + text,
        std::string("vtdirect-fetched 1\n"), std::string("vtdirect-fetched 1\n\n"),
        std::string("vtdirect-fetched 1\n/other\ta\tu\tB.1\t3\tff\n")}) {
    WriteFile(place, broken);
    EXPECT_FALSE(records.Find(file)) << broken;
  }
}

TEST(BehindLinks, LeadsToAFileThatIsNotThereYet) {
  const TemporaryDirectory directory;
  ASSERT_EQ(symlink("b", directory.File("a").c_str()), 0);
  ASSERT_EQ(symlink(directory.File("c").c_str(), directory.File("b").c_str()), 0);
  EXPECT_EQ(BehindLinks(directory.File("a")), directory.File("c"));
  EXPECT_EQ(BehindLinks("none"), "none");
}

}  // namespace vtdirect_cli
