#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <optional>
#include <string>

#include "connection/vt_connection.h"
#include "tests/support/scripted_transport.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using vtdirect_test::SentRequest;

const std::string server = "http://plm.example/vt";
const std::string odataLines =
    "OData-Version: 4.0\r\nOData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000";
constexpr const char* restLine = "GET /vt/servlet/rest/security/csrf";
constexpr const char* odataLine = "GET /vt/servlet/odata/v1/ZVK/GetCSRFToken()";
constexpr const char* restAnswer =
    R"({"items":[{"id":"csrf","attributes":{"nonce_key":"CSRF_NONCE","nonce":"rest"}}]})";
constexpr const char* odataAnswer = R"({"NonceKey":"CSRF_NONCE","NonceValue":"odata"})";

class CsrfNonce : public testing::Test {
 protected:
  vtdirect_test::ScriptedTransport transport;
  VtConnection connection{server, [](const char*) { return false; }};
};

TEST_F(CsrfNonce, ANewConnectionSendsNothingAndHasNoApplicationVersion) {
  EXPECT_THAT(transport.requests(), IsEmpty());
  EXPECT_EQ(connection.knowledge().AuthAppVersion(), "");
}

TEST_F(CsrfNonce, TheRestRouteAsksTheSecurityService) {
  transport.Then(200, restAnswer);
  EXPECT_EQ(connection.CsrfHeader(), "CSRF_NONCE: rest");
  EXPECT_THAT(transport.requests(),
              ElementsAre(SentRequest{server, restLine, "Accept: application/json", std::nullopt}));
}

TEST_F(CsrfNonce, TheRestRouteTakesABareListToo) {
  transport.Then(200, R"([{"id":"csrf","attributes":{"nonce_key":"K","nonce":"v"}}])");
  EXPECT_EQ(connection.CsrfHeader(), "K: v");
}

TEST_F(CsrfNonce, TheODataRouteAsksItsFunction) {
  transport.Then(200, odataAnswer);
  EXPECT_EQ(connection.ODataWriteHeaders(), odataLines + "\r\nCSRF_NONCE: odata");
  EXPECT_THAT(
      transport.requests(),
      ElementsAre(SentRequest{server, odataLine, odataLines + "\r\nAccept: application/json", std::nullopt}));
}

TEST_F(CsrfNonce, IsFetchedOnce) {
  transport.Then(200, restAnswer);
  EXPECT_EQ(connection.CsrfHeader(), "CSRF_NONCE: rest");
  EXPECT_EQ(connection.CsrfHeader(), "CSRF_NONCE: rest");
  EXPECT_THAT(transport.lines(), ElementsAre(restLine));
}

TEST_F(CsrfNonce, TheRestRouteServesODataWritesWhenItCameFirst) {
  transport.Then(200, restAnswer);
  EXPECT_EQ(connection.CsrfHeader(), "CSRF_NONCE: rest");
  EXPECT_EQ(connection.ODataWriteHeaders(), odataLines + "\r\nCSRF_NONCE: rest");
  EXPECT_THAT(transport.lines(), ElementsAre(restLine));
}

TEST_F(CsrfNonce, TheODataRouteServesRestWritesWhenItCameFirst) {
  transport.Then(200, odataAnswer);
  EXPECT_EQ(connection.ODataWriteHeaders(), odataLines + "\r\nCSRF_NONCE: odata");
  EXPECT_EQ(connection.CsrfHeader(), "CSRF_NONCE: odata");
  EXPECT_THAT(transport.lines(), ElementsAre(odataLine));
}

TEST_F(CsrfNonce, AFailedRouteLeavesTheOtherToFillIt) {
  transport.Then(404).Then(200, odataAnswer);
  EXPECT_EQ(connection.CsrfHeader(), "");
  EXPECT_EQ(connection.ODataWriteHeaders(), odataLines + "\r\nCSRF_NONCE: odata");
  EXPECT_EQ(connection.CsrfHeader(), "CSRF_NONCE: odata");
  EXPECT_THAT(transport.lines(), ElementsAre(restLine, odataLine));
}

