#include "simulator/seed/fixture_loader.h"

#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>

namespace vantry_sim {
namespace {

class Loader {
 public:
  Loader(Database& database, ContentStore& contents) : database_(database), contents_(contents) {}

  void Load(const Fixture& fixture) {
    for (const FixtureUser& user : fixture.users) AddUser(user);
    for (const FixtureContext& context : fixture.contexts) AddContext(context);
    for (const FixtureWorkspace& workspace : fixture.workspaces) AddWorkspace(workspace);
    for (const FixtureDocument& document : fixture.documents) AddMaster(document);
    AddIterations(fixture);
    for (const FixtureDocument& document : fixture.documents) AddLinks(document);
    for (const FixtureWorkspace& workspace : fixture.workspaces) AddHeld(workspace);
    for (const auto& [application, version] : fixture.applicationVersions) {
      database_.Prepare("INSERT OR IGNORE INTO application_versions(application, version) VALUES(?1, ?2)")
          .Bind(application, version)
          .Run();
    }
    database_.Prepare("UPDATE counters SET next = ?1 WHERE name = 'id'").Bind(fixture.nextId).Run();
  }

 private:
  void AddUser(const FixtureUser& user) {
    database_.Prepare("INSERT INTO users(name, full_name) VALUES(?1, ?2)")
        .Bind(user.name, user.fullName)
        .Run();
    users_[user.name] = database_.LastRowId();
  }

  void AddContext(const FixtureContext& context) {
    database_.Prepare("INSERT INTO contexts(oid, kind, name, organization) VALUES(?1, ?2, ?3, ?4)")
        .Bind(context.id, context.kind, context.name, context.organization)
        .Run();
    const std::int64_t key = database_.LastRowId();
    contexts_[context.id] = key;
    for (const FixtureFolder& root : context.roots) AddFolder(root, key, 0);
  }

  void AddFolder(const FixtureFolder& folder, std::int64_t context, std::int64_t parent) {
    database_.Prepare("INSERT INTO folders(oid, context, parent, name) VALUES(?1, ?2, nullif(?3, 0), ?4)")
        .Bind(folder.id, context, parent, folder.name)
        .Run();
    const std::int64_t key = database_.LastRowId();
    folders_[folder.id] = key;
    for (const FixtureFolder& child : folder.folders) AddFolder(child, context, key);
  }

  void AddWorkspace(const FixtureWorkspace& workspace) {
    database_
        .Prepare("INSERT INTO workspaces(oid, context, owner, name, description) VALUES(?1, ?2, ?3, ?4, ?5)")
        .Bind(workspace.id, contexts_.at(workspace.context), users_.at(workspace.owner), workspace.name,
              workspace.description)
        .Run();
    workspaces_[workspace.id] = {database_.LastRowId(), users_.at(workspace.owner)};
  }

  void AddMaster(const FixtureDocument& document) {
    database_
        .Prepare(
            "INSERT INTO masters(oid, service, name, number, category, sub_category, cad_name, "
            "authoring_application, type_id) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)")
        .Bind(document.id, document.service, document.name, document.number, document.category,
              document.subCategory, document.cadName, document.application, document.typeId)
        .Run();
    masters_[document.id] = database_.LastRowId();
  }

  /// In the order of their making, which some lists show.
  void AddIterations(const Fixture& fixture) {
    struct Place {
      const FixtureDocument* document;
      const FixtureVersion* version;
      bool latest;
    };
    std::map<std::string, Place> places;
    std::vector<std::string> natural;
    for (const FixtureDocument& document : fixture.documents) {
      for (const FixtureVersion& version : document.versions) {
        places[version.id] = {&document, &version, &version == &document.versions.back()};
        natural.push_back(version.id);
      }
      if (!document.checkout) continue;
      places[document.checkout->id] = {&document, &*document.checkout, false};
      natural.push_back(document.checkout->id);
    }
    for (const std::string& id : fixture.order.empty() ? natural : fixture.order) {
      const Place& place = places.at(id);
      AddIteration(*place.document, *place.version, place.latest);
    }
  }

