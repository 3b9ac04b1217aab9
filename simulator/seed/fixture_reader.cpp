#include "simulator/seed/fixture_reader.h"

#include <algorithm>
#include <set>

#include "simulator/seed/fixture_defaults.h"
#include "simulator/seed/fixture_documents.h"
#include "simulator/seed/fixture_places.h"

namespace vantry_sim {
namespace {

void ReadApplicationVersions(JsonValue list, Fixture& fixture, FixtureProblems& problems) {
  for (const JsonValue value : list) {
    const FixtureObject object(value, "an application version", {"application", "version"}, problems);
    fixture.applicationVersions.emplace_back(object.Required("application"), object.Required("version"));
  }
}

/// The order of making names every iteration once, or none at all.
void ReadOrder(const FixtureObject& root, const FixtureDocuments& documents, Fixture& fixture,
               FixtureProblems& problems) {
  if (!root.Has("order")) return;
  std::set<std::string> seen;
  for (const JsonValue value : root.List("order")) {
    const std::string id = ScalarText(value).value_or("");
    if (!documents.Has(id)) problems.Add(value.Line(), "order names no version of this file: " + id);
    if (!seen.insert(id).second) problems.Add(value.Line(), "order names " + id + " twice");
    fixture.order.push_back(id);
  }
  std::size_t count = 0;
  for (const FixtureDocument& document : fixture.documents)
    count += document.versions.size() + (document.checkout ? 1 : 0);
  if (seen.size() != count) root.Problem("order", "must name every version and working copy");
}

}  // namespace

std::optional<Fixture> ReadFixture(JsonValue root, const FixtureSources& sources,
                                   std::vector<FixtureProblem>& problems) {
  Fixture fixture;
  FixtureProblems found;
  const FixtureObject object(
      root, "a state",
      {"users", "contexts", "workspaces", "documents", "applicationVersions", "nextId", "order"}, found);
  FixturePlaces places(fixture, found);
  places.Read(object);
  FixtureDocuments documents(fixture, places, sources, found);
  documents.Read(object.List("documents"), object.List("workspaces"));
  ReadApplicationVersions(object.List("applicationVersions"), fixture, found);
  ReadOrder(object, documents, fixture, found);
  const std::int64_t last = std::max(places.LastNumber(), documents.LastNumber());
  fixture.nextId = std::max({object.Number("nextId").value_or(0), last + 1, firstGivenId});
  problems = found.list();
  return found.empty() ? std::optional(std::move(fixture)) : std::nullopt;
}

std::optional<Fixture> ReadFixtureFile(const std::filesystem::path& file,
                                       std::vector<FixtureProblem>& problems) {
  FixtureProblem problem;
  const auto tree = ReadFixtureTree(file, problem);
  if (!tree) {
    problems = {problem};
    return std::nullopt;
  }
  return ReadFixture(tree->Root(), {file.parent_path()}, problems);
}

std::string TextOf(const std::vector<FixtureProblem>& problems, const std::string& file) {
  std::string text;
  for (const FixtureProblem& problem : problems) {
    text += text.empty() ? "" : "\n";
    text += file + (problem.line == 0 ? ": " : ":" + std::to_string(problem.line) + ": ") + problem.reason;
  }
  return text;
}

}  // namespace vantry_sim