TEST_F(CsrfNonce, AFailedRestFetchGivesNothingAndIsTriedAgain) {
  transport.Then(500).ThenFail(du::http::ErrorCode::TimedOut).Then(401).Then(200, restAnswer);
  EXPECT_EQ(connection.CsrfHeader(), "");
  EXPECT_EQ(connection.CsrfHeader(), "");
  EXPECT_EQ(connection.CsrfHeader(), "");
  EXPECT_EQ(connection.CsrfHeader(), "CSRF_NONCE: rest");
  EXPECT_THAT(transport.lines(), ElementsAre(restLine, restLine, restLine, restLine));
}

TEST_F(CsrfNonce, ODataWriteHeadersEndInALineEndBehindAFailedFetchWhichIsTriedAgain) {
  transport.Then(404, "no such function").Then(200, odataAnswer);
  const std::string headers = connection.ODataWriteHeaders();
  EXPECT_EQ(headers, odataLines + "\r\n");
  EXPECT_EQ(headers.size(), 76U);
  EXPECT_EQ(connection.ODataWriteHeaders(), odataLines + "\r\nCSRF_NONCE: odata");
  EXPECT_THAT(transport.lines(), ElementsAre(odataLine, odataLine));
}

TEST_F(CsrfNonce, ARestAnswerMustHoldExactlyTheOneItem) {
  const std::string item = R"({"id":"csrf","attributes":{"nonce_key":"K","nonce":"v"}})";
  for (const std::string& body :
       {std::string(R"({"items":[]})"), "{\"items\":[" + item + "," + item + "]}",
        "{\"items\":[" + item + ",1]}", std::string("{}"), std::string("{"), std::string()}) {
    transport.Then(200, body);
    EXPECT_EQ(connection.CsrfHeader(), "") << body;
  }
}

TEST_F(CsrfNonce, ARestItemMustBeNamedCsrf) {
  for (const char* body : {R"({"items":[{"id":"CSRF","attributes":{"nonce_key":"K","nonce":"v"}}]})",
                           R"({"items":[{"attributes":{"nonce_key":"K","nonce":"v"}}]})",
                           R"({"items":[{"id":"csrf2","attributes":{"nonce_key":"K","nonce":"v"}}]})"}) {
    transport.Then(200, body);
    EXPECT_EQ(connection.CsrfHeader(), "") << body;
  }
}

TEST_F(CsrfNonce, ARestItemMustHoldBothAttributesAsTexts) {
  for (const char* body :
       {R"({"items":[{"id":"csrf","attributes":{"nonce_key":"K"}}]})",
        R"({"items":[{"id":"csrf","attributes":{"nonce":"v"}}]})", R"({"items":[{"id":"csrf"}]})",
        R"({"items":[{"id":"csrf","attributes":{"nonce_key":"K","nonce":1}}]})",
        R"({"items":[{"id":"csrf","attributes":{"Nonce_key":"K","nonce":"v"}}]})"}) {
    transport.Then(200, body);
    EXPECT_EQ(connection.CsrfHeader(), "") << body;
  }
}

TEST_F(CsrfNonce, AnODataAnswerMustBeAnObjectWithBothTexts) {
  for (const char* body :
       {R"([])", R"("x")", R"({})", R"({"NonceKey":"K"})", R"({"NonceValue":"v"})",
        R"({"NonceKey":"K","NonceValue":1})", R"({"NonceKey":null,"NonceValue":"v"})",
        R"({"noncekey":"K","noncevalue":"v"})", R"({"NonceKey":"K","NonceValue":"v")", ""}) {
    transport.Then(200, body);
    EXPECT_EQ(connection.ODataWriteHeaders(), odataLines + "\r\n") << body;
  }
}

TEST_F(CsrfNonce, AnODataAnswerOutsideTwoHundredTo299Fails) {
  transport.Then(302, odataAnswer).Then(500, odataAnswer).Then(201, odataAnswer);
  EXPECT_EQ(connection.ODataWriteHeaders(), odataLines + "\r\n");
  EXPECT_EQ(connection.ODataWriteHeaders(), odataLines + "\r\n");
  EXPECT_EQ(connection.ODataWriteHeaders(), odataLines + "\r\nCSRF_NONCE: odata");
}

