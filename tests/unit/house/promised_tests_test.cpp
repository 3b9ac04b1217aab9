#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

#include "tests/unit/house/sources.h"

// The page of promises names a test for each of them. A test that is renamed or goes leaves a promise that nothing
// holds.
namespace {

using testing::IsEmpty;
using vtdirect_house::ReadWhole;
using vtdirect_house::root;
using vtdirect_house::SourcesBelow;

// "Suite" and "Suite.Name" of all tests.
std::set<std::string> TestsBelow(const std::string& folder) {
  const std::regex head(R"(\nTEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\))");
  std::set<std::string> tests;
  for (const auto& path : SourcesBelow(folder)) {
    const std::string text = ReadWhole(path);
    for (std::size_t at = text.find("\nTEST"); at != std::string::npos; at = text.find("\nTEST", at + 1)) {
      std::smatch match;
      const auto from = text.begin() + static_cast<std::ptrdiff_t>(at);
      if (!std::regex_search(from, text.end(), match, head, std::regex_constants::match_continuous)) continue;
      tests.insert(match[1].str());
      tests.insert(match[1].str() + "." + match[2].str());
    }
  }
  return tests;
}

// What is in backquotes and written as a test is: "Suite" or "Suite.Name".
std::set<std::string> TestsNamedIn(const std::string& text) {
  const std::regex name(R"(`([A-Z][A-Za-z0-9]+(?:\.[A-Z][A-Za-z0-9]+)?)`)");
  std::set<std::string> names;
  for (std::sregex_iterator at(text.begin(), text.end(), name), end; at != end; ++at) {
    names.insert((*at)[1].str());
  }
  return names;
}

TEST(PromisedTests, Exist) {
  const std::set<std::string> tests = TestsBelow("tests");
  const std::set<std::string> named = TestsNamedIn(ReadWhole(root / "docs/losing-nothing.md"));
  EXPECT_GT(named.size(), 20U);
  std::set<std::string> missing;
  for (const std::string& name : named) {
    if (!tests.contains(name)) missing.insert(name);
  }
  EXPECT_THAT(missing, IsEmpty());
}

TEST(PromisedTests, AreReadFromAPageAsTheyAreWritten) {
  EXPECT_EQ(
      TestsNamedIn("Tests: `One.HoldsThis`, `Two`; not `put` nor `--force` nor `tests/e2e/one_test.cpp`."),
      (std::set<std::string>{"One.HoldsThis", "Two"}));
}

}  // namespace
