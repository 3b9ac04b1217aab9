#include "hosts/mount/tree/folder_listing.h"

#include <gtest/gtest.h>

namespace vtdirect_mount {
namespace {

TEST(FolderListing, KeepsTheServersOrderAndPlainNames) {
  FolderListing listing;
  listing.Add("Frames", true);
  listing.Add("what%3f.txt", false);
  listing.Add("a.txt", false);
  ASSERT_EQ(listing.entries().size(), 3U);
  EXPECT_EQ(listing.entries()[1].shown, "what?.txt");
  EXPECT_EQ(listing.entries()[2].shown, "a.txt");
  EXPECT_EQ(listing.documents(), 2U);
  ASSERT_NE(listing.Find("what?.txt"), nullptr);
  EXPECT_EQ(listing.Find("what?.txt")->name, "what%3f.txt");
  EXPECT_EQ(listing.Find("what%3f.txt"), nullptr);
}

TEST(FolderListing, ShowsADocumentOnceThatIsListedForEachVersion) {
  FolderListing listing;
  listing.Add("what%3f.txt", false);
  listing.Add("what%3f.txt", false);
  EXPECT_EQ(listing.entries().size(), 1U);
  EXPECT_EQ(listing.documents(), 1U);
}

TEST(FolderListing, ShowsADocumentBesideAFolderOfItsName) {
  FolderListing listing;
  listing.Add("Frames", true);
  listing.Add("Frames", false);
  ASSERT_EQ(listing.entries().size(), 2U);
  EXPECT_TRUE(listing.Find("Frames")->isFolder);
  ASSERT_NE(listing.Find("Frames~"), nullptr);
  EXPECT_EQ(listing.Find("Frames~")->name, "Frames");
}

}  // namespace
}  // namespace vtdirect_mount
