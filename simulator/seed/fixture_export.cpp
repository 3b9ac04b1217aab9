#include "simulator/seed/fixture_export.h"

#include <map>
#include <set>
#include <string>

namespace vantry_sim {
namespace {

class Exporter {
 public:
  Exporter(Database& database, const ContentStore& contents) : database_(database), contents_(contents) {}

  Fixture Export() {
    AddUsers();
    AddContexts();
    AddWorkspaces();
    AddDocuments();
    AddRest();
    return std::move(fixture_);
  }

 private:
  void AddUsers() {
    auto statement = database_.Prepare("SELECT name, full_name FROM users ORDER BY id");
    while (statement.Step()) fixture_.users.push_back({statement.Text(0), statement.Text(1)});
  }

  void AddContexts() {
    auto statement = database_.Prepare("SELECT id, oid, kind, name, organization FROM contexts ORDER BY id");
    while (statement.Step()) {
      FixtureContext context;
      context.id = statement.Text(1);
      context.kind = statement.Text(2);
      context.name = statement.Text(3);
      context.organization = statement.Text(4);
      context.roots = FoldersOf(statement.Integer(0), 0);
      fixture_.contexts.push_back(std::move(context));
    }
  }

  std::vector<FixtureFolder> FoldersOf(std::int64_t context, std::int64_t parent) {
    auto statement = database_.Prepare(
        "SELECT id, oid, name FROM folders WHERE context = ?1 AND ifnull(parent, 0) = ?2 ORDER BY id");
    statement.Bind(context, parent);
    std::vector<FixtureFolder> folders;
    while (statement.Step()) {
      FixtureFolder folder;
      folder.id = statement.Text(1);
      folder.name = statement.Text(2);
      folder.folders = FoldersOf(context, statement.Integer(0));
      folders.push_back(std::move(folder));
    }
    return folders;
  }

  void AddWorkspaces() {
    auto statement = database_.Prepare(
        "SELECT w.id, w.oid, w.name, u.name, c.oid, w.description FROM workspaces w JOIN users u ON u.id = "
        "w.owner "
        "JOIN contexts c ON c.id = w.context ORDER BY w.id");
    while (statement.Step()) {
      FixtureWorkspace workspace;
      workspace.id = statement.Text(1);
      workspace.name = statement.Text(2);
      workspace.owner = statement.Text(3);
      workspace.context = statement.Text(4);
      workspace.description = statement.Text(5);
      workspace.documents = HeldBy(statement.Integer(0));
      fixture_.workspaces.push_back(std::move(workspace));
    }
  }

  /// What a workspace holds without a checkout; the rest says itself where it is.
  std::vector<std::string> HeldBy(std::int64_t workspace) {
    auto statement = database_.Prepare(
        "SELECT i.oid FROM workspace_documents d JOIN iterations i ON i.id = d.iteration "
        "WHERE d.workspace = ?1 AND i.workspace IS NULL ORDER BY i.id");
    statement.Bind(workspace);
    std::vector<std::string> ids;
    while (statement.Step()) ids.push_back(statement.Text(0));
    return ids;
  }

  void AddDocuments() {
    auto statement = database_.Prepare(
        "SELECT m.id, m.oid, m.name, m.number, m.cad_name, m.service, m.category, m.sub_category, "
        "m.authoring_application, m.type_id, (SELECT x.oid FROM translations t JOIN masters x ON x.id = "
        "t.xliff "
        "WHERE t.translated = m.id) FROM masters m ORDER BY m.id");
    while (statement.Step()) {
      FixtureDocument document;
      document.id = statement.Text(1);
      document.name = statement.Text(2);
      document.number = statement.Text(3);
      document.cadName = statement.Text(4);
      document.service = statement.Text(5);
      document.category = statement.Text(6);
      document.subCategory = statement.Text(7);
      document.application = statement.Text(8);
      document.typeId = statement.Text(9);
      document.translationOf = statement.Text(10);
      AddVersions(statement.Integer(0), document);
      if (!document.versions.empty()) fixture_.documents.push_back(std::move(document));
    }
  }

  void AddVersions(std::int64_t master, FixtureDocument& document) {
    auto statement = database_.Prepare(
        "SELECT i.id, i.oid, i.revision, i.iteration, f.oid, w.oid, t.oid, i.auth_app_version, i.nd_version, "
        "i.comment, "
        "i.modified, c.oid, EXISTS(SELECT 1 FROM checkouts k WHERE k.working = i.id), "
        "(SELECT x.oid FROM xliff_links l JOIN iterations x ON x.id = l.xliff WHERE l.document = i.id) "
        "FROM iterations i JOIN contexts c ON c.id = i.context LEFT JOIN folders f ON f.id = i.folder "
        "LEFT JOIN workspaces w ON w.id = i.workspace LEFT JOIN folders t ON t.id = i.target_folder "
        "WHERE i.master = ?1 ORDER BY i.version_key, i.id");
    statement.Bind(master);
    while (statement.Step()) {
      FixtureVersion version;
      version.id = statement.Text(1);
      version.revision = statement.Text(2);
      version.iteration = statement.Integer(3);
      version.folder = statement.Text(4);
      version.workspace = statement.Text(5);
      version.targetFolder = statement.Text(6);
      version.authAppVersion = statement.Text(7);
      version.ndVersion = statement.Text(8);
      version.comment = statement.Text(9);
      version.modified = statement.Text(10);
      version.xliff = statement.Text(13);
      document.context = statement.Text(11);
      AddParts(statement.Integer(0), version);
      rows_[statement.Integer(0)] = version.id;
      if (statement.Integer(12) != 0) {
        document.checkout = std::move(version);
      } else {
        document.versions.push_back(std::move(version));
      }
    }
  }

