#include "browsing/dir_entry.h"

#include <gtest/gtest.h>

namespace lxservices::cms_interface::vantry {
namespace {

TEST(DirEntry, AFilesNameIsEscapedAndADirectorysIsNot) {
  std::string names;
  const DirEntryCallback callback = [&names](const DirEntryInfoExt& entry) {
    names.append(entry.name).append(entry.isDirectory ? " dir" : " file").append(";");
    EXPECT_STREQ(entry.id, "I1");
    EXPECT_EQ(entry.details, nullptr);
    EXPECT_EQ(entry.versions, nullptr);
    EXPECT_EQ(entry.versionIds, nullptr);
  };
  EmitDirEntry(callback, "a|b", "I1", EntryKind::File);
  EmitDirEntry(callback, "a|b", "I1", EntryKind::Directory);
  EmitDirEntry(callback, "plain.lxz", "I1", EntryKind::File);
  EXPECT_EQ(names, "a%7cb file;a|b dir;plain.lxz file;");
}

}  // namespace
}  // namespace lxservices::cms_interface::vantry
