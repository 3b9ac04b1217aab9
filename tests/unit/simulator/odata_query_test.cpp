#include "simulator/wire/odata_query.h"

#include <gtest/gtest.h>

#include <limits>

namespace vantry_sim {
namespace {

int StatusOf(const QueryParameters& parameters) {
  ODataProblem problem;
  if (ParseODataQuery(parameters, problem)) return 200;
  EXPECT_FALSE(problem.reason.empty());
  return problem.status;
}

TEST(ODataQuery, ReadsEveryOptionThatItKnows) {
  ODataProblem problem;
  const auto query = ParseODataQuery({{"$filter", "Name eq 'a'"},
                                      {"$select", "ID, Name"},
                                      {"$orderby", "Version desc,Name"},
                                      {"$top", "7"},
                                      {"$expand", "Folders($levels=3;$select=ID,Name)"},
                                      {"$skiptoken", "12"},
                                      {"zvk.search.latestversion", "true"}},
                                     problem);
  ASSERT_TRUE(query) << problem.reason;
  EXPECT_EQ(query->filter, "Name eq 'a'");
  EXPECT_EQ(query->select, (std::vector<std::string>{"ID", "Name"}));
  ASSERT_EQ(query->order.size(), 2U);
  EXPECT_EQ(query->order[0].property, "Version");
  EXPECT_TRUE(query->order[0].descending);
  EXPECT_EQ(query->order[1].property, "Name");
  EXPECT_FALSE(query->order[1].descending);
  EXPECT_EQ(query->top, 7U);
  EXPECT_EQ(query->expand->navigation, "Folders");
  EXPECT_EQ(query->expand->levels, 3U);
  EXPECT_EQ(query->expand->select, (std::vector<std::string>{"ID", "Name"}));
  EXPECT_EQ(query->skipToken, "12");
  EXPECT_TRUE(query->latestVersionOnly);
}

TEST(ODataQuery, ExpandNeedsNoOptionsAndTakesAllLevels) {
  ODataProblem problem;
  EXPECT_EQ(ParseODataQuery({{"$expand", "Versions"}}, problem)->expand->levels, 1U);
  EXPECT_EQ(ParseODataQuery({{"$expand", "Folders($levels=max)"}}, problem)->expand->levels,
            std::numeric_limits<std::uint32_t>::max());
}

TEST(ODataQuery, WhatCannotBeReadIsABadRequest) {
  EXPECT_EQ(StatusOf({{"$filter", ""}}), 400);
  EXPECT_EQ(StatusOf({{"$select", ""}}), 400);
  EXPECT_EQ(StatusOf({{"$select", "ID,,Name"}}), 400);
  EXPECT_EQ(StatusOf({{"$orderby", "Version down"}}), 400);
  EXPECT_EQ(StatusOf({{"$orderby", ""}}), 400);
  EXPECT_EQ(StatusOf({{"$top", "-1"}}), 400);
  EXPECT_EQ(StatusOf({{"$top", "1x"}}), 400);
  EXPECT_EQ(StatusOf({{"$expand", "Folders($levels=3"}}), 400);
  EXPECT_EQ(StatusOf({{"$expand", "Folders($levels=0)"}}), 400);
  EXPECT_EQ(StatusOf({{"zvk.search.latestversion", "yes"}}), 400);
  EXPECT_EQ(StatusOf({{"unheard.of", "1"}}), 400);
  EXPECT_EQ(StatusOf({{"$top", "1"}, {"$top", "1"}}), 400);
}

TEST(ODataQuery, WhatIsntOfferedIsSaidSo) {
  EXPECT_EQ(StatusOf({{"$skip", "1"}}), 501);
  EXPECT_EQ(StatusOf({{"$count", "true"}}), 501);
  EXPECT_EQ(StatusOf({{"$select", "*"}}), 501);
  EXPECT_EQ(StatusOf({{"$expand", "Folders,Versions"}}), 501);
  EXPECT_EQ(StatusOf({{"$expand", "Folders($filter=Name)"}}), 501);
}

TEST(ODataQuery, PageSizeIsReadOutOfThePreferences) {
  EXPECT_EQ(PreferredPageSize("odata.maxpagesize=10000"), 10'000U);
  EXPECT_EQ(PreferredPageSize("respond-async, odata.maxpagesize=2;x=1"), 2U);
  EXPECT_EQ(PreferredPageSize(""), std::nullopt);
  EXPECT_EQ(PreferredPageSize("odata.maxpagesize=0"), std::nullopt);
  EXPECT_EQ(PreferredPageSize("odata.maxpagesize=x"), std::nullopt);
  EXPECT_EQ(PreferredPageSize("odata.maxpagesize=99999999999999999999999"), std::nullopt);
}

}  // namespace
}  // namespace vantry_sim
