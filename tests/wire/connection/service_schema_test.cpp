// How a schema document is fetched, and what its errors mean.

#include "connection/service_schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using vtdirect_test::Answer;
using vtdirect_test::SentRequest;
using vtdirect_test::TraceLine;

const std::string server = "http://plm.example/vt";
const std::string versionSeven =
    R"(<Schema><Annotation Term="Core.SchemaVersion"><String>7</String></Annotation>)";
const TraceLine parseError{3, "CmsInterface", "XML parse error"};
const TraceLine noSchema{
    0, "CmsInterface",
    "Failed to get schema info servlet/odata/X/$metadata from server http://plm.example/vt"};

// A document of exactly `size` bytes that is well-formed but for what `end` brings, which is at the very
// end.
std::string Padded(const std::string& begin, std::size_t size, const std::string& end) {
  return begin + std::string(size - begin.size() - end.size(), ' ') + end;
}

class FetchSchemaTest : public testing::Test {
 protected:
  Status Fetch() { return FetchSchema(connection, "servlet/odata/X/$metadata", nullptr, &version); }

  Status Fetch(const std::string& document) {
    trace.Clear();
    version = 0;
    transport.Then(200, document);
    const Status status = Fetch();
    EXPECT_THAT(directory.Entries(), IsEmpty());
    return status;
  }

  vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::TraceRecorder trace;
  vtdirect_test::ScriptedTransport transport;
  VtConnection connection{server, [](const char*) { return false; }};
  int version = 0;
};