  void AddParts(std::int64_t iteration, FixtureVersion& version) {
    version.primary = ContentsOf(iteration, "primary");
    version.secondary = ContentsOf(iteration, "secondary");
    auto attributes = database_.Prepare(
        "SELECT parameter_name, attribute_name, value_type, value FROM attributes WHERE iteration = ?1 "
        "ORDER BY position");
    attributes.Bind(iteration);
    while (attributes.Step())
      version.attributes.push_back(
          {attributes.Text(0), attributes.Text(1), attributes.Text(2), attributes.Text(3)});
    auto dependencies = database_.Prepare(
        "SELECT d.as_stored_child_name, i.oid, d.is_direct, d.revision_number, d.is_place_holder, "
        "d.has_complete_dependencies FROM dependencies d JOIN iterations i ON i.id = d.source "
        "WHERE d.iteration = ?1 ORDER BY d.position");
    dependencies.Bind(iteration);
    while (dependencies.Step())
      version.dependencies.push_back({dependencies.Text(0), dependencies.Text(1),
                                      dependencies.Integer(2) != 0, dependencies.Integer(3),
                                      dependencies.Integer(4) != 0, dependencies.Integer(5) != 0});
  }

  std::vector<FixtureContent> ContentsOf(std::int64_t iteration, std::string_view role) {
    auto statement = database_.Prepare(
        "SELECT n.oid, n.category, n.file_name, n.is_forwardable, n.is_stale, n.is_hidden, n.stream, s.size, "
        "s.generator FROM contents n LEFT JOIN streams s ON s.id = n.stream "
        "WHERE n.iteration = ?1 AND n.role = ?2 ORDER BY n.position");
    statement.Bind(iteration, role);
    std::vector<FixtureContent> contents;
    while (statement.Step()) {
      FixtureContent content;
      content.id = statement.Text(0);
      content.category = statement.Text(1);
      content.fileName = statement.Text(2);
      content.isForwardable = statement.Integer(3) != 0;
      content.isStale = statement.Integer(4) != 0;
      content.isHidden = statement.Integer(5) != 0;
      if (!statement.IsNull(6)) content.bytes = BytesOf(statement);
      contents.push_back(std::move(content));
    }
    return contents;
  }

  FixtureBytes BytesOf(const Statement& content) {
    FixtureBytes bytes;
    bytes.stream = content.Integer(6);
    bytes.size = static_cast<std::uint64_t>(content.Integer(7));
    bytes.file = contents_.PathOf(*bytes.stream);
    bytes.kind = FixtureBytes::Kind::Stream;
    if (!streams_.insert(*bytes.stream).second) return bytes;
    bytes.kind = content.IsNull(8) ? FixtureBytes::Kind::File : FixtureBytes::Kind::Generated;
    if (!content.IsNull(8) && content.Integer(8) != *bytes.stream) bytes.generator = content.Integer(8);
    return bytes;
  }

  void AddRest() {
    auto versions = database_.Prepare("SELECT application, version FROM application_versions ORDER BY 1, 2");
    while (versions.Step()) fixture_.applicationVersions.emplace_back(versions.Text(0), versions.Text(1));
    auto counter = database_.Prepare("SELECT next FROM counters WHERE name = 'id'");
    if (counter.Step()) fixture_.nextId = counter.Integer(0);
    AddOrder();
  }

  /// Only where the iterations were not made in the order in which the documents are here.
  void AddOrder() {
    std::vector<std::string> natural;
    for (const FixtureDocument& document : fixture_.documents) {
      for (const FixtureVersion& version : document.versions) natural.push_back(version.id);
      if (document.checkout) natural.push_back(document.checkout->id);
    }
    std::vector<std::string> made;
    for (const auto& [row, id] : rows_) made.push_back(id);
    if (made != natural) fixture_.order = std::move(made);
  }

  Database& database_;
  const ContentStore& contents_;
  Fixture fixture_;
  std::set<std::int64_t> streams_;            ///< met so far
  std::map<std::int64_t, std::string> rows_;  ///< ids of iterations by the order of their making
};

}  // namespace

Fixture ExportFixture(Database& database, const ContentStore& contents) {
  return Exporter(database, contents).Export();
}

}  // namespace vantry_sim