TEST_F(CsrfNonce, ANonceThatIsMoreThanOneHeaderLineIsNone) {
  for (const char* value : {"v\\r\\nX-Other: 1", "v\\n", "v\\r", "v\\u0000w"}) {
    const std::string text = value;
    transport.Then(200,
                   R"({"items":[{"id":"csrf","attributes":{"nonce_key":"K","nonce":")" + text + R"("}}]})");
    EXPECT_EQ(connection.CsrfHeader(), "") << value;
    transport.Then(200,
                   R"({"items":[{"id":"csrf","attributes":{"nonce_key":")" + text + R"(","nonce":"v"}}]})");
    EXPECT_EQ(connection.CsrfHeader(), "") << value;
    transport.Then(200, R"({"NonceKey":"K","NonceValue":")" + text + "\"}");
    EXPECT_EQ(connection.ODataWriteHeaders(), odataLines + "\r\n") << value;
    transport.Then(200, R"({"NonceKey":")" + text + R"(","NonceValue":"v"})");
    EXPECT_EQ(connection.ODataWriteHeaders(), odataLines + "\r\n") << value;
  }
}

// No header line can carry it, so every later write would fail.
TEST_F(CsrfNonce, ANonceWithAControlByteIsAFailedFetchAndTriedAgain) {
  for (int byte = 1; byte < 0x80; ++byte) {
    if (byte == 0x20) byte = 0x7F;
    char escaped[8];
    std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(byte));
    const std::string value = std::string("v") + escaped + "w";
    transport.Then(200,
                   R"({"items":[{"id":"csrf","attributes":{"nonce_key":"K","nonce":")" + value + R"("}}]})");
    EXPECT_EQ(connection.CsrfHeader(), "") << byte;
    transport.Then(200, R"({"NonceKey":"K","NonceValue":")" + value + "\"}");
    EXPECT_EQ(connection.ODataWriteHeaders(), odataLines + "\r\n") << byte;
  }
  transport.Then(200, restAnswer);
  EXPECT_EQ(connection.CsrfHeader(), "CSRF_NONCE: rest");
}

TEST_F(CsrfNonce, AKeyThatIsNoHeaderNameIsAFailedFetchAndTriedAgain) {
  for (const char* key : {"", "two words", "K:", "K\\t", "\xC3\xA4"}) {
    const std::string text = key;
    transport.Then(200,
                   R"({"items":[{"id":"csrf","attributes":{"nonce_key":")" + text + R"(","nonce":"v"}}]})");
    EXPECT_EQ(connection.CsrfHeader(), "") << key;
  }
  transport.Then(200, R"({"items":[{"id":"csrf","attributes":{"nonce_key":"K-1_a","nonce":"v w"}}]})");
  EXPECT_EQ(connection.CsrfHeader(), "K-1_a: v w");
}

TEST_F(CsrfNonce, TwoConnectionsHaveNoncesOfTheirOwn) {
  VtConnection other(server, [](const char*) { return false; });
  transport.Then(200, restAnswer).Then(404);
  EXPECT_EQ(connection.CsrfHeader(), "CSRF_NONCE: rest");
  EXPECT_EQ(other.CsrfHeader(), "");
}

TEST_F(CsrfNonce, ASideConnectionHasItsOwnUrlAndTheSameAuthentication) {
  std::string asked;
  const VtConnection main(server, [&asked](const char* url) {
    asked = url;
    return true;
  });
  const auto side = main.MakeSideConnection("https://files.example/content");
  ASSERT_NE(side, nullptr);
  EXPECT_EQ(side->uri(), "https://files.example/content");
  EXPECT_EQ(side->basePath(), "/content/");
  EXPECT_TRUE(side->MakeCommonAuth().reauthenticate());
  EXPECT_EQ(asked, "https://files.example/content");
  EXPECT_EQ(main.http()->uri(), server);
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(CsrfNonce, EachSideConnectionIsNew) {
  const auto first = connection.MakeSideConnection(server);
  const auto second = connection.MakeSideConnection(server);
  EXPECT_NE(first, second);
  EXPECT_NE(first, connection.http());
  EXPECT_EQ(transport.connections().size(), 3U);
}

}  // namespace
