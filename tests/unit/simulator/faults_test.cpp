#include "simulator/wire/faults.h"

#include <gtest/gtest.h>

namespace vantry_sim {
namespace {

using Kind = FaultAction::Kind;

std::optional<FaultRule> Parse(std::string_view text) {
  std::string error;
  auto rule = ParseFaultRule(text, &error);
  EXPECT_EQ(rule.has_value(), error.empty()) << error;
  return rule;
}

TEST(FaultGrammar, ReadsEachAction) {
  EXPECT_EQ(Parse("GET /a=503")->action.status, 503);
  EXPECT_EQ(Parse("GET /a=stall")->action.kind, Kind::kStall);
  EXPECT_FALSE(Parse("GET /a=stall")->action.bytes);
  EXPECT_EQ(Parse("GET /a=stall:7")->action.bytes, 7U);
  EXPECT_EQ(Parse("GET /a=cut:0")->action.kind, Kind::kCut);
  EXPECT_EQ(Parse("GET /a=cut:4294967296")->action.bytes, 4294967296U);
  EXPECT_EQ(Parse("GET /a=chunked-cut:5")->action.kind, Kind::kChunkedCut);
  EXPECT_EQ(Parse("* /a=drop")->action.kind, Kind::kDrop);
}

TEST(FaultGrammar, LastEqualsSignPartsPatternAndAction) {
  const auto rule = Parse("GET /servlet/rest/v1/contexts?type=Product=500*2");
  EXPECT_EQ(rule->pattern, "/servlet/rest/v1/contexts?type=Product");
  EXPECT_EQ(rule->action.status, 500);
  EXPECT_EQ(rule->count, 2U);
}

TEST(FaultGrammar, PatternGetsItsLeadingSlash) {
  EXPECT_EQ(Parse("GET servlet/*=500")->pattern, "/servlet/*");
  EXPECT_EQ(Parse("GET *gw=500")->pattern, "*gw");
}

TEST(FaultGrammar, RefusesWhatItDoesNotKnow) {
  for (const char* text : {"", "GET", "GET /a", "/a=500", "get /a=500", "GET =500", "GET /a=99", "GET /a=600",
                           "GET /a=cut", "GET /a=cut:", "GET /a=cut:x", "GET /a=cut:-1", "GET /a=500*",
                           "GET /a=500*0", "GET /a=slow", "GET /a=drop:3"}) {
    EXPECT_FALSE(Parse(text)) << text;
  }
}

TEST(FaultGlob, StarStandsForAnyRunAndNothingElseIsSpecial) {
  EXPECT_TRUE(GlobMatches("/a/*/c", "/a/b/x/c"));
  EXPECT_TRUE(GlobMatches("*", ""));
  EXPECT_TRUE(GlobMatches("/a*", "/a"));
  EXPECT_TRUE(GlobMatches("/a?b=[c]", "/a?b=[c]"));
  EXPECT_FALSE(GlobMatches("/a?", "/ab"));
  EXPECT_FALSE(GlobMatches("/a", "/a/b"));
  EXPECT_FALSE(GlobMatches("", "x"));
  EXPECT_TRUE(GlobMatches("*ab*ab", "abxabab"));
}

TEST(FaultGlob, ManyStarsStayCheap) {
  std::string pattern;
  for (int i = 0; i < 50; ++i) pattern += "*a";
  EXPECT_FALSE(GlobMatches(pattern + "b", std::string(8000, 'a')));
}

TEST(FaultTable, CountsOnlyWhatMatches) {
  FaultTable table({*Parse("GET /a=500*2"), *Parse("* /a=404")});
  EXPECT_FALSE(table.Take("GET", "/b").has_value());
  EXPECT_EQ(table.Take("POST", "/a")->status, 404);
  EXPECT_EQ(table.Take("GET", "/a")->status, 500);
  EXPECT_EQ(table.Take("GET", "/a")->status, 500);
  EXPECT_EQ(table.Take("GET", "/a")->status, 404);
}

}  // namespace
}  // namespace vantry_sim
