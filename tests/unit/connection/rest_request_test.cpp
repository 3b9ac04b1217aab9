#include "connection/rest_request.h"

#include <gtest/gtest.h>

#include <memory>

#include "connection/vt_connection.h"
#include "tests/support/scripted_transport.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using du::http::Method;

class RestRequestText : public testing::Test {
 protected:
  vtdirect_test::ScriptedTransport transport;
  std::shared_ptr<HttpConnection> connection =
      std::make_shared<HttpConnection>("http://plm.example/vt", AuthFunction{});
};

TEST_F(RestRequestText, ARequestWithABodyTellsJsonThenAcceptThenTheExtraLines) {
  const auto request = MakeRestRequest(connection, Method::Post, "p", "/a/file", nullptr, "Nonce: 1\r\nB: 2");
  EXPECT_EQ(request.headers,
            "Content-Type: application/json\r\nAccept: application/json\r\nNonce: 1\r\nB: 2");
}

TEST_F(RestRequestText, AGivenContentTypeTakesThePlaceOfJson) {
  const auto request =
      MakeRestRequest(connection, Method::Post, "p", "/a/file", "multipart/form-data", "N: 1");
  EXPECT_EQ(request.headers, "Content-Type: multipart/form-data\r\nAccept: application/json\r\nN: 1");
}

TEST_F(RestRequestText, AGivenContentTypeIsToldWithoutABodyToo) {
  const auto request = MakeRestRequest(connection, Method::Post, "p", nullptr, "text/plain", nullptr);
  EXPECT_EQ(request.headers, "Content-Type: text/plain\r\nAccept: application/json");
}

TEST_F(RestRequestText, AnEmptyContentTypeIsStillGiven) {
  const auto request = MakeRestRequest(connection, Method::Post, "p", "/a/file", "", nullptr);
  EXPECT_EQ(request.headers, "Content-Type: \r\nAccept: application/json");
}

TEST_F(RestRequestText, AnEmptyBodyFileNameStillTellsJson) {
  const auto request = MakeRestRequest(connection, Method::Post, "p", "", nullptr, nullptr);
  EXPECT_EQ(request.headers, "Content-Type: application/json\r\nAccept: application/json");
}

TEST_F(RestRequestText, WithoutBodyAndContentTypeOnlyAcceptIsTold) {
  EXPECT_EQ(MakeRestRequest(connection, Method::Patch, "p", nullptr, nullptr, nullptr).headers,
            "Accept: application/json");
  EXPECT_EQ(MakeRestRequest(connection, Method::Patch, "p", nullptr, nullptr, "").headers,
            "Accept: application/json");
}

TEST_F(RestRequestText, AGetTellsTheExtraLinesFirst) {
  EXPECT_EQ(MakeGetRequest(connection, "p", "A: 1\r\nB: 2").headers,
            "A: 1\r\nB: 2\r\nAccept: application/json");
}

TEST_F(RestRequestText, AGetWithoutExtraLinesTellsAcceptAlone) {
  EXPECT_EQ(MakeGetRequest(connection, "p", nullptr).headers, "Accept: application/json");
  EXPECT_EQ(MakeGetRequest(connection, "p", "").headers, "Accept: application/json");
}

TEST_F(RestRequestText, TheRecordHoldsWhatItWasGiven) {
  const char* path = "servlet/x";
  const char* file = "/a/file";
  const auto request = MakeRestRequest(connection, Method::Patch, path, file, nullptr, nullptr);
  EXPECT_EQ(request.connection, connection);
  EXPECT_EQ(static_cast<int>(request.method), 5);
  EXPECT_EQ(request.path, path);
  EXPECT_EQ(request.bodyFile, file);
  const auto get = MakeGetRequest(connection, path, nullptr);
  EXPECT_EQ(get.connection, connection);
  EXPECT_EQ(static_cast<int>(get.method), 0);
  EXPECT_EQ(get.path, path);
  EXPECT_EQ(get.bodyFile, nullptr);
  EXPECT_TRUE(transport.requests().empty());
}

TEST_F(RestRequestText, ODataLinesAreSeventyFourBytes) {
  const std::string headers = VtConnection::ODataHeaders();
  EXPECT_EQ(headers, "OData-Version: 4.0\r\nOData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000");
  EXPECT_EQ(headers.size(), 74U);
}

}  // namespace
