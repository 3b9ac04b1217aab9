#include "browsing/context_kind.h"

#include <gtest/gtest.h>

namespace lxservices::cms_interface::vantry {
namespace {

TEST(ContextKind, EachKindHasItsRestWordAndItsODataType) {
  EXPECT_EQ(RestWordOf(ContextKind::Product), "Product");
  EXPECT_EQ(RestWordOf(ContextKind::Library), "Library");
  EXPECT_EQ(RestWordOf(ContextKind::Project), "Project");
  EXPECT_EQ(RestWordOf(ContextKind::Site), "Site");
  EXPECT_EQ(RestWordOf(ContextKind::Organization), "Organization");
  EXPECT_EQ(ODataTypeOf(ContextKind::Product), "ZVK.DataAdmin.ProductContainer");
  EXPECT_EQ(ODataTypeOf(ContextKind::Library), "ZVK.DataAdmin.LibraryContainer");
  EXPECT_EQ(ODataTypeOf(ContextKind::Project), "ZVK.DataAdmin.ProjectContainer");
  EXPECT_EQ(ODataTypeOf(ContextKind::Site), "ZVK.DataAdmin.Site");
  EXPECT_EQ(ODataTypeOf(ContextKind::Organization), "ZVK.DataAdmin.OrganizationContainer");
}

TEST(ContextKind, AnyOtherNumberHasNeither) {
  for (const int number : {-1, 0, 6, 99}) {
    EXPECT_EQ(RestWordOf(static_cast<ContextKind>(number)), "") << number;
    EXPECT_EQ(ODataTypeOf(static_cast<ContextKind>(number)), "") << number;
  }
}

TEST(ContextKind, AWordIsComparedExactly) {
  EXPECT_EQ(KindOfRestWord("Product"), ContextKind::Product);
  EXPECT_EQ(KindOfRestWord("Library"), ContextKind::Library);
  EXPECT_EQ(KindOfRestWord("Project"), ContextKind::Project);
  EXPECT_EQ(KindOfRestWord("Site"), ContextKind::Site);
  EXPECT_EQ(KindOfRestWord("Organization"), ContextKind::Organization);
  for (const char* word : {"product", "Products", "Product ", "", "ZVK.DataAdmin.Site"}) {
    EXPECT_EQ(KindOfRestWord(word), ContextKind::None) << word;
  }
}

}  // namespace
}  // namespace lxservices::cms_interface::vantry