TEST_F(FetchSchemaTest, IsOneGetWithoutHeaders) {
  EXPECT_EQ(Fetch(versionSeven + "</Schema>"), Ok);
  EXPECT_EQ(version, 7);
  EXPECT_THAT(transport.requests(),
              ElementsAre(SentRequest{server, "GET /vt/servlet/odata/X/$metadata", "", std::nullopt}));
  EXPECT_THAT(transport.clientMarks(), ElementsAre("X-Zvk-Connected: 1"));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(FetchSchemaTest, PassesThroughATemporaryFile) {
  std::vector<std::string> during;
  Answer answer{200, versionSeven + "</Schema>"};
  answer.afterwards = [&] { during = directory.Entries(); };
  transport.Then(answer);
  EXPECT_EQ(Fetch(), Ok);
  EXPECT_THAT(during, ElementsAre(MatchesRegex("vtmeta.*\\.txt")));
  EXPECT_THAT(directory.Entries(), IsEmpty());
}

TEST_F(FetchSchemaTest, A404IsNotFoundAndTracedAsInformation) {
  transport.Then(404, versionSeven + "</Schema>");
  EXPECT_EQ(Fetch(), NotFound);
  EXPECT_EQ(version, 0);
  EXPECT_THAT(trace.lines(), ElementsAre(noSchema));
  EXPECT_THAT(trace.strayAreas(), IsEmpty());
  EXPECT_THAT(directory.Entries(), IsEmpty());
}

TEST_F(FetchSchemaTest, EveryOtherHttpFailureIsServerError) {
  for (const int status : {500, 401, 403, 302, 201, 204}) {
    trace.Clear();
    transport.Then(status, versionSeven + "</Schema>");
    EXPECT_EQ(Fetch(), ServerError) << status;
    EXPECT_EQ(version, 0) << status;
    EXPECT_THAT(trace.lines(), ElementsAre(noSchema)) << status;
    EXPECT_THAT(directory.Entries(), IsEmpty()) << status;
  }
}

TEST_F(FetchSchemaTest, ATransportFailureIsServerError) {
  transport.ThenFail(du::http::ErrorCode::TimedOut);
  EXPECT_EQ(Fetch(), ServerError);
  EXPECT_THAT(trace.lines(), ElementsAre(noSchema));
}

TEST_F(FetchSchemaTest, WithoutADirectoryForTheFileIsServerError) {
  setenv("TMPDIR", directory.File("missing").c_str(), 1);
  transport.Then(200, versionSeven + "</Schema>");
  EXPECT_EQ(Fetch(), ServerError);
  EXPECT_THAT(trace.lines(), ElementsAre(noSchema));
}

TEST_F(FetchSchemaTest, AFileThatCannotBeOpenedIsOkWithNothingRead) {
  std::string file;
  Answer answer{200, versionSeven + "</Schema>"};
  answer.afterwards = [&] {
    file = directory.File(directory.Entries().at(0));
    std::filesystem::remove(file);
  };
  transport.Then(answer);
  EXPECT_EQ(Fetch(), Ok);
  EXPECT_EQ(version, 0);
  EXPECT_THAT(
      trace.lines(),
      ElementsAre(TraceLine{3, "VtDirect", "Failed to unlink file " + file + ": No such file or directory"}));
}

TEST_F(FetchSchemaTest, AnEmptyBodyIsOkWithoutAVersion) {
  EXPECT_EQ(Fetch(""), Ok);
  EXPECT_EQ(version, 0);
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(FetchSchemaTest, AnErrorInTheFirstOfSeveralChunksIsRefused) {
  EXPECT_EQ(Fetch("<a></b>" + std::string(600, ' ')), Refused);
  EXPECT_THAT(trace.lines(), ElementsAre(parseError));
}

TEST_F(FetchSchemaTest, AnErrorInAMiddleChunkIsRefused) {
  EXPECT_EQ(Fetch(Padded(versionSeven, 700, "</x>") + std::string(800, ' ')), Refused);
  EXPECT_THAT(trace.lines(), ElementsAre(parseError));
}

TEST_F(FetchSchemaTest, AnErrorInTheLastChunkGoesUnnoticed) {
  EXPECT_EQ(Fetch(Padded(versionSeven, 1500, "</x>")), Ok);
  // And what was read before it counts.
  EXPECT_EQ(version, 7);
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(FetchSchemaTest, AnErrorInTheOnlyChunkGoesUnnoticed) {
  for (const char* document : {"<a></b>", "no document at all", "<a", "<a></a><b/>", "\xff\xfe"}) {
    EXPECT_EQ(Fetch(document), Ok) << document;
    EXPECT_THAT(trace.lines(), IsEmpty()) << document;
  }
}

TEST_F(FetchSchemaTest, ADocumentCutShortCountsAsRead) {
  EXPECT_EQ(Fetch(Padded(versionSeven, 2000, "")), Ok);
  EXPECT_EQ(version, 7);
  EXPECT_EQ(Fetch(Padded(versionSeven, 2000, "<Entity")), Ok);
  EXPECT_EQ(version, 7);
}

TEST_F(FetchSchemaTest, AFullChunkIsNeverTheLast) {
  // With 512 bytes read the end of the file isn't seen yet, so one more buffer is asked for.
  EXPECT_EQ(Fetch(Padded(versionSeven, 511, "</x>")), Ok);
  EXPECT_EQ(Fetch(Padded(versionSeven, 512, "</x>")), Refused);
  EXPECT_EQ(Fetch(Padded(versionSeven, 513, "</x>")), Ok);
  EXPECT_EQ(Fetch(Padded(versionSeven, 1023, "</x>")), Ok);
  EXPECT_EQ(Fetch(Padded(versionSeven, 1024, "</x>")), Refused);
  EXPECT_THAT(trace.lines(), ElementsAre(parseError));
}

TEST_F(FetchSchemaTest, ADocumentOfFullChunksThatIsCutShortCountsAsRead) {
  // Its error shows at the end of the file only, in an empty last chunk.
  EXPECT_EQ(Fetch(Padded(versionSeven, 512, "")), Ok);
  EXPECT_EQ(version, 7);
  EXPECT_EQ(Fetch(Padded(versionSeven, 1024, "")), Ok);
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(FetchSchemaTest, WellFormedDocumentsOfFullChunksAreRead) {
  for (const std::size_t size : {511U, 512U, 513U, 1024U}) {
    EXPECT_EQ(Fetch(Padded(versionSeven, size, "</Schema>")), Ok) << size;
    EXPECT_EQ(version, 7) << size;
  }
}

TEST_F(FetchSchemaTest, NeitherQueryNorVersionIsNeeded) {
  transport.Then(200, versionSeven + R"(<EntityType Name="E"><Property Name="P"/></EntityType></Schema>)");
  EXPECT_EQ(FetchSchema(connection, "servlet/odata/X/$metadata", nullptr, nullptr), Ok);
}

TEST_F(FetchSchemaTest, AVersionThatDoesNotComeIsLeftAlone) {
  transport.Then(200, "<Schema/>");
  version = 42;
  EXPECT_EQ(Fetch(), Ok);
  EXPECT_EQ(version, 42);
}

TEST_F(FetchSchemaTest, ALargeDocumentIsReadToItsEnd) {
  std::string document = "<Schema>";
  for (int type = 0; type < 50000; ++type) {
    document += R"(<EntityType Name="T)" + std::to_string(type) +
                R"("><Property Name="P" Type="Edm.String"/></EntityType>)";
  }
  document += R"(<Annotation Term="Core.SchemaVersion"><String>5</String></Annotation></Schema>)";
  ASSERT_GT(document.size(), 3000000U);
  EXPECT_EQ(Fetch(document), Ok);
  EXPECT_EQ(version, 5);
}

TEST_F(FetchSchemaTest, OtherEncodingsAreReadAsTheyAreMarked) {
  std::string document = "\xff\xfe";
  for (const char character : versionSeven + "</Schema>") {
    document += character;
    document += '\0';
  }
  EXPECT_EQ(Fetch(document), Ok);
  EXPECT_EQ(version, 7);
}

TEST_F(FetchSchemaTest, DeepNestingDoesNoHarm) {
  std::string document = "<Schema>";
  for (int level = 0; level < 100000; ++level) document += "<a>";
  for (int level = 0; level < 100000; ++level) document += "</a>";
  EXPECT_EQ(Fetch(document + versionSeven.substr(8) + "</Schema>"), Ok);
  EXPECT_EQ(version, 7);
}

TEST_F(FetchSchemaTest, EntitiesThatExpandWithoutEndAreRefused) {
  std::string document = "<!DOCTYPE s [<!ENTITY e0 \"0123456789012345678901234567890123456789\">";
  for (int level = 1; level < 30; ++level) {
    const std::string below = "&e" + std::to_string(level - 1) + ";";
    document += "<!ENTITY e" + std::to_string(level) + " \"";
    for (int copy = 0; copy < 10; ++copy) document += below;
    document += "\">";
  }
  document +=
      "]><Schema><Annotation Term=\"Core.SchemaVersion\"><String>&e29;</String></Annotation></Schema>";
  EXPECT_EQ(Fetch(document + std::string(1024, ' ')), Refused);
  EXPECT_THAT(trace.lines(), ElementsAre(parseError));
}

TEST_F(FetchSchemaTest, ExternalEntitiesAreNotRead) {
  const std::string secret = directory.File("secret");
  vtdirect_test::WriteFile(secret, "9");
  transport.Then(200,
                 "<!DOCTYPE s [<!ENTITY x SYSTEM \"file://" + secret +
                     "\">]><Schema><Annotation Term=\"Core.SchemaVersion\"><String>&x;</String></Annotation>"
                     "</Schema>");
  version = 0;
  EXPECT_EQ(Fetch(), Ok);
  EXPECT_EQ(version, 0);
}

}  // namespace
