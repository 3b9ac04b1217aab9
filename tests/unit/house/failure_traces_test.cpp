#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/house/sources.h"

// What people read in a trace and what programs read in an Outcome are said by one function, in one
// statement.
namespace {

namespace fs = std::filesystem;
using vtdirect_house::ReadWhole;
using vtdirect_house::root;
using vtdirect_house::SourcesBelow;

std::vector<fs::path> LibrarySources() {
  std::vector<fs::path> files;
  for (const char* folder :
       {"base", "connection", "documents", "browsing", "translation", "server", "public"}) {
    for (const fs::path& file : SourcesBelow(folder)) files.push_back(file);
  }
  return files;
}

// The statement that a position is in, up to there.
std::string StatementBefore(const std::string& text, std::size_t position) {
  // A brace closes a block at the end of its line, and a record within a line.
  const auto semicolon = text.rfind(';', position);
  const auto block = text.rfind("}\n", position);
  std::size_t start = semicolon == std::string::npos ? 0 : semicolon;
  if (block != std::string::npos && block > start) start = block;
  return text.substr(start, position - start);
}

// Statements that name a type of failure and trace nothing.
const std::map<std::string, std::string>& Exceptions() {
  static const std::map<std::string, std::string> exceptions{
      {"public/path_resolution.cpp",
       "FailureLevel chooses between two types; TracerFor traces by its result"},
      {"base/failure_trace.h", "the comment that shows how TracerFor is used"},
  };
  return exceptions;
}

TEST(TracesOfFailures, AreWrittenByTheFunctionThatReportsTheirReason) {
  const std::regex failure(R"(TraceType::(Error|Warning))");
  int found = 0;
  for (const fs::path& file : LibrarySources()) {
    const std::string name = fs::relative(file, root).string();
    const std::string text = ReadWhole(file);
    for (std::sregex_iterator hit(text.begin(), text.end(), failure), end; hit != end; ++hit) {
      ++found;
      const std::string statement = StatementBefore(text, static_cast<std::size_t>(hit->position()));
      const bool reports = statement.find("TracerFor(") != std::string::npos;
      EXPECT_TRUE(reports || Exceptions().count(name) == 1) << name << ": " << statement;
    }
  }
  EXPECT_GT(found, 50);
}

// A type that is worked out would pass the test above.
TEST(TracesOfOtherThings, NameTheirTypeWhereTheyAreWritten) {
  const std::regex plain(R"(Tracer\(\)\(\s*([A-Za-z:]*))");
  for (const fs::path& file : LibrarySources()) {
    const std::string text = ReadWhole(file);
    for (std::sregex_iterator hit(text.begin(), text.end(), plain), end; hit != end; ++hit) {
      const std::string type = (*hit)[1];
      EXPECT_TRUE(type == "dp::TraceType::Information" || type == "dp::TraceType::Miss")
          << file << ": " << hit->str();
    }
  }
}

TEST(ExceptionsOfTraces, AreInUse) {
  for (const auto& [name, reason] : Exceptions()) {
    EXPECT_NE(ReadWhole(root / name).find("TraceType::Error"), std::string::npos) << name << ": " << reason;
  }
}

// The words between double quotes in the section of the page that lists the steps.
std::set<std::string> StepsOfThePage() {
  const std::string page = ReadWhole(root / "docs/reasons.md");
  const auto start = page.find("\n## Steps\n");
  const std::string section = page.substr(start, page.find("\n## ", start + 1) - start);
  const std::regex quoted("\"([^\"]+)\"");
  std::set<std::string> steps;
  for (std::sregex_iterator hit(section.begin(), section.end(), quoted), end; hit != end; ++hit) {
    steps.insert((*hit)[1]);
  }
  return steps;
}

// What the pattern finds in the sources: the first group of a hit, and the second one.
std::set<std::pair<std::string, std::string>> HitsInSources(const std::regex& pattern) {
  std::set<std::pair<std::string, std::string>> hits;
  for (const fs::path& file : LibrarySources()) {
    const std::string text = ReadWhole(file);
    for (std::sregex_iterator hit(text.begin(), text.end(), pattern), end; hit != end; ++hit) {
      hits.emplace((*hit)[1], (*hit)[2]);
    }
  }
  return hits;
}

// The names of steps, and their words. A name with two texts would be here twice.
std::multimap<std::string, std::string> NamedSteps() {
  const auto hits = HitsInSources(std::regex("const char\\* (step[A-Z][A-Za-z]*) = \"([^\"]+)\""));
  return {hits.begin(), hits.end()};
}

TEST(StepsOfFailures, AreThoseOfThePage) {
  const auto names = NamedSteps();
  std::set<std::string> steps;
  for (const auto& [words, name] :
       HitsInSources(std::regex("FailureStep [a-z]+\\((?:\"([^\"]+)\"|(step[A-Z][A-Za-z]*))\\)"))) {
    if (name.empty()) {
      steps.insert(words);
      continue;
    }
    EXPECT_EQ(names.count(name), 1U) << name;
    for (auto [named, last] = names.equal_range(name); named != last; ++named) steps.insert(named->second);
  }
  EXPECT_EQ(steps, StepsOfThePage());
}

// What hosts compare with is what the library says.
TEST(StepsOfFailures, AreCalledAlikeInTheHeaderOfHosts) {
  const std::string header = ReadWhole(root / "public/outcome.h");
  for (const auto& [name, words] : NamedSteps()) {
    EXPECT_NE(header.find(name + " = \"" + words + "\";"), std::string::npos) << name;
  }
}

}  // namespace
