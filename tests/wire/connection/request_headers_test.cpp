// What travels for each kind of request, byte for byte.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "connection/rest_request.h"
#include "connection/rest_stream.h"
#include "connection/vt_connection.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using du::http::Method;
using testing::Each;
using testing::ElementsAre;
using vtdirect_test::SentRequest;

constexpr const char* restNonce =
    R"({"items":[{"id":"csrf","attributes":{"nonce_key":"CSRF_NONCE","nonce":"n0="}}]})";
constexpr const char* odataNonce = R"({"NonceKey":"CSRF_NONCE","NonceValue":"n1="})";
const std::string odataLines =
    "OData-Version: 4.0\r\nOData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000";
const std::string server = "http://plm.example/vt";

class RequestHeaders : public testing::Test {
 protected:
  void TearDown() override { EXPECT_THAT(transport.clientMarks(), Each("X-Zvk-Connected: 1")); }

  // The last request that was sent.
  [[nodiscard]] const SentRequest& Sent() const { return transport.requests().back(); }

  vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::ScriptedTransport transport;
  VtConnection connection{server, [](const char*) { return false; }};
  std::string bodyFile = directory.File("body");
};

TEST_F(RequestHeaders, ARestRead) {
  transport.Then(200);
  RestStream(MakeGetRequest(connection.http(), "servlet/x", nullptr), {});
  EXPECT_EQ(Sent(), (SentRequest{server, "GET /vt/servlet/x", "Accept: application/json", std::nullopt}));
}

TEST_F(RequestHeaders, AnODataRead) {
  transport.Then(200);
  RestStream(MakeGetRequest(connection.http(), "servlet/x", VtConnection::ODataHeaders()), {});
  EXPECT_EQ(Sent(), (SentRequest{server, "GET /vt/servlet/x", odataLines + "\r\nAccept: application/json",
                                 std::nullopt}));
}

TEST_F(RequestHeaders, ARestWrite) {
  vtdirect_test::WriteFile(bodyFile, R"({"a":1})");
  transport.Then(200, restNonce).Then(200);
  const std::string nonce = connection.CsrfHeader();
  RestStream(
      MakeRestRequest(connection.http(), Method::Post, "servlet/x", bodyFile.c_str(), nullptr, nonce.c_str()),
      {});
  EXPECT_EQ(Sent(),
            (SentRequest{server, "POST /vt/servlet/x",
                         "Content-Type: application/json\r\nAccept: application/json\r\nCSRF_NONCE: n0=",
                         R"({"a":1})"}));
}

TEST_F(RequestHeaders, ARestWriteWithoutANonce) {
  vtdirect_test::WriteFile(bodyFile, "{}");
  transport.Then(404).Then(200);
  const std::string nonce = connection.CsrfHeader();
  RestStream(
      MakeRestRequest(connection.http(), Method::Post, "servlet/x", bodyFile.c_str(), nullptr, nonce.c_str()),
      {});
  EXPECT_EQ(Sent().headers, "Content-Type: application/json\r\nAccept: application/json");
}

TEST_F(RequestHeaders, AMultipartUpload) {
  vtdirect_test::WriteFile(bodyFile, std::string("--b\r\n\0x", 7));
  transport.Then(200, restNonce).Then(200);
  const std::string nonce = connection.CsrfHeader();
  RestStream(MakeRestRequest(connection.http(), Method::Post, "servlet/x", bodyFile.c_str(),
                             "multipart/form-data; boundary=b", nonce.c_str()),
             {});
  EXPECT_EQ(Sent(),
            (SentRequest{server, "POST /vt/servlet/x",
                         "Content-Type: multipart/form-data; boundary=b\r\nAccept: application/json\r\n"
                         "CSRF_NONCE: n0=",
                         std::string("--b\r\n\0x", 7)}));
}

TEST_F(RequestHeaders, AnODataWrite) {
  vtdirect_test::WriteFile(bodyFile, "{}");
  transport.Then(200, odataNonce).Then(200).Then(200);
  const std::string headers = connection.ODataWriteHeaders();
  for (const Method method : {Method::Post, Method::Patch}) {
    RestStream(
        MakeRestRequest(connection.http(), method, "servlet/x", bodyFile.c_str(), nullptr, headers.c_str()),
        {});
    EXPECT_EQ(Sent(),
              (SentRequest{server, method == Method::Post ? "POST /vt/servlet/x" : "PATCH /vt/servlet/x",
                           "Content-Type: application/json\r\nAccept: application/json\r\n" + odataLines +
                               "\r\nCSRF_NONCE: n1=",
                           "{}"}));
  }
}

TEST_F(RequestHeaders, ADownload) {
  transport.Then(200);
  EXPECT_EQ(connection.http()->DownloadToFile("servlet/x", "", directory.File("t").c_str(), {}), 200);
  EXPECT_EQ(Sent(), (SentRequest{server, "GET /vt/servlet/x", "", std::nullopt}));
}

TEST_F(RequestHeaders, AServerWithoutAPathGetsThePathAsItStands) {
  VtConnection bare("http://plm.example", [](const char*) { return false; });
  transport.Then(200);
  RestStream(MakeGetRequest(bare.http(), "servlet/x", nullptr), {});
  EXPECT_EQ(Sent().line, "GET servlet/x");
}

TEST_F(RequestHeaders, APathWithASlashAtItsEndAndOneWithoutSendTheSame) {
  VtConnection slash("http://plm.example/vt/", [](const char*) { return false; });
  transport.Then(200).Then(200);
  RestStream(MakeGetRequest(slash.http(), "servlet/x", nullptr), {});
  RestStream(MakeGetRequest(connection.http(), "servlet/x", nullptr), {});
  EXPECT_THAT(transport.lines(), ElementsAre("GET /vt/servlet/x", "GET /vt/servlet/x"));
}

TEST_F(RequestHeaders, ARequestWithoutAPathGoesToTheBasePath) {
  transport.Then(200);
  RestStream(MakeGetRequest(connection.http(), nullptr, nullptr), {});
  EXPECT_EQ(Sent().line, "GET /vt/");
}

}  // namespace
