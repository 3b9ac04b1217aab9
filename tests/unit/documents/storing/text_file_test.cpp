#include "documents/storing/text_file.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include "connection/scoped_temp_path.h"
#include "tests/support/temporary_directory.h"

namespace vtdirect_test {
namespace {

using lxservices::cms_interface::vantry::MakeTempFile;
using lxservices::cms_interface::vantry::WriteTextFile;

TEST(TextFile, HoldsTheTextByteForByteInTheTemporaryDirectory) {
  const TemporaryDirectory directory;
  const std::string text("a\n\r\n\0z", 6);
  const std::string path = WriteTextFile(MakeTempFile("upload", "json"), text);
  ASSERT_EQ(directory.Entries().size(), 1u);
  EXPECT_EQ(path, directory.File(directory.Entries().front()));
  EXPECT_TRUE(directory.Entries().front().starts_with("upload"));
  EXPECT_TRUE(path.ends_with(".json"));
  EXPECT_EQ(ReadFile(path), text);
}

TEST(TextFile, IsNoneWithoutADirectory) {
  const TemporaryDirectory directory;
  setenv("TMPDIR", directory.File("missing").c_str(), 1);
  EXPECT_EQ(WriteTextFile(MakeTempFile("upload", "json"), "x"), "");
  EXPECT_TRUE(directory.Entries().empty());
}

}  // namespace
}  // namespace vtdirect_test
