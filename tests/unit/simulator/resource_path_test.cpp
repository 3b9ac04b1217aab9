#include "simulator/wire/resource_path.h"

#include <gtest/gtest.h>

namespace vantry_sim {
namespace {

using Target = ResourcePath::Target;

TEST(ResourcePath, ReadsContainersWithAndWithoutACast) {
  auto path = ParseResourcePath({"Containers"});
  ASSERT_TRUE(path);
  EXPECT_EQ(path->target, Target::Containers);
  EXPECT_EQ(path->cast, "");
  path = ParseResourcePath({"Containers", "ZVK.DataAdmin.Site"});
  ASSERT_TRUE(path);
  EXPECT_EQ(path->cast, "ZVK.DataAdmin.Site");
}

TEST(ResourcePath, ReadsFolderChainsOfAnyLength) {
  const auto roots = ParseResourcePath({"Containers('C1')", "Folders"});
  ASSERT_TRUE(roots);
  EXPECT_EQ(roots->container, "C1");
  EXPECT_EQ(roots->target, Target::Folders);
  EXPECT_TRUE(roots->folders.empty());

  const auto deep = ParseResourcePath({"Containers('C1')", "Folders('F1')", "Folders('F''2')", "Folders"});
  ASSERT_TRUE(deep);
  EXPECT_EQ(deep->folders, (std::vector<std::string>{"F1", "F'2"}));

  std::vector<std::string> longChain(5000, "Folders('F')");
  longChain.insert(longChain.begin(), "Containers('C')");
  longChain.push_back("Folders");
  EXPECT_EQ(ParseResourcePath(longChain)->folders.size(), 5000U);
}

TEST(ResourcePath, ReadsContentsWithTheirType) {
  const auto path = ParseResourcePath(
      {"Containers('C1')", "Folders('F1')", "FolderContents", "ZVK.DynamicDocMgmt.DynamicDocument"});
  ASSERT_TRUE(path);
  EXPECT_EQ(path->target, Target::Contents);
  EXPECT_EQ(path->contentType, "ZVK.DynamicDocMgmt.DynamicDocument");
}

TEST(ResourcePath, RefusesEveryOtherForm) {
  const std::vector<std::vector<std::string>> cases = {
      {},
      {""},
      {"Folders"},
      {"Containers()"},
      {"Containers('')"},
      {"Containers('C1'"},
      {"Containers('C'1')"},
      {"Containers('C1''')x"},
      {"Containers", "Folders"},
      {"Containers('C1')"},
      {"Containers('C1')", "FolderContents"},
      {"Containers('C1')", "Folders('F1')"},
      {"Containers('C1')", "Folders", "more"},
      {"Containers('C1')", "Folders('F1')", "FolderContents", "other"},
      {"Containers('C1')", "Folders('F1')", "FolderContents", "ZVK.A", "ZVK.B"},
  };
  for (const auto& segments : cases)
    EXPECT_FALSE(ParseResourcePath(segments)) << testing::PrintToString(segments);
}

}  // namespace
}  // namespace vantry_sim
