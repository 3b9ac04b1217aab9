#include "simulator/wire/router.h"

#include <gtest/gtest.h>

namespace vantry_sim {
namespace {

Handler Says(const std::string& text) {
  return [text](const Request& request) {
    Response response;
    response.body = text;
    for (const auto& [name, value] : request.pathParameters) response.body += "|" + name + "=" + value;
    return response;
  };
}

Router Sample() {
  Router router;
  router.Add("GET", "documents/{id}", Says("one"));
  router.Add("GET", "documents/search", Says("search"));
  router.Add("POST", "documents/{id}", Says("write"));
  router.Add("GET", "documents/{id}/versions", Says("versions"));
  router.Add("GET", "Ask(name='{name}')", Says("ask"));
  router.Add("GET", "tree/v{version}/{...}", [](const Request& request) {
    Response response;
    for (const std::string& segment : request.tail)
      response.body += request.Path("version") + ":" + segment + ";";
    return response;
  });
  router.Add("GET", "tree/v1/root", Says("root"));
  return router;
}

Response Dispatch(const std::string& method, const std::string& path) {
  Request request;
  request.method = method;
  return Sample().Dispatch(request, path);
}

TEST(Router, LiteralSegmentWinsOverAParameter) {
  EXPECT_EQ(Dispatch("GET", "/documents/search").body, "search");
  EXPECT_EQ(Dispatch("GET", "/documents/D1").body, "one|id=D1");
  EXPECT_EQ(Dispatch("GET", "/documents/search/versions").body, "versions|id=search");
}

TEST(Router, EscapedSlashStaysInsideAParameter) {
  EXPECT_EQ(Dispatch("GET", "/documents/a%2Fb%20c").body, "one|id=a/b c");
}

TEST(Router, ParameterMayHaveTextOnBothSides) {
  EXPECT_EQ(Dispatch("GET", "/Ask(name='x')").body, "ask|name=x");
  EXPECT_EQ(Dispatch("GET", "/Ask(name=%27x%27)").body, "ask|name=x");
  EXPECT_EQ(Dispatch("GET", "/Ask(name='')").status, 404);
  EXPECT_EQ(Dispatch("GET", "/Ask(name=')").status, 404);
}

TEST(Router, OpenEndTakesOneOrMoreSegments) {
  EXPECT_EQ(Dispatch("GET", "/tree/v2/a/b%2Fc/d").body, "2:a;2:b/c;2:d;");
  EXPECT_EQ(Dispatch("GET", "/tree/v1/other").body, "1:other;");
  EXPECT_EQ(Dispatch("GET", "/tree/v1/root").body, "root");
  EXPECT_EQ(Dispatch("GET", "/tree/v1").status, 404);
  EXPECT_EQ(Dispatch("GET", "/tree/v/a").status, 404);
}

TEST(Router, ParameterIsNeverEmpty) {
  EXPECT_EQ(Dispatch("GET", "/documents/").status, 404);
}

TEST(Router, OtherMethodIsToldWhichOnesThereAre) {
  const Response response = Dispatch("PUT", "/documents/D1");
  EXPECT_EQ(response.status, 405);
  ASSERT_EQ(response.headers.size(), 1U);
  EXPECT_EQ(response.headers[0].second, "GET, POST");
}

TEST(Router, BrokenEscapesAreRefused) {
  for (const char* path : {"/documents/%", "/documents/%4", "/documents/%zz", "/documents/%00"}) {
    EXPECT_EQ(Dispatch("GET", path).status, 400) << path;
  }
}

TEST(Query, IsDecodedInOrderAndKeepsItsDollars) {
  const auto parameters = ParseQuery("$filter=a%20eq%20'b%26c'&x&=y&&a=1=2+3");
  ASSERT_TRUE(parameters);
  const QueryParameters expected{{"$filter", "a eq 'b&c'"}, {"x", ""}, {"", "y"}, {"a", "1=2+3"}};
  EXPECT_EQ(*parameters, expected);
  EXPECT_FALSE(ParseQuery("a=%g0"));
}

TEST(PercentEncoding, LeavesUnreservedBytesAlone) {
  EXPECT_EQ(PercentEncode("aZ09-._~"), "aZ09-._~");
  EXPECT_EQ(PercentEncode("ö /"), "%C3%B6%20%2F");
}

}  // namespace
}  // namespace vantry_sim
