// Answers that no well-meaning server gives. Whatever comes, a call ends with its failure value, and nothing
// is left behind.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "connection/odata_page_reader.h"
#include "connection/odata_services.h"
#include "connection/rest_items.h"
#include "connection/server_check.h"
#include "connection/server_information.h"
#include "connection/service_schema.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::size_t megabyte = 1 << 20;

class HostileAnswers : public testing::Test {
 protected:
  ~HostileAnswers() override { EXPECT_THAT(directory.Entries(), IsEmpty()); }

  std::vector<RestItem> ReadItems(const std::string& body) {
    transport.Then(200, body);
    auto [status, rows] = ReadRestItems(connection->http(), "x", RestListForm::Wrapped);
    EXPECT_EQ(status, Ok);
    return rows;
  }

  vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::TraceRecorder trace;
  vtdirect_test::ScriptedTransport transport;
  std::shared_ptr<VtConnection> connection =
      std::make_shared<VtConnection>("http://plm.example/vt", [](const char*) { return false; });
};

TEST_F(HostileAnswers, AListCutAnywhereHasNoRows) {
  const std::string body = R"({"items":[{"id":"A","typeId":"T","attributes":{"k":"v\u00e4"}},{"id":"B"}]})";
  ASSERT_THAT(ReadItems(body), SizeIs(2));
  for (std::size_t length = 0; length < body.size(); ++length) {
    EXPECT_THAT(ReadItems(body.substr(0, length)), IsEmpty()) << length;
  }
}

TEST_F(HostileAnswers, ANonceCutAnywhereIsNone) {
  const std::string rest = R"({"items":[{"id":"csrf","attributes":{"nonce_key":"K","nonce":"v"}}]})";
  for (std::size_t length = 0; length < rest.size(); ++length) {
    transport.Then(200, rest.substr(0, length));
    EXPECT_EQ(connection->CsrfHeader(), "") << length;
  }
  const std::string odata = R"({"NonceKey":"K","NonceValue":"v"})";
  for (std::size_t length = 0; length < odata.size(); ++length) {
    transport.Then(200, odata.substr(0, length));
    EXPECT_EQ(connection->ODataWriteHeaders(), std::string(VtConnection::ODataHeaders()) + "\r\n") << length;
  }
}

TEST_F(HostileAnswers, APageCutAnywhereFails) {
  const std::string body = R"({"value":[{"ID":"A"}],"@odata.nextLink":"http://plm.example/vt/2"})";
  for (std::size_t length = 0; length < body.size(); ++length) {
    transport.Then(200, body.substr(0, length));
    ODataPageReader reader(ServerContext(connection), "x");
    EXPECT_TRUE(reader.Next()) << length;
    EXPECT_TRUE(reader.failed()) << length;
    EXPECT_FALSE(reader.Next()) << length;
  }
}

TEST_F(HostileAnswers, AnInformationDocumentCutAnywhereIsReadAsFarAsItGoes) {
  const std::string document = "ServerMajorVersion:12\nCodebaseURL:http://h/\n";
  for (std::size_t length = 0; length < document.size(); ++length) {
    transport.Then(200, document.substr(0, length));
    ServerInfo info;
    EXPECT_EQ(GetServerInfo(*connection->http(), info), Ok);
    const unsigned expected = length < 20 ? 0 : length == 20 ? 1 : 12;
    EXPECT_EQ(info.version.major, expected) << length;
  }
}

TEST_F(HostileAnswers, ASchemaCutAnywhereEndsWithoutHarm) {
  const std::string document =
      R"(<?xml version="1.0"?><!-- c --><Schema><EntityType Name="E"><Property Name="P"/></EntityType>)"
      R"(<Annotation Term="Core.SchemaVersion"><String>4</String></Annotation></Schema>)";
  for (std::size_t length = 0; length < document.size(); ++length) {
    transport.Then(200, document.substr(0, length));
    SchemaQuery query{{"E", {{"P"}}, {}}};
    int version = 0;
    EXPECT_EQ(FetchSchema(*connection, "x", &query, &version), Ok) << length;
    EXPECT_EQ(version, length >= document.find("</String>") + 9 ? 4 : 0) << length;
  }
}

