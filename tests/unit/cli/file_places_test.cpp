#include "hosts/cli/many/file_places.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {

TEST(FilePlaces, KeepWhatHasOneNameApart) {
  FilePlaces places;
  EXPECT_EQ(places.TakeForFile("fork.lxz"), "fork.lxz");
  EXPECT_EQ(places.TakeForFile("fork.lxz"), "fork%(2).lxz");
  EXPECT_EQ(places.TakeForFile("fork.lxz"), "fork%(3).lxz");
  EXPECT_EQ(places.TakeForFile("frame.lxz"), "frame.lxz");
  // A name that is nothing but an extension, and one without.
  EXPECT_EQ(places.TakeForFile("README"), "README");
  EXPECT_EQ(places.TakeForFile("README"), "README%(2)");
}

TEST(FilePlaces, KeepAFolderApartFromAFileOfItsName) {
  FilePlaces places;
  EXPECT_EQ(places.TakeForFolder("v1.0"), "v1.0");
  EXPECT_EQ(places.TakeForFolder("v1.0"), "v1.0%(2)");
  EXPECT_EQ(places.TakeForFile("v1.0"), "v1%(2).0");
}

}  // namespace vtdirect_cli
