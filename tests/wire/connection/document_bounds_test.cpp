// How long a server's information and its schemas may be.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "connection/server_information.h"
#include "connection/service_schema.h"
#include "tests/support/measurement.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using vtdirect_test::mebibyte;
using vtdirect_test::TraceLine;

const std::string versionSeven = R"(<Annotation Term="Core.SchemaVersion"><String>7</String></Annotation>)";
const TraceLine parseError{3, "CmsInterface", "XML parse error"};

std::string Repeated(const std::string& text, std::size_t size) {
  std::string all;
  all.reserve(size + text.size());
  while (all.size() < size) all += text;
  return all;
}

class DocumentBounds : public testing::Test {
 protected:
  ~DocumentBounds() override { EXPECT_THAT(directory.Entries(), IsEmpty()); }

  Status ReadInformation(const std::string& document, ServerInfo& info) {
    transport.Then(200, document);
    return GetServerInfo(*connection.http(), info);
  }
  Status ReadSchema(std::string document) {
    trace.Clear();
    version = 0;
    transport.Then(200, std::move(document));
    return FetchSchema(connection, "servlet/odata/X/$metadata", nullptr, &version);
  }

  vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::TraceRecorder trace;
  vtdirect_test::ScriptedTransport transport;
  VtConnection connection{"http://plm.example/vt", [](const char*) { return false; }};
  int version = 0;
};

TEST_F(DocumentBounds, OfTheServersInformationAre64KiB) {
  const std::string known = "ServerMajorVersion:12\n";
  ServerInfo info;
  EXPECT_EQ(ReadInformation(known + std::string(64 * 1024 - known.size(), 'x'), info), Ok);
  EXPECT_EQ(info.version.major, 12u);
  EXPECT_EQ(ReadInformation(known + std::string(64 * 1024 - known.size() + 1, 'x'), info), ConnectionFailed);
  const vtdirect_test::Measurement measurement;
  EXPECT_EQ(ReadInformation(known + std::string(64 * mebibyte, 'x'), info), ConnectionFailed);
  EXPECT_LT(measurement.Record(), 160 * mebibyte) << "twice the answer, which is the test's own";
}

TEST_F(DocumentBounds, OfASchemaAre64MiB) {
  const std::string begin = "<Schema>" + versionSeven;
  const std::string end = "</Schema>";
  EXPECT_EQ(ReadSchema(begin + std::string(64 * mebibyte - begin.size() - end.size(), ' ') + end), Ok);
  EXPECT_EQ(version, 7);
  EXPECT_EQ(ReadSchema(begin + std::string(64 * mebibyte - begin.size() - end.size() + 1, ' ') + end),
            Refused);
  EXPECT_THAT(trace.lines(), ElementsAre(parseError));
}

TEST_F(DocumentBounds, OfARefusalInPlaceOfASchemaDoNotHideItsStatus) {
  transport.Then(404, std::string(65 * mebibyte, 'x'));
  EXPECT_EQ(FetchSchema(connection, "servlet/odata/X/$metadata", nullptr, &version), NotFound);
}

TEST_F(DocumentBounds, OfATokenAre256KiB) {
  for (const char* open : {"<x a=\"", "<x", "<!--", "<?x ", "<![CDATA[", "&x", "</x"}) {
    const bool isText = std::string(open) == "<![CDATA[";  // which is handed on as it comes
    EXPECT_EQ(ReadSchema("<Schema>" + versionSeven + open + std::string(300 * 1024, 'x')),
              isText ? Ok : Refused)
        << open;
  }
  EXPECT_EQ(
      ReadSchema("<Schema>" + versionSeven + "<x a=\"" + std::string(250 * 1024, 'x') + "\"/></Schema>"), Ok);
  EXPECT_EQ(version, 7);
}

TEST_F(DocumentBounds, OfATokenKeepTheTimeProportionalToTheDocument) {
  std::string document = "<Schema>" + versionSeven;
  while (document.size() < 63 * mebibyte) document += "<x a=\"" + std::string(250 * 1024, 'x') + "\"/>";
  document += "</Schema>";
  const vtdirect_test::Measurement measurement;
  EXPECT_EQ(ReadSchema(std::move(document)), Ok);
  EXPECT_EQ(version, 7);
  EXPECT_LT(measurement.Record(), 16 * mebibyte) << "beside the answer, which was there before";
}

TEST_F(DocumentBounds, OfTheMemoryForASchemaAreKeptWhateverItHolds) {
  std::string names = "<Schema>";
  for (int count = 0; names.size() < 63 * mebibyte; ++count) names += "<n" + std::to_string(count) + "/>";
  std::string levels = "<Schema>" + Repeated("<a>", 63 * mebibyte);
  const vtdirect_test::Measurement measurement;
  for (const auto* document : {&names, &levels}) {
    transport.AnswerBy([document](const auto&) { return vtdirect_test::Answer{200, *document}; });
    EXPECT_EQ(FetchSchema(connection, "servlet/odata/X/$metadata", nullptr, &version), Refused);
  }
  EXPECT_LT(measurement.Record(), 320 * mebibyte)
      << "the parser's 64 MiB, what malloc adds to each small piece, and copies of the answer in this test";
}

}  // namespace
