#include "hosts/mount/cache/facts_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/temporary_directory.h"

namespace vtdirect_mount {
namespace {

class FactsFileTest : public testing::Test {
 protected:
  [[nodiscard]] std::string Path() const { return directory_.File("facts"); }

  vtdirect_test::TemporaryDirectory directory_;
};

TEST_F(FactsFileTest, KeepsFactsFromOneRunToTheNext) {
  {
    FactsFile file(Path());
    file.Load();
    file.Keep("plm.example/ D1 of ä", {12, 1'700'000'000});
    file.Keep("plm.example/ D2", {0, -5});
  }
  FactsFile file(Path());
  file.Load();
  EXPECT_EQ(file.Find("plm.example/ D1 of ä"), (Facts{12, 1'700'000'000}));
  EXPECT_EQ(file.Find("plm.example/ D2"), (Facts{0, -5}));
  EXPECT_EQ(file.Find("plm.example/ D3"), std::nullopt);
}

TEST_F(FactsFileTest, IsForItsUserAlone) {
  FactsFile(Path()).Keep("a", {1, 2});
  struct stat status = {};
  ASSERT_EQ(stat(Path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(FactsFileTest, PassesOverWhatItCannotRead) {
  vtdirect_test::WriteFile(
      Path(),
      "1 12 34 good\n2 1 2 another form\n1 x 2 no number\n1 1\n\n1 99999999999999999999 1 "
      "too large\n1 5 6 cut off");
  FactsFile file(Path());
  file.Load();
  EXPECT_EQ(file.Find("good"), (Facts{12, 34}));
  for (const char* uid : {"another form", "no number", "too large", "cut off"}) {
    EXPECT_EQ(file.Find(uid), std::nullopt) << uid;
  }
}

TEST_F(FactsFileTest, KeepsTheTimeThatWasFirst) {
  FactsFile(Path()).Keep("a", {1, 100});
  FactsFile(Path()).Keep("a", {1, 200});
  FactsFile file(Path());
  file.Load();
  EXPECT_EQ(file.Find("a"), (Facts{1, 100}));
}

TEST_F(FactsFileTest, TakesNoNameThatWouldBreakALine) {
  EXPECT_EQ(LineOfFacts("a\nb", {1, 2}), "");
  EXPECT_EQ(LineOfFacts("", {1, 2}), "");
  EXPECT_EQ(LineOfFacts("a b", {1, 2}), "1 1 2 a b\n");
}

}  // namespace
}  // namespace vtdirect_mount
