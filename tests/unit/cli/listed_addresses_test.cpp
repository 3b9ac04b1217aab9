#include "hosts/cli/many/listed_addresses.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "tests/support/temporary_directory.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace vtdirect_cli {
namespace {

[[nodiscard]] const CommandRow& CommandOf(std::string_view name) {
  return *std::find_if(Commands().begin(), Commands().end(),
                       [name](const CommandRow& row) { return row.name == name; });
}

}  // namespace

TEST(AddressesOfList, TakesOneALine) {
  EXPECT_THAT(AddressesOfList("//a/x y\n\n//a/z\r\n//a/last", false),
              ElementsAre("//a/x y", "//a/z", "//a/last"));
  EXPECT_THAT(AddressesOfList("", false), IsEmpty());
  EXPECT_THAT(AddressesOfList("\n\r\n", false), IsEmpty());
}

TEST(AddressesOfList, TakesWhatEndsWithAZeroByteAsItIs) {
  EXPECT_THAT(AddressesOfList(std::string_view("//a/x\ny\r\0\0//a/z\n", 16), true),
              ElementsAre("//a/x\ny\r", "//a/z\n"));
}

TEST(WithListedAddresses, PutsTheListsBehindWhatWasGiven) {
  const vtdirect_test::TemporaryDirectory directory;
  std::ofstream(directory.File("one")) << "//a/2\n//a/3\n";
  std::ofstream(directory.File("two")) << "//a/4\n";
  Arguments arguments;
  arguments.Set("ADDRESS", {"//a/1"});
  arguments.Set("from", {directory.File("one"), directory.File("two")});
  const auto all = WithListedAddresses(CommandOf("info"), arguments);
  ASSERT_TRUE(all);
  EXPECT_THAT(all->All("ADDRESS"), ElementsAre("//a/1", "//a/2", "//a/3", "//a/4"));
}

TEST(WithListedAddresses, TakesFilesWhereACommandTakesSeveralOfThem) {
  const vtdirect_test::TemporaryDirectory directory;
  std::ofstream(directory.File("list")) << "two.lxz\nthree.lxz\n";
  Arguments arguments;
  arguments.Set("FILE", {"one.lxz"});
  arguments.Set("ADDRESS", {"//a/f/"});
  arguments.Set("from", {directory.File("list")});
  const auto all = WithListedAddresses(CommandOf("put"), arguments);
  ASSERT_TRUE(all);
  EXPECT_THAT(all->All("FILE"), ElementsAre("one.lxz", "two.lxz", "three.lxz"));
  EXPECT_THAT(all->All("ADDRESS"), ElementsAre("//a/f/"));
}

TEST(WithListedAddresses, SaysWhichListCannotBeRead) {
  Arguments arguments;
  arguments.Set("from", {"/no/such/list"});
  const auto all = WithListedAddresses(CommandOf("get"), arguments);
  ASSERT_FALSE(all);
  EXPECT_EQ(all.failure().code, ExitCode::LocalFile);
  EXPECT_EQ(all.failure().Text(), "cannot read the list in /no/such/list: No such file or directory");
}

TEST(WithListedAddresses, TakesTheFormOfAListWithAListAlone) {
  Arguments arguments;
  arguments.Set("ADDRESS", {"//a/1"});
  arguments.Set("null", {"true"});
  const auto all = WithListedAddresses(CommandOf("get"), arguments);
  ASSERT_FALSE(all);
  EXPECT_EQ(all.failure().code, ExitCode::Usage);
}

}  // namespace vtdirect_cli
