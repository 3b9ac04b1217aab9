#include "simulator/seed/fixture_places.h"

#include <algorithm>
#include <array>
#include <set>

#include "simulator/seed/fixture_defaults.h"
#include "simulator/seed/seed_writer.h"
#include "simulator/wire/authentication.h"

namespace vantry_sim {
namespace {

constexpr std::array<std::string_view, 5> kinds{"Product", "Library", "Project", "Site", "Organization"};
constexpr const char* rootName = "Default";

}  // namespace

void FixturePlaces::Read(const FixtureObject& root) {
  ReadUsers(root.List("users"));
  ReadContexts(root.List("contexts"));
  ReadWorkspaces(root.List("workspaces"));
}

void FixturePlaces::ReadUsers(JsonValue list) {
  std::set<std::string> names;
  for (const JsonValue value : list) {
    FixtureUser user;
    if (const auto name = ScalarText(value)) {
      user = {*name, *name};
    } else {
      const FixtureObject object(value, "a user", {"name", "fullName"}, problems_);
      user.name = object.Required("name");
      user.fullName = object.Text("fullName", user.name);
    }
    if (!names.insert(user.name).second)
      problems_.Add(value.Line(), "the user " + user.name + " comes twice");
    fixture_.users.push_back(std::move(user));
  }
  // Whoever asks an open server without a name is always there.
  if (names.insert(std::string(openServerUser)).second)
    fixture_.users.push_back({std::string(openServerUser), std::string(openServerUser)});
}

void FixturePlaces::ReadContexts(JsonValue list) {
  for (const JsonValue value : list) {
    if (const std::string id(value.Find("id").Text()); !id.empty())
      contextIds_.Claim(id, value.Line(), problems_);
    ClaimFolders(value.Find("folders"));
  }
  for (const JsonValue value : list) ReadContext(value);
}

/// Ids that the file names come before those that are made up.
void FixturePlaces::ClaimFolders(JsonValue list) {
  for (const JsonValue value : list) {
    if (const std::string id(value.Find("id").Text()); !id.empty())
      folderIds_.Claim(id, value.Line(), problems_);
    ClaimFolders(value.Find("folders"));
  }
}

void FixturePlaces::ReadContext(JsonValue value) {
  const FixtureObject object(value, "a context", {"id", "kind", "name", "organization", "folders"},
                             problems_);
  FixtureContext context;
  context.line = value.Line();
  context.kind = object.Text("kind", defaultKind);
  if (std::find(kinds.begin(), kinds.end(), context.kind) == kinds.end())
    object.Problem("kind", "must be Product, Library, Project, Site or Organization");
  context.name = object.Required("name");
  context.organization = object.Text("organization", defaultOrganization);
  context.id = object.Text("id");
  if (context.id.empty()) context.id = contextIds_.Make(ContextOidFront(context.kind));
  Name(contexts_, context.name, {context.id, context.id});
  Name(contexts_, context.id, {context.id, context.id});
  if (object.Has("folders")) {
    context.roots = ReadFolders(object.List("folders"), context.name, context.id, FolderLevel::Root);
  } else {
    FixtureFolder root;
    root.line = context.line;
    root.id = folderIds_.Make("OR:vn.folder.Cabinet:");
    root.name = rootName;
    Name(folders_, context.name + "/" + rootName, {root.id, context.id});
    context.roots.push_back(std::move(root));
  }
  fixture_.contexts.push_back(std::move(context));
}

/// The depth of the tree was bounded when it was read.
std::vector<FixtureFolder> FixturePlaces::ReadFolders(JsonValue list, const std::string& path,
                                                      const std::string& context, FolderLevel level) {
  std::vector<FixtureFolder> folders;
  std::set<std::string> names;
  for (const JsonValue value : list) {
    FixtureFolder folder;
    folder.line = value.Line();
    JsonValue children;
    if (const auto name = ScalarText(value)) {
      folder.name = *name;
    } else {
      const FixtureObject object(value, "a folder", {"id", "name", "folders"}, problems_);
      folder.name = object.Required("name");
      folder.id = object.Text("id");
      children = object.List("folders");
    }
    if (folder.id.empty())
      folder.id =
          folderIds_.Make(level == FolderLevel::Root ? "OR:vn.folder.Cabinet:" : "OR:vn.folder.SubFolder:");
    if (!names.insert(folder.name).second)
      problems_.Add(value.Line(), "there are two folders " + folder.name + " in one place");
    const std::string own = path + "/" + folder.name;
    Name(folders_, own, {folder.id, context});
    Name(folders_, folder.id, {folder.id, context});
    folder.folders = ReadFolders(children, own, context, FolderLevel::Below);
    folders.push_back(std::move(folder));
  }
  return folders;
}

void FixturePlaces::ReadWorkspaces(JsonValue list) {
  for (const JsonValue value : list) {
    if (const std::string id(value.Find("id").Text()); !id.empty())
      workspaceIds_.Claim(id, value.Line(), problems_);
  }
  std::set<std::vector<std::string>> places;
  for (const JsonValue value : list) {
    const FixtureObject object(value, "a workspace",
                               {"id", "name", "owner", "context", "description", "documents"}, problems_);
    FixtureWorkspace workspace;
    workspace.line = value.Line();
    workspace.name = object.Required("name");
    workspace.owner = object.Text("owner", openServerUser);
    workspace.description = object.Text("description");
    workspace.context = Context(object, "context").value_or("");
    workspace.id = object.Text("id");
    if (workspace.id.empty()) workspace.id = workspaceIds_.Make("W");
    const bool known = std::any_of(fixture_.users.begin(), fixture_.users.end(),
                                   [&](const FixtureUser& user) { return user.name == workspace.owner; });
    if (!known) object.Problem("owner", "is no user of this file: " + workspace.owner);
    if (!places.insert({workspace.context, workspace.owner, workspace.name}).second)
      problems_.Add(value.Line(),
                    workspace.owner + " has two workspaces " + workspace.name + " in one context");
    Name(workspaces_, workspace.name, {workspace.id, workspace.context});
    Name(workspaces_, workspace.id, {workspace.id, workspace.context});
    fixture_.workspaces.push_back(std::move(workspace));
  }
}

std::optional<std::string> FixturePlaces::Context(const FixtureObject& from, std::string_view key) {
  const auto place = Find(contexts_, from, key, "context");
  return place ? std::optional(place->id) : std::nullopt;
}

std::optional<FixturePlace> FixturePlaces::Folder(const FixtureObject& from, std::string_view key) {
  return Find(folders_, from, key, "folder");
}

std::optional<FixturePlace> FixturePlaces::Workspace(const FixtureObject& from, std::string_view key) {
  return Find(workspaces_, from, key, "workspace");
}

std::int64_t FixturePlaces::LastNumber() const {
  return std::max({contextIds_.LastNumber(), folderIds_.LastNumber(), workspaceIds_.LastNumber()});
}

void FixturePlaces::Name(Names& names, const std::string& name, const FixturePlace& place) {
  const auto [entry, isNew] = names.emplace(name, place);
  if (!isNew && entry->second.id != place.id) entry->second = {};
}

std::optional<FixturePlace> FixturePlaces::Find(const Names& names, const FixtureObject& from,
                                                std::string_view key, const char* kind) {
  const std::string name = from.Required(key);
  if (name.empty()) return std::nullopt;
  const auto found = names.find(name);
  if (found == names.end()) {
    from.Problem(key, std::string("names no ") + kind + " of this file: " + name);
  } else if (found->second.id.empty()) {
    from.Problem(key, std::string("names more than one ") + kind + ", so give its id: " + name);
  } else {
    return found->second;
  }
  return std::nullopt;
}

}  // namespace vantry_sim