  void AddIteration(const FixtureDocument& document, const FixtureVersion& version, bool latest) {
    const auto keyOf = [](const std::map<std::string, std::int64_t>& keys, const std::string& id) {
      return id.empty() ? std::int64_t{0} : keys.at(id);
    };
    const std::int64_t workspace = version.workspace.empty() ? 0 : workspaces_.at(version.workspace).key;
    database_
        .Prepare(
            "INSERT INTO iterations(oid, master, context, folder, workspace, target_folder, revision, "
            "iteration, "
            "is_latest, auth_app_version, nd_version, service, comment, modified) VALUES(?1, ?2, ?3, "
            "nullif(?4, 0), "
            "nullif(?5, 0), nullif(?6, 0), ?7, ?8, ?9, ?10, ?11, ?12, ?13, ifnull(nullif(?14, ''), "
            "server_time()))")
        .Bind(version.id, masters_.at(document.id), contexts_.at(document.context),
              keyOf(folders_, version.folder), workspace, keyOf(folders_, version.targetFolder),
              version.revision, version.iteration, latest, version.authAppVersion, version.ndVersion,
              document.service, version.comment, version.modified)
        .Run();
    const std::int64_t key = database_.LastRowId();
    iterations_[version.id] = key;
    AddContents(key, "primary", version.primary);
    AddContents(key, "secondary", version.secondary);
    AddAttributes(key, version);
    if (workspace != 0) Hold(workspace, key);
  }

  void AddContents(std::int64_t iteration, std::string_view role,
                   const std::vector<FixtureContent>& contents) {
    int position = 0;
    for (const FixtureContent& content : contents) {
      database_
          .Prepare(
              "INSERT INTO contents(oid, iteration, role, position, category, file_name, is_forwardable, "
              "is_stale, "
              "is_hidden, stream) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, nullif(?10, 0))")
          .Bind(content.id, iteration, role, position++, content.category, content.fileName,
                content.isForwardable, content.isStale, content.isHidden, StreamOf(content.bytes))
          .Run();
    }
  }

  void AddAttributes(std::int64_t iteration, const FixtureVersion& version) {
    int position = 0;
    for (const FixtureAttribute& attribute : version.attributes) {
      database_
          .Prepare(
              "INSERT INTO attributes(iteration, position, parameter_name, attribute_name, value_type, "
              "value) "
              "VALUES(?1, ?2, ?3, ?4, ?5, ?6)")
          .Bind(iteration, position++, attribute.parameterName, attribute.attributeName, attribute.valueType,
                attribute.value)
          .Run();
    }
  }

  /// The number of the stream with these bytes, which are written if they are not there. 0 for none.
  std::int64_t StreamOf(const FixtureBytes& bytes) {
    if (bytes.kind == FixtureBytes::Kind::None) return 0;
    if (bytes.kind == FixtureBytes::Kind::Stream) return Known(*bytes.stream);
    std::int64_t number = bytes.stream.value_or(0);
    // A number always means the same bytes. Where others have it, these get another one.
    if (number != 0 && std::filesystem::exists(contents_.PathOf(number)) && !Holds(number, bytes)) number = 0;
    if (number == 0) number = contents_.NextStream();
    contents_.CountFrom(number);
    Write(number, bytes);
    const bool generated = bytes.kind == FixtureBytes::Kind::Generated;
    database_.Prepare("INSERT OR IGNORE INTO streams(id, size, generator) VALUES(?1, ?2, nullif(?3, 0))")
        .Bind(number, static_cast<std::int64_t>(std::filesystem::file_size(contents_.PathOf(number))),
              generated ? GeneratorOf(bytes, number) : 0)
        .Run();
    if (bytes.stream) streams_[*bytes.stream] = number;
    return number;
  }

  static std::int64_t GeneratorOf(const FixtureBytes& bytes, std::int64_t number) {
    return bytes.generator.value_or(bytes.stream.value_or(number));
  }

  [[nodiscard]] bool Holds(std::int64_t number, const FixtureBytes& bytes) const {
    if (bytes.kind == FixtureBytes::Kind::Inline) return contents_.Holds(number, bytes.text);
    if (bytes.kind == FixtureBytes::Kind::File) return contents_.HoldsCopy(number, bytes.file);
    return contents_.HoldsGenerated(number, bytes.size, GeneratorOf(bytes, number));
  }

