#include <functional>
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

constexpr Row rows[] = {
    {"BrowserInfo", [](const char* path) { BrowserInfo(path, ignored); }, Resolver::File, 3},
    {"GetFileDownloadURL", [](const char* path) { GetFileDownloadURL(path, ignored, nullptr); },
     Resolver::File, 3},
    {"FileExists", [](const char* path) { FileExists(path); }, Resolver::File, 1},
    {"GetUID", [](const char* path) { GetUID(path); }, Resolver::File, 1},
    {"VantryEditAttributesURL", [](const char* path) { VantryEditAttributesURL(path); }, Resolver::FileById,
     3},
    {"GetVFSFolderPath", [](const char* path) { GetVFSFolderPath(path); }, Resolver::Target, 3},
    {"GetVFSPathLatest", [](const char* path) { GetVFSPathLatest(path); }, Resolver::Target, 3},
    {"GetVFSPathVersioned", [](const char* path) { GetVFSPathVersioned(path); }, Resolver::Target, 3},
    {"GetServerNickname", [](const char* path) { GetServerNickname(path); }, Resolver::Target, 1},
    {"GetServerURL", [](const char* path) { GetServerURL(path); }, Resolver::Target, 1},
    {"CanPathShowDetails", [](const char* path) { CanPathShowDetails(path); }, Resolver::Target, 1},
    {"CanPathShowVersions", [](const char* path) { CanPathShowVersions(path); }, Resolver::Target, 1},
    {"IsPathWritable", [](const char* path) { IsPathWritable(path); }, Resolver::Target, 1},
    {"IsCheckoutSupported", [](const char* path) { IsCheckoutSupported(path); }, Resolver::Target, 1},
    {"TranslationSupported", [](const char* path) { TranslationSupported(path); }, Resolver::Target, 3},
    {"SupportsSeparatedSources", [](const char* path) { SupportsSeparatedSources(path); }, Resolver::Target,
     1},
    {"SupportsVCSMetadata", [](const char* path) { SupportsVCSMetadata(path); }, Resolver::Target, 1},
};

class ResolutionTable : public FakeServerTest, public testing::WithParamInterface<Row> {};

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

TEST_P(ResolutionTable, AsksNothingOfTheServerForAPathIfItNeedsAUid) {
  answers.idsByPath["a"] = "D1";
  GetParam().call("//plm/a");
  EXPECT_TRUE(trace.lines().empty());
  if (GetParam().resolver == Resolver::FileById) {
    EXPECT_TRUE(answers.calls.empty());
  }
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

INSTANTIATE_TEST_SUITE_P(Of, ResolutionTable, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
