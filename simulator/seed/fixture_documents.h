#pragma once

#include <map>
#include <optional>
#include <string>

#include "simulator/seed/fixture.h"
#include "simulator/seed/fixture_contents.h"
#include "simulator/seed/fixture_places.h"

namespace vantry_sim {

/// Reads the documents of a state file.
class FixtureDocuments {
 public:
  FixtureDocuments(Fixture& fixture, FixturePlaces& places, const FixtureSources& sources,
                   FixtureProblems& problems)
      : fixture_(fixture), places_(places), contents_(sources, problems), problems_(problems) {}

  /// Reads them, and what workspaces hold of them. @param workspaces as the file has them
  void Read(JsonValue documents, JsonValue workspaces);

  /// Whether the file has an iteration of this id.
  [[nodiscard]] bool Has(const std::string& id) const { return versionIds_.Has(id); }
  [[nodiscard]] std::int64_t LastNumber() const;

 private:
  /// The ids of a document before it is read: what refers to it may come before it.
  struct Ids {
    std::string document;
    std::vector<std::string> versions;
    std::string checkout;
  };
  /// What a reference finds: a version, and the document that it is of.
  struct Target {
    std::string version;
    std::string document;
  };

  void ClaimAll(JsonValue documents);
  Ids MakeIds(JsonValue document);
  void NameAll(JsonValue document, const Ids& ids);
  void Name(const std::string& name, const Target& target);
  void ReadDocument(JsonValue value, const Ids& ids);
  void ReadVersions(const FixtureObject& object, JsonValue value, const Ids& ids, FixtureDocument& document);
  FixtureVersion ReadVersion(const FixtureObject& object, const std::string& id,
                             const FixtureDocument& document);
  void ReadFields(const FixtureObject& object, const FixtureDocument& document, FixtureVersion& version);
  void ReadVersionText(const FixtureObject& object, FixtureVersion& version);
  void ReadPlace(const FixtureObject& object, FixtureDocument& document);
  void ReadCheckout(const FixtureObject& object, const Ids& ids, FixtureDocument& document);
  void ReadAttributes(const FixtureObject& object, FixtureVersion& version);
  void ReadDependencies(const FixtureObject& object, FixtureVersion& version);
  void CheckOrder(const FixtureDocument& document);
  void CheckNames();
  void ReadWorkspaceDocuments(JsonValue workspaces);
  std::optional<Target> Find(const FixtureObject& from, std::string_view key);
  std::optional<Target> Find(const std::string& name, std::uint32_t line);

  Fixture& fixture_;
  FixturePlaces& places_;
  FixtureContents contents_;
  FixtureProblems& problems_;
  FixtureIds documentIds_{2001};
  FixtureIds versionIds_{1001};
  std::map<std::string, Target> ids_;
  std::map<std::string, Target> named_;  ///< by number and CAD name; an empty target for what several have
  std::string folder_;                   ///< of the document that is being read
  std::string workspace_;                ///< of one that was never checked in
  std::string targetFolder_;
};

}  // namespace vantry_sim
