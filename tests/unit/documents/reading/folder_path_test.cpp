#include "documents/reading/folder_path.h"

#include <gtest/gtest.h>

#include <ostream>

#include "base/result.h"

namespace {

using lxservices::cms_interface::vantry::DocumentRecord;
using lxservices::cms_interface::vantry::GetFolderPathInContext;

struct Row {
  const char* contextName;
  const char* folderPath;
  const char* folderId;
  bool found;
  const char* path;
};

void PrintTo(const Row& row, std::ostream* out) {
  *out << row.folderPath << " in " << row.contextName << ", folder " << row.folderId;
}

constexpr const char* cabinet = "OR:vn.folder.Cabinet:4711";
constexpr const char* subFolder = "OR:vn.folder.SubFolder:4712";

class FolderPathInContext : public testing::TestWithParam<Row> {};

TEST_P(FolderPathInContext, IsTheLocationWithoutTheContext) {
  const Row& row = GetParam();
  DocumentRecord record;
  record.contextName = row.contextName;
  record.folderPath = row.folderPath;
  record.folderId = row.folderId;
  std::string path = "untouched";
  EXPECT_EQ(lxservices::cms_interface::HandOver(GetFolderPathInContext(record), path), row.found);
  EXPECT_EQ(path, row.path);
}

INSTANTIATE_TEST_SUITE_P(
    Locations, FolderPathInContext,
    testing::Values(
        // A folder below the context, whatever the kind of the folder.
        Row{"Gadget", "/Gadget/Sub/Deep", subFolder, true, "/Sub/Deep"},
        Row{"Gadget", "/Gadget/Sub/Deep/", subFolder, true, "/Sub/Deep/"},
        Row{"Gadget", "/Gadget/Sub", "", true, "/Sub"}, Row{"Gadget", "/Gadget/Sub", cabinet, true, "/Sub"},
        // Directly under the context: only its cabinet is a folder.
        Row{"Gadget", "/Gadget/", cabinet, true, "/"}, Row{"Gadget", "/Gadget", cabinet, true, ""},
        Row{"Gadget", "/Gadget/", subFolder, false, "untouched"},
        Row{"Gadget", "/Gadget", subFolder, false, "untouched"},
        Row{"Gadget", "/Gadget", "", false, "untouched"},
        // The class is what is between the first and the last colon, exactly.
        Row{"Gadget", "/Gadget", "vn.folder.Cabinet", false, "untouched"},
        Row{"Gadget", "/Gadget", "OR:vn.folder.Cabinet", false, "untouched"},
        Row{"Gadget", "/Gadget", "vn.folder.Cabinet:7", false, "untouched"},
        Row{"Gadget", "/Gadget", ":vn.folder.Cabinet:", true, ""},
        Row{"Gadget", "/Gadget", "a:vn.folder.Cabinet:b:c", false, "untouched"},
        Row{"Gadget", "/Gadget", "OR:vn.folder.Cabinets:7", false, "untouched"},
        // No location at all.
        Row{"Gadget", "", cabinet, false, "untouched"}, Row{"Gadget", "/", cabinet, false, "untouched"},
        Row{"", "/", cabinet, false, "untouched"}, Row{"Gadget", "Gadget/Sub", cabinet, false, "untouched"},
        // Another context; but the beginning of its name is all that counts.
        Row{"Gadget", "/Other/Sub", cabinet, false, "untouched"},
        Row{"Gadget", "/gadget/Sub", cabinet, false, "untouched"},
        Row{"Gadget", "/Gadget2/Sub", subFolder, true, "/Sub"},
        Row{"", "/Gadget/Sub", subFolder, true, "/Sub"},
        // A "/" in the context's name counts as the second one.
        Row{"Ga/dget", "/Ga/dget/Sub", subFolder, true, "/dget/Sub"}),
    [](const testing::TestParamInfo<Row>& row) { return "Row" + std::to_string(row.index); });

}  // namespace