TEST_F(HostileAnswers, AListNestedTooDeeplyHasNoRows) {
  EXPECT_THAT(ReadItems("{\"items\":[" + std::string(100000, '[') + std::string(100000, ']') + "]}"),
              IsEmpty());
  // Long enough to be read from the disk.
  EXPECT_THAT(ReadItems("{\"items\":[" + std::string(400000, '[') + std::string(400000, ']') + "]}"),
              IsEmpty());
}

TEST_F(HostileAnswers, TextsOfAMegabyteArriveWhole) {
  const std::string text(megabyte, 't');
  const auto rows =
      ReadItems(R"({"items":[{"id":")" + text + R"(","attributes":{")" + text + R"(":")" + text + R"("}}]})");
  ASSERT_THAT(rows, SizeIs(1));
  EXPECT_TRUE(rows[0].id == text);
  ASSERT_EQ(rows[0].attributes.size(), 1U);
  EXPECT_TRUE(rows[0].attributes.begin()->second == text);
}

TEST_F(HostileAnswers, ANulByteInAListBreaksIt) {
  EXPECT_THAT(ReadItems(std::string("{\"items\":[{\"id\":\"A\0B\"}]}", 24)), IsEmpty());
}

TEST_F(HostileAnswers, AnEscapedNulByteIsAByteOfItsText) {
  const auto rows = ReadItems(R"({"items":[{"id":"A\u0000B","attributes":{"x\u0000y":"z\u0000"}}]})");
  ASSERT_THAT(rows, SizeIs(1));
  EXPECT_EQ(rows[0].id, std::string("A\0B", 3));
  EXPECT_EQ(rows[0].attributes.at(std::string("x\0y", 3)), std::string("z\0", 2));
}

TEST_F(HostileAnswers, AnIdWithANulByteBehindItIsAnother) {
  transport.Then(200, R"({"items":[{"id":"csrf\u0000","attributes":{"nonce_key":"K","nonce":"v"}}]})");
  EXPECT_EQ(connection->CsrfHeader(), "");
}

TEST_F(HostileAnswers, ANextLinkOfAMegabyteIsFollowed) {
  const std::string path = "/vt/" + std::string(megabyte, 'n');
  transport.Then(200, R"({"value":[],"@odata.nextLink":"http://h)" + path + "\"}").Then(200, "{}");
  ODataPageReader reader(ServerContext(connection), "x");
  ASSERT_TRUE(reader.Next());
  ASSERT_TRUE(reader.Next());
  EXPECT_FALSE(reader.failed());
  EXPECT_TRUE(transport.requests()[1].line == "GET " + path);
}

TEST_F(HostileAnswers, ASchemaOfLongNamesAndTextsDoesNoHarm) {
  const std::string name(200'000, 'n');
  transport.Then(200, "<Schema><EntityType Name=\"" + name + "\"><Property Name=\"" + name +
                          "\"/></EntityType><Annotation Term=\"Core.SchemaVersion\"><String>" +
                          std::string(megabyte, '9') + "</String></Annotation></Schema>");
  SchemaQuery query{{"E", {{"P"}}, {}}};
  int version = 0;
  EXPECT_EQ(FetchSchema(*connection, "x", &query, &version), Ok);
  EXPECT_FALSE(query[0].properties[0].found);
}

TEST_F(HostileAnswers, ANulByteInASchemaIsAnXmlError) {
  transport.Then(200, std::string("<Schema>\0", 9) + std::string(600, ' ') + "</Schema>");
  int version = 0;
  EXPECT_EQ(FetchSchema(*connection, "x", nullptr, &version), Refused);
}

TEST_F(HostileAnswers, APercentSignInATraceIsTextAndNoFormat) {
  const std::string url = "http://plm.example/%s%n%s%d";
  transport.Then(404);
  EXPECT_EQ(CheckServer(
                url.c_str(), [](const char*) { return false; }, nullptr),
            ConnectionFailed);
  ASSERT_THAT(trace.lines(), SizeIs(1));
  EXPECT_EQ(trace.lines()[0].text,
            "Failed to get version info from server " + url + " treating as unsupported");
}

TEST_F(HostileAnswers, AServiceListOfEverySortOfElementIsRead) {
  transport.Then(200, "[" + std::string(R"([[]],{"id":{"id":"x"}},-0,1e5,"\ud83d\ude00",{"":""})") + "]");
  EXPECT_THAT(GetODataDomains(*connection), SizeIs(6));
}

}  // namespace
