#include "documents/reading/file_info.h"

#include <gtest/gtest.h>

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

ContentRecord SectionOfSize(std::uint64_t size) {
  ContentRecord section;
  section.fileSize = size;
  return section;
}

DerivedSourceDependency Dependency(const char* child, const char* source) {
  DerivedSourceDependency dependency;
  dependency.asStoredChildName = child;
  dependency.sourceId = source;
  return dependency;
}

TEST(VersionText, IsRevisionFullStopIteration) {
  DocumentSummary summary;
  summary.revision = "B";
  summary.iteration = "3";
  EXPECT_EQ(VersionText(summary), "B.3");
  EXPECT_EQ(VersionText(DocumentSummary{}), ".");
}

TEST(FileInfoOfARecord, TakesVersionNameAndLeavesTheIdEmpty) {
  DocumentRecord record;
  record.id = "D1";
  record.revision = "A";
  record.iteration = "12";
  record.master.cadName = "a|b.lxz";
  record.master.name = "another";
  const FileInfo info = MakeFileInfo(record);
  EXPECT_EQ(info.id, "");
  EXPECT_EQ(info.version, "A.12");
  EXPECT_EQ(info.cadName, "a|b.lxz");
}

TEST(FileInfoOfARecord, AddsTheSizesOfThePrimarySectionsOnly) {
  DocumentRecord record;
  record.contentSections = {SectionOfSize(5'000'000'000), SectionOfSize(7)};
  record.secondaryContents = {SectionOfSize(100)};
  EXPECT_EQ(MakeFileInfo(record).size, 5'000'000'007u);
  EXPECT_EQ(MakeFileInfo(DocumentRecord{}).size, 0u);
}

TEST(FileInfoOfARecord, MapsChildNamesToSourcesTheLaterWinning) {
  DocumentRecord record;
  record.dependencies = {Dependency("b", "S1"), Dependency("a", "S2"), Dependency("b", "S3"),
                         Dependency("", "")};
  const std::map<std::string, std::string> expected{{"", ""}, {"a", "S2"}, {"b", "S3"}};
  EXPECT_EQ(MakeFileInfo(record).dependencies, expected);
}

}  // namespace
