#include "simulator/store/folder_lists.h"

#include <algorithm>
#include <array>

#include "simulator/store/document_store.h"
#include "simulator/store/folder_store.h"

namespace vantry_sim {
namespace {

constexpr std::array containerProperties{
    ODataProperty{"ID", "c.oid"},
    ODataProperty{"Name", "c.name"},
    ODataProperty{"Description", "c.kind || ' of ' || c.organization"},
    ODataProperty{"Type", "c.kind"},
};
constexpr ODataEntity containerEntity{containerProperties, "c.id", "Name"};

constexpr std::array folderProperties{
    ODataProperty{"ID", "f.oid"},
    ODataProperty{"Name", "f.name"},
    ODataProperty{"Description", "''"},
    ODataProperty{"Location", ""},
};
constexpr ODataEntity folderEntity{folderProperties, "f.id", "Name"};

bool Selects(const ODataExpand& expand, std::string_view name) {
  return expand.select.empty() ||
         std::find(expand.select.begin(), expand.select.end(), name) != expand.select.end();
}

void WriteFolder(JsonText& json, Database& database, const FolderRow& folder, const ODataExpand& expand) {
  if (Selects(expand, "ID")) json.Member("ID", folder.oid);
  if (Selects(expand, "Name")) json.Member("Name", folder.name);
  if (Selects(expand, "Description")) json.Member("Description", "");
  if (Selects(expand, "Location")) json.Member("Location", FolderLocation(database, folder.key));
}

/// A folder of the tree that is being written, and which of its children comes next. The depth of a tree is
/// the client's to choose, and so no call stack grows with it.
struct Level {
  std::vector<FolderRow> folders;
  std::size_t next = 0;
};

}  // namespace

ODataCollection ContainerList(std::string_view kind) {
  ODataCollection list{&containerEntity, "contexts c", SqlText()};
  if (kind.empty()) {
    list.where.Add("1");
  } else {
    list.where.Add("c.kind = ").Value(std::string(kind));
  }
  return list;
}

ODataCollection FolderList(std::int64_t context, std::int64_t parent) {
  ODataCollection list{&folderEntity, "folders f", SqlText()};
  list.where.Add("f.context = ").Value(context).Add(" AND ifnull(f.parent, 0) = ").Value(parent);
  return list;
}

void WriteFolderTree(JsonText& json, Database& database, std::int64_t context, std::int64_t parent,
                     const ODataExpand& expand) {
  std::vector<Level> levels;
  const auto open = [&](std::vector<FolderRow> folders) {
    json.Key("Folders").StartArray();
    levels.push_back({std::move(folders)});
  };
  open(parent == 0 ? RootFolders(database, context) : SubFolders(database, parent));
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.folders.size()) {
      json.EndArray();
      levels.pop_back();
      if (!levels.empty()) json.EndObject();
      continue;
    }
    const FolderRow& folder = level.folders[level.next++];
    json.StartObject();
    WriteFolder(json, database, folder, expand);
    if (levels.size() < expand.levels) {
      open(SubFolders(database, folder.key));
    } else {
      json.EndObject();
    }
  }
}

bool FoldersHave(const ODataExpand& expand) {
  return std::all_of(expand.select.begin(), expand.select.end(),
                     [](const std::string& name) { return folderEntity.Find(name) != nullptr; });
}

}  // namespace vantry_sim
