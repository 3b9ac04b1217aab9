#include "documents/storing/json_post.h"

#include <stdlib.h>

#include "tests/wire/documents/connected_test.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using namespace vtdirect_test;

constexpr const char* nonceAnswer =
    R"({"items":[{"id":"csrf","attributes":{"nonce_key":"X-Nonce","nonce":"n-1"}}]})";
constexpr const char* writeHeaders =
    "Content-Type: application/json\r\nAccept: application/json\r\nX-Nonce: n-1";

rapidjson::Document Body() {
  rapidjson::Document body;
  body.Parse(R"({ "z": 1, "a": "x y" })");
  return body;
}

using JsonPosting = ConnectedTest;

TEST_F(JsonPosting, FetchesTheNonceFirstAndSendsTheCompactBody) {
  transport.Then(200, nonceAnswer).Then(200, R"({"ok":true})");
  JsonPost post(Begin(connection), "servlet/rest/v1/dkm/things?x=1", Body());
  EXPECT_EQ(transport.requests(), (Requests{Read("servlet/rest/security/csrf"),
                                            {serverUrl, "POST /vt/servlet/rest/v1/dkm/things?x=1",
                                             writeHeaders, R"({"z":1,"a":"x y"})"}}));
  rapidjson::Document answer;
  ASSERT_TRUE(post.response().succeeded());
  ASSERT_TRUE(ParseJsonResponse(post.response(), answer));
  EXPECT_TRUE(answer["ok"].GetBool());
}

TEST_F(JsonPosting, FetchesTheNonceOncePerConnection) {
  transport.Then(200, nonceAnswer).Then(200, "{}").Then(200, "{}");
  { const JsonPost first(Begin(connection), "a", Body()); }
  { const JsonPost second(Begin(connection), "b", Body()); }
  EXPECT_EQ(transport.lines(), (Lines{"GET /vt/servlet/rest/security/csrf", "POST /vt/a", "POST /vt/b"}));
  EXPECT_EQ(transport.requests().back().headers, writeHeaders);
}

TEST_F(JsonPosting, GoesOnWithoutANonceAndAsksAgainNextTime) {
  transport.Then(500).Then(200, "{}").Then(200, nonceAnswer).Then(200, "{}");
  { const JsonPost first(Begin(connection), "a", Body()); }
  { const JsonPost second(Begin(connection), "b", Body()); }
  EXPECT_EQ(transport.requests()[1].headers, "Content-Type: application/json\r\nAccept: application/json");
  EXPECT_EQ(transport.requests()[3].headers, writeHeaders);
}

TEST_F(JsonPosting, KeepsTheBodyFileUntilTheAnswerHasBeenRead) {
  transport.Then(200, nonceAnswer).Then(200, "{}");
  {
    const JsonPost post(Begin(connection), "a", Body());
    EXPECT_EQ(directory.Entries().size(), 1u);
  }
  EXPECT_TRUE(directory.Entries().empty());
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(JsonPosting, LeavesNothingBehindALongAnswerOrAFailure) {
  transport.Then(200, nonceAnswer)
      .Then(200, "[\"" + std::string(600'000, 'x') + "\"]")
      .Then(500, "no")
      .ThenFail(du::http::ErrorCode::TimedOut);
  for (int i = 0; i < 3; ++i) const JsonPost post(Begin(connection), "a", Body());
  EXPECT_EQ(transport.requests().size(), 4u);
  EXPECT_TRUE(directory.Entries().empty());
}

// The header lines still tell of JSON: they are those of a request that was meant to have a body.
TEST_F(JsonPosting, GoesWithoutABodyWhenItsFileCannotBeMade) {
  transport.Then(200, nonceAnswer).Then(200, "{}");
  setenv("TMPDIR", directory.File("missing").c_str(), 1);
  { const JsonPost post(Begin(connection), "a", Body()); }
  EXPECT_EQ(transport.requests().back(), (SentRequest{serverUrl, "POST /vt/a", writeHeaders, {}}));
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(JsonPosting, KeepsTheTextOfARefusal) {
  transport.Then(200, nonceAnswer).Then(409, "busy");
  JsonPost post(Begin(connection), "a", Body());
  EXPECT_EQ(post.response().status(), 409);
  EXPECT_EQ(post.response().errorText(), "busy");
}

}  // namespace