  void Write(std::int64_t number, const FixtureBytes& bytes) {
    if (std::filesystem::exists(contents_.PathOf(number)) && Holds(number, bytes)) return;
    if (bytes.kind == FixtureBytes::Kind::Inline) {
      contents_.Write(number, bytes.text);
    } else if (bytes.kind == FixtureBytes::Kind::File) {
      contents_.Copy(number, bytes.file);
    } else {
      contents_.Generate(number, bytes.size, GeneratorOf(bytes, number));
    }
  }

  /// A stream that the state refers to by its number alone: its own, or one that the store has from before.
  std::int64_t Known(std::int64_t number) {
    if (const auto found = streams_.find(number); found != streams_.end()) return found->second;
    std::error_code error;
    const auto size = std::filesystem::file_size(contents_.PathOf(number), error);
    if (error) throw std::runtime_error("stream " + std::to_string(number) + " is lost");
    database_.Prepare("INSERT OR IGNORE INTO streams(id, size) VALUES(?1, ?2)")
        .Bind(number, static_cast<std::int64_t>(size))
        .Run();
    return number;
  }

  void AddLinks(const FixtureDocument& document) {
    for (const FixtureVersion& version : document.versions) AddVersionLinks(version);
    if (document.checkout) {
      AddVersionLinks(*document.checkout);
      const Workspace& workspace = workspaces_.at(document.checkout->workspace);
      database_.Prepare("INSERT INTO checkouts(base, working, workspace, user) VALUES(?1, ?2, ?3, ?4)")
          .Bind(iterations_.at(document.versions.back().id), iterations_.at(document.checkout->id),
                workspace.key, workspace.owner)
          .Run();
    }
    if (document.translationOf.empty()) return;
    database_.Prepare("INSERT INTO translations(xliff, translated) VALUES(?1, ?2)")
        .Bind(masters_.at(document.translationOf), masters_.at(document.id))
        .Run();
  }

  void AddVersionLinks(const FixtureVersion& version) {
    const std::int64_t key = iterations_.at(version.id);
    int position = 0;
    for (const FixtureDependency& dependency : version.dependencies) {
      database_
          .Prepare(
              "INSERT INTO dependencies(iteration, position, as_stored_child_name, is_direct, source, "
              "revision_number, is_place_holder, has_complete_dependencies) VALUES(?1, ?2, ?3, ?4, ?5, ?6, "
              "?7, ?8)")
          .Bind(key, position++, dependency.childName, dependency.isDirect, iterations_.at(dependency.source),
                dependency.revisionNumber, dependency.isPlaceHolder, dependency.hasCompleteDependencies)
          .Run();
    }
    if (version.xliff.empty()) return;
    database_.Prepare("INSERT INTO xliff_links(document, xliff) VALUES(?1, ?2)")
        .Bind(key, iterations_.at(version.xliff))
        .Run();
  }

  void AddHeld(const FixtureWorkspace& workspace) {
    for (const std::string& id : workspace.documents)
      Hold(workspaces_.at(workspace.id).key, iterations_.at(id));
  }

  void Hold(std::int64_t workspace, std::int64_t iteration) {
    database_.Prepare("INSERT OR IGNORE INTO workspace_documents(workspace, iteration) VALUES(?1, ?2)")
        .Bind(workspace, iteration)
        .Run();
  }

  struct Workspace {
    std::int64_t key = 0;
    std::int64_t owner = 0;
  };
  Database& database_;
  ContentStore& contents_;
  std::map<std::string, std::int64_t> users_, contexts_, folders_, masters_, iterations_;
  std::map<std::string, Workspace> workspaces_;
  std::map<std::int64_t, std::int64_t> streams_;  ///< those that the state numbers, by that number
};

}  // namespace

void LoadFixture(Database& database, ContentStore& contents, const Fixture& fixture) {
  Loader(database, contents).Load(fixture);
}

}  // namespace vantry_sim
