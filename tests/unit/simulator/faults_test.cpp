#include "simulator/wire/fault_table.h"

#include <gtest/gtest.h>

#include <algorithm>

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
  EXPECT_EQ(Parse("GET /a=stall")->action.kind, Kind::Stall);
  EXPECT_FALSE(Parse("GET /a=stall")->action.amount);
  EXPECT_EQ(Parse("GET /a=stall:7")->action.amount, 7U);
  EXPECT_EQ(Parse("GET /a=cut:0")->action.kind, Kind::Cut);
  EXPECT_EQ(Parse("GET /a=cut:4294967296")->action.amount, 4294967296U);
  EXPECT_EQ(Parse("GET /a=chunked-cut:5")->action.kind, Kind::ChunkedCut);
  EXPECT_EQ(Parse("* /a=drop")->action.kind, Kind::Drop);
}

TEST(FaultGrammar, LastEqualsSignPartsPatternAndAction) {
  const auto rule = Parse("GET /servlet/rest/v1/contexts?type=Product=500*2");
  EXPECT_EQ(rule->pattern, "/servlet/rest/v1/contexts?type=Product");
  EXPECT_EQ(rule->action.status, 500);
  EXPECT_EQ(rule->count, 2U);
}

TEST(FaultGrammar, ReadsTheActionsThatChangeAnAnswer) {
  EXPECT_EQ(Parse("POST /a=lost-answer")->action.kind, Kind::LostAnswer);
  EXPECT_EQ(Parse("GET /a=slow:1")->action.kind, Kind::Slow);
  EXPECT_EQ(Parse("GET /a=slow:1")->action.amount, 1U);
  EXPECT_EQ(Parse("GET /a=delay:0")->action.kind, Kind::Delay);
  EXPECT_EQ(Parse("GET /a=corrupt*2")->action.kind, Kind::Corrupt);
  EXPECT_EQ(Parse("GET /a=expire-session")->action.kind, Kind::ExpireSession);
  EXPECT_EQ(Parse("GET /a=busy:7")->action.kind, Kind::Busy);
  EXPECT_EQ(Parse("GET /a=busy:7")->action.amount, 7U);
  const auto redirect = Parse("GET /a=redirect:https://other.example/?a=b*3");
  EXPECT_EQ(redirect->action.kind, Kind::Redirect);
  EXPECT_EQ(redirect->action.text, "https://other.example/?a=b");
  EXPECT_EQ(redirect->count, 3U);
}

TEST(FaultGrammar, StatusMayHaveABodyWithEverySign) {
  const auto rule = Parse("GET /a?b=c=status:404:x=y*z, after:3 = 500");
  EXPECT_EQ(rule->pattern, "/a?b=c");
  EXPECT_EQ(rule->action.kind, Kind::Status);
  EXPECT_EQ(rule->action.status, 404);
  EXPECT_EQ(rule->action.text, "x=y*z, after:3 = 500");
  EXPECT_FALSE(rule->count);
  EXPECT_EQ(Parse("GET /a=status:404:")->action.text, "");
}

TEST(FaultGrammar, RuleMayComeAfterOthersAndByChance) {
  const auto rule = Parse("GET /a=after:3,chance:25:7,503*2");
  EXPECT_EQ(rule->after, 3U);
  EXPECT_EQ(rule->percent, 25U);
  EXPECT_EQ(rule->seed, 7U);
  EXPECT_EQ(rule->action.status, 503);
  EXPECT_EQ(rule->count, 2U);
  const auto text = Parse("GET /a=chance:50,status:503:a,b");
  EXPECT_EQ(text->percent, 50U);
  EXPECT_EQ(text->action.text, "a,b");
}

TEST(FaultGrammar, PatternGetsItsLeadingSlash) {
  EXPECT_EQ(Parse("GET servlet/*=500")->pattern, "/servlet/*");
  EXPECT_EQ(Parse("GET *gw=500")->pattern, "*gw");
}

