// The README names ids that scripts and people build on; here it is held to what the server says.
#include <regex>
#include <set>

#include "simulator/program_texts.h"
#include "simulator/seed/fixture_reader.h"
#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

std::vector<std::string> ReadmeLines() {
  std::vector<std::string> lines;
  std::ifstream file(VANTRY_SIM_README);
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

/// A "|" inside a table is written "\|".
std::string WithoutTableEscapes(std::string text) {
  for (std::size_t at = 0; (at = text.find("\\|", at)) != std::string::npos; ++at) text.erase(at, 1);
  return text;
}

TEST_F(SimulatorTest, ReadmeTellsTheTruthAboutEveryDemoDocument) {
  const std::regex row(R"(\| (D[0-9]+) \| `(.*)` \| ([^|]+) \| ([A-Z]+)\.([0-9]+)(;[^|]*)? \|.*)");
  std::set<std::string> told;
  for (const std::string& line : ReadmeLines()) {
    std::smatch match;
    if (!std::regex_match(line, match, row)) continue;
    told.insert(match[1]);
    const auto document = GetJson("/servlet/rest/v1/dkm/documents/" + match[1].str());
    EXPECT_EQ(document["epmMaster"]["cadName"].GetString(), WithoutTableEscapes(match[2])) << line;
    EXPECT_EQ(document["epmMaster"]["number"].GetString(), match[3].str()) << line;
    EXPECT_EQ(document["revision"].GetString(), match[4].str()) << line;
    EXPECT_EQ(document["iteration"].GetString(), match[5].str()) << line;
    EXPECT_TRUE(document["pdmIterationState"]["isLatest"].GetBool()) << line;
  }
  // Every master of the demo, and so every latest version, is in the table.
  simulator_.reset();
  Database database((directory_ / "data/vantry-sim.db").string());
  auto latest = database.Prepare("SELECT oid FROM iterations WHERE is_latest = 1");
  std::set<std::string> held;
  while (latest.Step()) held.insert(latest.Text(0));
  EXPECT_EQ(told, held);
}

TEST_F(SimulatorTest, ReadmeTellsTheTruthAboutEarlierVersions) {
  const std::regex row(R"(\| D[0-9]+ \|.*)");
  const std::regex earlier(R"(([A-Z])\.([0-9]+) (D[0-9]+))");
  int count = 0;
  for (const std::string& line : ReadmeLines()) {
    if (!std::regex_match(line, row)) continue;
    for (std::sregex_iterator match(line.begin(), line.end(), earlier), end; match != end; ++match, ++count) {
      const auto document = GetJson("/servlet/rest/v1/dkm/documents/" + (*match)[3].str());
      EXPECT_EQ(document["revision"].GetString(), (*match)[1].str()) << line;
      EXPECT_EQ(document["iteration"].GetString(), (*match)[2].str()) << line;
      EXPECT_FALSE(document["pdmIterationState"]["isLatest"].GetBool()) << line;
    }
  }
  EXPECT_GT(count, 10);
}

TEST_F(SimulatorTest, ReadmeNamesEveryContextByItsId) {
  const auto contexts = GetJson("/servlet/rest/v1/contexts");
  std::string readme;
  for (const std::string& line : ReadmeLines()) readme += line + "\n";
  for (const auto& context : contexts["items"].GetArray()) {
    const std::string row =
        std::string(context["attributes"]["name"].GetString()) + " | `" + context["id"].GetString() + "` |";
    EXPECT_NE(readme.find(row), std::string::npos) << row;
  }
}

TEST(Readme, StateFileOfTheExampleIsOneThatIsTaken) {
  std::string example;
  bool inside = false;
  for (const std::string& line : ReadmeLines()) {
    if (line == "```") inside = false;
    if (inside) example += line + "\n";
    if (line == "```yaml") inside = true;
  }
  FixtureProblem broken;
  const auto tree = ReadYaml(example, broken);
  ASSERT_TRUE(tree) << TextOf(broken);
  std::vector<FixtureProblem> problems;
  const auto fixture = ReadFixture(tree->Root(), {}, problems);
  ASSERT_TRUE(fixture) << TextOf(problems, "example");
  EXPECT_EQ(fixture->documents.size(), 7U);
}

TEST_F(SimulatorTest, ReadmeHasTheRoutesOfTheRouter) {
  const std::string table = RouteTable(Start().Routes());
  std::string told;
  bool inside = false;
  for (const std::string& line : ReadmeLines()) {
    if (line == "<!-- end of routes -->") inside = false;
    if (inside) told += line + "\n";
    if (line == "<!-- routes -->") inside = true;
  }
  EXPECT_EQ(told, table) << "put in what vantry-sim --generate routes prints";
  for (const Router::Listed& route : Start().Routes()) EXPECT_NE(route.about, "") << route.pattern;
}

TEST(Readme, ListsTheOptionsOfTheHelp) {
  const char* argv[] = {"vantry-sim", "--help"};
  const std::string help = ParseCommandLine(2, argv).text;
  const auto options = [](const std::string& text, const std::regex& form) {
    std::set<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), form), end; match != end; ++match) {
      found.insert((*match)[1]);
    }
    found.erase("--help");
    return found;
  };
  std::string readme;
  for (const std::string& line : ReadmeLines()) readme += line + "\n";
  EXPECT_EQ(options(readme, std::regex(R"(\n\| `(--[a-z-]+))")),
            options(help, std::regex(R"(\n +(?:-h,)?(--[a-z-]+))")));
}

}  // namespace
}  // namespace vantry_sim
