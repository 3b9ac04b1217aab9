#pragma once

#include <filesystem>
#include <set>
#include <vector>

#include "simulator/seed/fixture.h"
#include "simulator/seed/fixture_ids.h"
#include "simulator/seed/fixture_object.h"

namespace vantry_sim {

/// Where the contents of a state file come from.
struct FixtureSources {
  std::filesystem::path directory;  ///< relative names of files begin here
  bool files = true;                ///< whether a state may name files at all
  std::set<std::int64_t> streams =
      {};  ///< numbers of streams that are there already, which a state may refer to
};

/// Reads the contents of versions.
class FixtureContents {
 public:
  FixtureContents(const FixtureSources& sources, FixtureProblems& problems)
      : sources_(sources), problems_(problems), streams_(sources.streams) {}

  /// Notes the ids that the contents of a version name, before others are made up.
  void Claim(JsonValue version);

  /// Reads `content`, `contents` and `secondary` of a version.
  /// @param category of a primary content that names none
  void Read(const FixtureObject& version, const std::string& category, FixtureVersion& out);

 private:
  void ClaimList(JsonValue list);
  FixtureContent ReadOne(JsonValue value, const std::string& category);
  FixtureBytes ReadBytes(const FixtureObject& object);
  FixtureBytes TextBytes(const std::string& text, std::uint32_t line);
  FixtureBytes FileBytes(const std::string& name, std::uint32_t line);
  void CheckStream(const FixtureObject& object, FixtureBytes& bytes);

  const FixtureSources& sources_;
  FixtureProblems& problems_;
  FixtureIds ids_{1};
  std::set<std::int64_t> streams_;  ///< numbers that bytes are known for
};

}  // namespace vantry_sim