TEST(FaultGrammar, RefusesWhatItDoesNotKnow) {
  for (const char* text : {"",
                           "GET",
                           "GET /a",
                           "/a=500",
                           "get /a=500",
                           "GET =500",
                           "GET /a=99",
                           "GET /a=600",
                           "GET /a=cut",
                           "GET /a=cut:",
                           "GET /a=cut:x",
                           "GET /a=cut:-1",
                           "GET /a=500*",
                           "GET /a=500*0",
                           "GET /a=slow",
                           "GET /a=drop:3",
                           "GET /a=slow:0",
                           "GET /a=delay",
                           "GET /a=busy",
                           "GET /a=corrupt:1",
                           "GET /a=redirect:",
                           "GET /a=redirect:x\r\ny",
                           "GET /a=status:99:x",
                           "GET /a=status:404",
                           "GET /a=after:x,500",
                           "GET /a=after:3",
                           "GET /a=chance:0,500",
                           "GET /a=chance:101,500",
                           "GET /a=chance:5:x,500",
                           "GET /a=chance:5,after:3,500"}) {
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
  FaultTable table({"GET /a=500*2", "* /a=404"});
  EXPECT_FALSE(table.Take("GET", "/b").has_value());
  EXPECT_EQ(table.Take("POST", "/a")->action.status, 404);
  EXPECT_EQ(table.Take("GET", "/a")->action.status, 500);
  EXPECT_EQ(table.Take("GET", "/a")->action.status, 500);
  EXPECT_EQ(table.Take("GET", "/a")->action.status, 404);
}

TEST(FaultTable, RulesComeAndGoWhileItIsAsked) {
  FaultTable table;
  std::string error;
  EXPECT_FALSE(table.Take("GET", "/a"));
  EXPECT_FALSE(table.Add("nonsense", &error));
  EXPECT_NE(error, "");
  EXPECT_EQ(table.Add("GET /a=500*1", &error), 1U);
  EXPECT_EQ(table.Add("GET /a=404", &error), 2U);
  EXPECT_EQ(table.Take("GET", "/a")->rule, 1U);
  EXPECT_EQ(table.Take("GET", "/a")->rule, 2U);
  EXPECT_EQ(table.Find(1)->met, 1U);
  EXPECT_EQ(table.Find(1)->matches, 2U);
  EXPECT_EQ(table.Find(1)->left, 0U);
  EXPECT_EQ(table.Find(2)->text, "GET /a=404");
  EXPECT_FALSE(table.Find(2)->left);
  EXPECT_TRUE(table.Remove(2));
  EXPECT_FALSE(table.Remove(2));
  EXPECT_FALSE(table.Take("GET", "/a"));
  EXPECT_EQ(table.Add("GET /b=404", &error), 3U);
  EXPECT_EQ(table.List().size(), 2U);
  table.Clear();
  EXPECT_FALSE(table.Take("GET", "/b"));
}

TEST(FaultTable, MatchesBeforeItsTurnAreLeftToTheRulesBehind) {
  FaultTable table({"GET /a=after:2,500*1", "GET /a=404*1"});
  EXPECT_EQ(table.Take("GET", "/a")->action.status, 404);
  EXPECT_FALSE(table.Take("GET", "/a"));
  EXPECT_EQ(table.Take("GET", "/a")->action.status, 500);
  EXPECT_FALSE(table.Take("GET", "/a"));
}

std::string Draws(const std::string& rule) {
  FaultTable table({rule});
  std::string drawn;
  for (int i = 0; i < 1000; ++i) drawn += table.Take("GET", "/a") ? 'x' : '.';
  return drawn;
}

TEST(FaultTable, ChanceIsAboutThePercentageAndTheSameForTheSameSeed) {
  const std::string drawn = Draws("GET /a=chance:25:7,500");
  const auto met = std::count(drawn.begin(), drawn.end(), 'x');
  EXPECT_GT(met, 180);
  EXPECT_LT(met, 320);
  EXPECT_EQ(Draws("GET /a=chance:25:7,500"), drawn);
  EXPECT_NE(Draws("GET /a=chance:25:8,500"), drawn);
  EXPECT_EQ(Draws("GET /a=chance:100,500"), std::string(1000, 'x'));
}

}  // namespace
}  // namespace vantry_sim
