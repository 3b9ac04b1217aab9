#include "simulator/wire/odata_filter.h"

#include <gtest/gtest.h>

#include <array>

#include "simulator/store/database.h"

namespace vantry_sim {
namespace {

constexpr std::array properties{
    ODataProperty{"Name", "t.name"},
    ODataProperty{"Number", "t.number"},
    ODataProperty{"Location", ""},
};
constexpr ODataEntity entity{properties, "t.id", "Name"};

/// Names of the rows that a filter leaves, or the status and reason of its refusal.
std::string Evaluate(std::string_view filter) {
  Database database(":memory:");
  database.Execute(
      "CREATE TABLE t(id INTEGER PRIMARY KEY, name TEXT, number TEXT);"
      "INSERT INTO t(name, number) VALUES('a', '1'), ('b', '2'), ('it''s', '3'), ('c', '1'), ('''', '4');");
  ODataProblem problem;
  const auto condition = ParseODataFilter(filter, entity, problem);
  if (!condition) return std::to_string(problem.status) + (problem.reason.empty() ? " without a reason" : "");
  SqlText sql;
  sql.Add("SELECT t.name FROM t WHERE ").Add(*condition).Add(" ORDER BY t.id");
  Statement statement = sql.Prepare(database);
  std::string names;
  while (statement.Step()) names += statement.Text(0) + ";";
  return names;
}

TEST(ODataFilter, ComparesForEquality) {
  EXPECT_EQ(Evaluate("Name eq 'a'"), "a;");
  EXPECT_EQ(Evaluate("  Number   eq '1' "), "a;c;");
  EXPECT_EQ(Evaluate("Name eq 'A'"), "");
  EXPECT_EQ(Evaluate("Name eq ''"), "");
}

TEST(ODataFilter, AndBindsTighterThanOr) {
  EXPECT_EQ(Evaluate("Name eq 'b' or Name eq 'a' and Number eq '2'"), "b;");
  EXPECT_EQ(Evaluate("(Name eq 'b' or Name eq 'a') and Number eq '1'"), "a;");
  EXPECT_EQ(Evaluate("((Name eq 'c'))"), "c;");
}

TEST(ODataFilter, DoubledApostropheIsOne) {
  EXPECT_EQ(Evaluate("Name eq 'it''s'"), "it's;");
  EXPECT_EQ(Evaluate("Name eq ''''"), "';");
}

TEST(ODataFilter, ApostropheLeftSingleByAClientIsTakenAsPartOfTheName) {
  EXPECT_EQ(Evaluate("Name eq 'it's'"), "it's;");
  EXPECT_EQ(Evaluate("Name eq '''"), "';");
}

TEST(ODataFilter, ValueNeverBecomesSql) {
  EXPECT_EQ(Evaluate("Name eq 'a'' OR ''1''=''1'"), "");
  EXPECT_EQ(Evaluate("Name eq 'a'; DROP TABLE t; --'"), "");
}

TEST(ODataFilter, WhatCannotBeReadIsABadRequest) {
  for (const char* filter :
       {"", "Name", "Name eq", "Name eq a", "Name eq 'a", "Name eq 'a' and", "(Name eq 'a'", "Name eq 'a') ",
        "and", "Unknown eq 'a'", "eq 'a'", "Name eq 'a' or Unknown eq 'b'"}) {
    EXPECT_EQ(Evaluate(filter), "400") << filter;
  }
}

TEST(ODataFilter, WhatIsntEvaluatedIsSaidSo) {
  for (const char* filter :
       {"Name ne 'a'", "Name gt 'a'", "startswith(Name,'a')", "not Name eq 'a'", "Location eq '/'"}) {
    EXPECT_EQ(Evaluate(filter), "501") << filter;
  }
}

TEST(ODataFilter, DepthNumberAndLengthHaveBounds) {
  const std::string deep = std::string(100'000, '(') + "Name eq 'a'" + std::string(100'000, ')');
  EXPECT_EQ(Evaluate(deep), "400");
  EXPECT_EQ(Evaluate(std::string(33, '(') + "Name eq 'a'" + std::string(33, ')')), "400");
  EXPECT_EQ(Evaluate(std::string(32, '(') + "Name eq 'a'" + std::string(32, ')')), "a;");
  std::string many = "Name eq 'a'";
  for (int i = 1; i < 64; ++i) many += " or Name eq 'a'";
  EXPECT_EQ(Evaluate(many), "a;");
  EXPECT_EQ(Evaluate(many + " or Name eq 'a'"), "400");
}

TEST(ODataFilter, EveryPrefixOfAFilterIsReadOrRefused) {
  const std::string filter = "(Name eq 'a' or Number eq '2') and Name eq 'it''s'";
  for (std::size_t length = 0; length <= filter.size(); ++length)
    EXPECT_NO_THROW(Evaluate(filter.substr(0, length)));
}

}  // namespace
}  // namespace vantry_sim
