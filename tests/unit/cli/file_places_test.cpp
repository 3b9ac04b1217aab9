#include "hosts/cli/many/file_places.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {

TEST(FilePlaces, KeepWhatHasOneNameApart) {
  FilePlaces places;
  EXPECT_EQ(places.Take("fork.lxz", false), "fork.lxz");
  EXPECT_EQ(places.Take("fork.lxz", false), "fork%(2).lxz");
  EXPECT_EQ(places.Take("fork.lxz", false), "fork%(3).lxz");
  EXPECT_EQ(places.Take("frame.lxz", false), "frame.lxz");
  // A name that is nothing but an extension, and one without.
  EXPECT_EQ(places.Take("README", false), "README");
  EXPECT_EQ(places.Take("README", false), "README%(2)");
}

TEST(FilePlaces, KeepAFolderApartFromAFileOfItsName) {
  FilePlaces places;
  EXPECT_EQ(places.Take("v1.0", true), "v1.0");
  EXPECT_EQ(places.Take("v1.0", true), "v1.0%(2)");
  EXPECT_EQ(places.Take("v1.0", false), "v1%(2).0");
}

}  // namespace vtdirect_cli
