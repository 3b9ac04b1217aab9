#include <algorithm>
#include <iterator>
#include <map>
#include <ostream>

#include "public/vt_direct_manager.h"
#include "tests/unit/public/fake_server.h"

// Which exported function resolves how: one row a function, and each row is tried against an unknown server,
// an object that is not there, and a path where a UID is needed.
namespace {

using namespace VtDirectManager;
using namespace vtdirect_test;

enum class Resolver { Target, File, FileById };

struct Row {
  const char* name;
  void (*call)(const char* path);
  Resolver resolver;
  int level;  ///< of the trace of a failed resolution
};

void PrintTo(const Row& row, std::ostream* out) {
  *out << row.name;
}

std::string ignored;

std::string ignoredToo;
std::map<std::string, std::string> ignoredMap;
std::map<VtDetails, std::string> ignoredDetails;

constexpr Row rows[] = {
    {"BrowserInfo", [](const char* path) { BrowserInfo(path, ignored); }, Resolver::File, 3},
    {"Checkout", [](const char* path) { Checkout(path); }, Resolver::File, 3},
    {"GetFileDownloadURL", [](const char* path) { GetFileDownloadURL(path, ignored, nullptr); },
     Resolver::File, 3},
    {"GetFileName", [](const char* path) { GetFileName(path); }, Resolver::File, 3},
    {"GetLatest", [](const char* path) { GetLatest(path, ignored, ignoredToo); }, Resolver::File, 3},
    {"GetLatestUPath", [](const char* path) { GetLatestUPath(path); }, Resolver::File, 3},
    {"ShouldCreate", [](const char* path) { ShouldCreate(path); }, Resolver::File, 3},
    {"FileExists", [](const char* path) { FileExists(path); }, Resolver::File, 1},
    {"GetCheckoutStatus", [](const char* path) { GetCheckoutStatus(path, nullptr); }, Resolver::File, 1},
    {"GetUID", [](const char* path) { GetUID(path); }, Resolver::File, 1},
    {"ReadDetails", [](const char* path) { ReadDetails(path, ignoredDetails); }, Resolver::File, 1},
    {"Checkin", [](const char* path) { Checkin(path); }, Resolver::FileById, 3},
    {"GetSourceLinks", [](const char* path) { GetSourceLinks(path, ignoredMap); }, Resolver::FileById, 3},
    {"GetStatus", [](const char* path) { GetStatus(path, ignored, ignoredToo, nullptr); }, Resolver::FileById,
     3},
    {"GetUIDForSourceXliff", [](const char* path) { GetUIDForSourceXliff(path, ignored, ignoredToo); },
     Resolver::FileById, 3},
    {"GetXliffTranslations", [](const char* path) { GetXliffTranslations(path, ignoredMap); },
     Resolver::FileById, 3},
    {"SetXliffPublished", [](const char* path) { SetXliffPublished(path); }, Resolver::FileById, 3},
    {"UndoCheckout", [](const char* path) { UndoCheckout(path); }, Resolver::FileById, 3},
    {"UploadSourceXliff", [](const char* path) { UploadSourceXliff(path, "/tmp/x", "de"); },
     Resolver::FileById, 3},
    {"VantryEditAttributesURL", [](const char* path) { VantryEditAttributesURL(path); }, Resolver::FileById,
     3},
    {"VerifyCheckout", [](const char* path) { VerifyCheckout(path, ignored); }, Resolver::FileById, 3},
    {"GetVFSFolderPath", [](const char* path) { GetVFSFolderPath(path); }, Resolver::Target, 3},
    {"GetVFSPathLatest", [](const char* path) { GetVFSPathLatest(path); }, Resolver::Target, 3},
    {"GetVFSPathVersioned", [](const char* path) { GetVFSPathVersioned(path); }, Resolver::Target, 3},
    {"ReadDir",
     [](const char* path) {
       ReadDir(
           path, [](const char*, bool, void*) {}, nullptr);
     },
     Resolver::Target, 3},
    {"ReadDirExt",
     [](const char* path) {
       ReadDirExt(
           path, [](DirEntryExt&, void*) {}, nullptr, ReadDirFiles);
     },
     Resolver::Target, 3},
    {"FileNameAvailable", [](const char* path) { FileNameAvailable(path); }, Resolver::Target, 1},
    {"FileOrFolderExists", [](const char* path) { FileOrFolderExists(path); }, Resolver::Target, 1},
    {"GetLinkContext", [](const char* path) { GetLinkContext(path, ignored); }, Resolver::Target, 1},
    {"GetServerNickname", [](const char* path) { GetServerNickname(path); }, Resolver::Target, 1},
    {"GetServerURL", [](const char* path) { GetServerURL(path); }, Resolver::Target, 1},
    {"OpenDir", [](const char* path) { (void)OpenDir(path); }, Resolver::Target, 1},
    {"CanPathShowDetails", [](const char* path) { CanPathShowDetails(path); }, Resolver::Target, 1},
    {"CanPathShowVersions", [](const char* path) { CanPathShowVersions(path); }, Resolver::Target, 1},
    {"IsPathWritable", [](const char* path) { IsPathWritable(path); }, Resolver::Target, 1},
    {"IsCheckoutSupported", [](const char* path) { IsCheckoutSupported(path); }, Resolver::Target, 1},
    {"TranslationSupported", [](const char* path) { TranslationSupported(path); }, Resolver::Target, 3},
    {"SupportsSeparatedSources", [](const char* path) { SupportsSeparatedSources(path); }, Resolver::Target,
     1},
    {"SupportsVCSMetadata", [](const char* path) { SupportsVCSMetadata(path); }, Resolver::Target, 1},
};

class ResolutionTable : public FakeServerTest, public testing::WithParamInterface<Row> {
 protected:
  // A server that offers neither checkout nor translation: what comes after the resolution is not looked at.
  ResolutionTable() { answers.yes = false; }
};

TEST_P(ResolutionTable, TracesAnUnknownServerAtItsLevel) {
  GetParam().call("//nobody/a");
  EXPECT_EQ(trace.lines(),
            (Traces{{GetParam().level, "VtDirect", "Failed to connect to server path //nobody/a\n"}}));
  EXPECT_TRUE(answers.calls.empty());
}

TEST_P(ResolutionTable, TracesAMissingObjectAtItsLevelIfItLooksForOne) {
  GetParam().call("//plm/a");
  if (GetParam().resolver != Resolver::File) {
    EXPECT_TRUE(trace.lines().empty());
    return;
  }
  EXPECT_EQ(trace.lines(), (Traces{{GetParam().level, "VtDirect", "Failed to find file //plm/a"}}));
  EXPECT_EQ(answers.calls, Lines{"ResolvePath(a)"});
}

TEST_P(ResolutionTable, DoesNotProbeTheServer) {
  answers.reachable = false;
  GetParam().call("//plm/a");
  GetParam().call("korvufenloom-vt://plm.example/vt/?id=D1");
  for (const std::string& call : answers.calls) EXPECT_NE(call, "TestConnection");
}

TEST_P(ResolutionTable, TracesNothingForNull) {
  GetParam().call(nullptr);
  EXPECT_TRUE(trace.lines().empty());
  EXPECT_TRUE(answers.calls.empty());
}

class UidsOnly : public ResolutionTable {};

TEST_P(UidsOnly, FailSilentlyForAPathAndAskNothing) {
  answers.idsByPath["a"] = "D1";
  GetParam().call("//plm/a");
  GetParam().call("//plm/?id=D1");
  EXPECT_TRUE(trace.lines().empty());
  EXPECT_TRUE(answers.calls.empty());
}

std::vector<Row> RowsOfUidsOnly() {
  std::vector<Row> chosen;
  std::copy_if(std::begin(rows), std::end(rows), std::back_inserter(chosen),
               [](const Row& row) { return row.resolver == Resolver::FileById; });
  return chosen;
}

std::string NameOf(const testing::TestParamInfo<Row>& test) {
  return test.param.name;
}

INSTANTIATE_TEST_SUITE_P(Of, ResolutionTable, testing::ValuesIn(rows), NameOf);
INSTANTIATE_TEST_SUITE_P(Of, UidsOnly, testing::ValuesIn(RowsOfUidsOnly()), NameOf);

}  // namespace
