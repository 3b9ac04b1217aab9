#include "hosts/cli/many/matched_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/support/temporary_directory.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace vtdirect_cli {

class MatchedFilesTest : public testing::Test {
 protected:
  MatchedFilesTest() {
    for (const char* name : {"b.lxz", "a.lxz", ".hidden.lxz", "c.xml", "[1].lxz"}) {
      std::ofstream(directory_.File(name)) << name;
    }
    std::filesystem::create_directory(directory_.File("d.lxz"));
  }
  [[nodiscard]] std::string At(const std::string& name) const { return directory_.File(name); }

  vtdirect_test::TemporaryDirectory directory_;
};

TEST_F(MatchedFilesTest, AreFoundByThePatternInTheirOrder) {
  const MatchedFiles found = FindMatchedFiles({At("c.xml"), At("?.lxz"), At("*.x?l")});
  EXPECT_THAT(found.files, ElementsAre(At("c.xml"), At("a.lxz"), At("b.lxz"), At("c.xml")));
  EXPECT_THAT(found.failures, IsEmpty());
  EXPECT_THAT(FindMatchedFiles({At("[1]*")}).files, ElementsAre(At("[1].lxz")));
}

TEST_F(MatchedFilesTest, AreTheOperandsThemselvesWithoutAPattern) {
  EXPECT_THAT(FindMatchedFiles({At("none"), At("[a].lxz")}).files, ElementsAre(At("none"), At("[a].lxz")));
  std::ofstream(At("*.lxz")) << "called so";
  EXPECT_FALSE(IsFilePattern(At("*.lxz")));
  EXPECT_THAT(FindMatchedFiles({At("*.lxz")}).files, ElementsAre(At("*.lxz")));
}

TEST_F(MatchedFilesTest, AreMissedByTheNameOfThePattern) {
  const MatchedFiles found = FindMatchedFiles({At("*.none")});
  EXPECT_THAT(found.files, IsEmpty());
  ASSERT_EQ(found.failures.size(), 1U);
  EXPECT_EQ(found.failures.front().code, ExitCode::LocalFile);
  EXPECT_EQ(found.failures.front().Text(), "no file matches " + At("*.none"));
}

}  // namespace vtdirect_cli
