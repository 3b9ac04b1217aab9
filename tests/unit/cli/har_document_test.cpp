#include "hosts/cli/http_log/har_document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_cli {
namespace {

du::http::ObservedExchange Exchange() {
  du::http::ObservedExchange exchange;
  exchange.method = du::http::Method::Post;
  exchange.url = "https://plm.example/vt/servlet/rest/v1/dkm/documents?type=a&ticket=CanaryTicket";
  exchange.status = 201;
  exchange.started = std::chrono::system_clock::from_time_t(1'790'000'000) + std::chrono::milliseconds(7);
  exchange.times = {1'000, 2'000, 3'000, 40'000, 500};
  exchange.peer = "192.0.2.7";
  exchange.turns = {
      {"POST /vt/servlet/rest/v1/dkm/documents HTTP/1.1\r\nHost: plm.example\r\n"
       "Authorization: Bearer CanaryToken\r\nContent-Type: application/json",
       "HTTP/1.1 201 Created here\r\nContent-Type: application/json\r\nSet-Cookie: S=CanaryCookie"}};
  exchange.requestBody = R"({"name":"CanaryToken and more"})";
  exchange.requestBodyBytes = exchange.requestBody.size();
  exchange.answerBody = R"({"id":"D1")";
  exchange.answerBodyBytes = 100;
  return exchange;
}

}  // namespace

TEST(HarDocument, HasTheFormThatOthersRead) {
  const std::string text = HarDocument({{Exchange()}, 0}, {});
  rapidjson::Document har;
  har.Parse(text.c_str());
  ASSERT_FALSE(har.HasParseError()) << text;
  const auto& log = har["log"];
  EXPECT_STREQ(log["version"].GetString(), "1.2");
  EXPECT_STREQ(log["creator"]["name"].GetString(), "vtdirect");
  ASSERT_EQ(log["entries"].Size(), 1U);
  const auto& entry = log["entries"][0];
  EXPECT_STREQ(entry["startedDateTime"].GetString(), "2026-09-21T14:13:20.007Z");
  EXPECT_EQ(entry["time"].GetDouble(), 46.5);
  EXPECT_STREQ(entry["request"]["method"].GetString(), "POST");
  EXPECT_STREQ(entry["request"]["url"].GetString(),
               "https://plm.example/vt/servlet/rest/v1/dkm/documents?type=a&ticket=***");
  EXPECT_STREQ(entry["request"]["queryString"][1]["value"].GetString(), "***");
  EXPECT_STREQ(entry["request"]["headers"][0]["name"].GetString(), "Host");
  EXPECT_STREQ(entry["request"]["headers"][1]["value"].GetString(), "Bearer ***");
  EXPECT_STREQ(entry["request"]["postData"]["text"].GetString(), R"({"name":"*** and more"})");
  EXPECT_EQ(entry["request"]["bodySize"].GetInt(), 31);
  EXPECT_EQ(entry["response"]["status"].GetInt(), 201);
  EXPECT_STREQ(entry["response"]["statusText"].GetString(), "Created here");
  EXPECT_EQ(entry["response"]["content"]["size"].GetInt(), 100);
  EXPECT_STREQ(entry["response"]["content"]["comment"].GetString(), "the first 10 bytes of 100");
  EXPECT_EQ(entry["timings"]["connect"].GetDouble(), 5.0);
  EXPECT_EQ(entry["timings"]["ssl"].GetDouble(), 3.0);
  EXPECT_EQ(entry["timings"]["wait"].GetDouble(), 40.0);
  EXPECT_STREQ(entry["serverIPAddress"].GetString(), "192.0.2.7");
  EXPECT_THAT(text, Not(HasSubstr("Canary")));
}

TEST(HarDocument, HasNoByteThatATerminalTakesForAnOrder) {
  du::http::ObservedExchange exchange = Exchange();
  exchange.answerBody = "{\"id\":\"D\x7F\x1B\xC2\x9B\"}";
  const std::string text = HarDocument({{exchange}, 0}, {});
  EXPECT_THAT(text, HasSubstr(R"(D\u007F\u001B\u009B)"));
  EXPECT_EQ(text.find_first_of("\x7F\x1B\x9B"), std::string::npos);
}

TEST(HarDocument, ShowsNoBytesOfAContent) {
  du::http::ObservedExchange exchange = Exchange();
  exchange.turns[0].answerHead = "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream";
  exchange.answerBody = "drawing";
  exchange.answerBodyBytes = 7;
  const std::string text = HarDocument({{exchange}, 0}, {});
  EXPECT_THAT(text, Not(HasSubstr("drawing")));
  EXPECT_THAT(text, HasSubstr("\"comment\":\"left out: 7 bytes\""));
}

TEST(HarDocument, HasAnEntryForEachTurnOfALogin) {
  du::http::ObservedExchange exchange = Exchange();
  exchange.turns.insert(exchange.turns.begin(), {"POST / HTTP/1.1\r\nHost: plm.example", "HTTP/1.1 401 No"});
  rapidjson::Document har;
  har.Parse(HarDocument({{exchange}, 0}, {}).c_str());
  const auto& entries = har["log"]["entries"];
  ASSERT_EQ(entries.Size(), 2U);
  EXPECT_EQ(entries[0]["response"]["status"].GetInt(), 401);
  EXPECT_EQ(entries[0]["time"].GetDouble(), 0.0);
  EXPECT_FALSE(entries[0]["request"].HasMember("postData"));
  EXPECT_EQ(entries[1]["response"]["status"].GetInt(), 201);
}

TEST(HarDocument, TellsOfAnExchangeWithoutAnAnswerAndOfThoseThatAreLeftOut) {
  du::http::ObservedExchange exchange;
  exchange.url = "http://h/servlet/OrvetGW";
  exchange.result = du::http::ErrorCode::NoConnection;
  rapidjson::Document har;
  har.Parse(HarDocument({{exchange}, 3}, {}).c_str());
  EXPECT_EQ(har["log"]["entries"][0]["response"]["status"].GetInt(), 0);
  EXPECT_STREQ(har["log"]["entries"][0]["response"]["_error"].GetString(), "the exchange failed, code 1");
  EXPECT_STREQ(har["log"]["comment"].GetString(), "3 later exchanges are left out for want of room");
}

// A secret of a later exchange may be in an earlier one.
TEST(HarDocument, HidesASecretInEveryExchange) {
  du::http::ObservedExchange first = Exchange();
  first.answerBody = R"({"text":"CanaryLater"})";
  du::http::ObservedExchange second = Exchange();
  second.turns[0].requestHead += "\r\nX-Zvk-Nonce: CanaryLater";
  EXPECT_THAT(HarDocument({{first, second}, 0}, {}), Not(HasSubstr("CanaryLater")));
}

}  // namespace vtdirect_cli
