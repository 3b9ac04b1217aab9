#include "browsing/contexts.h"

#include <string_view>

#include "base/failure_step.h"
#include "browsing/containers.h"
#include "browsing/dir_entry.h"
#include "connection/url_escape.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr const char* contextsPath = "servlet/rest/v1/contexts";

// The value of an attribute; a row without it counts as one with an empty value.
std::string AttributeOf(const RestItem& row, const std::string& name) {
  const auto attribute = row.attributes.find(name);
  return attribute != row.attributes.end() ? attribute->second : std::string();
}

std::string TypeClassOf(const std::string& id) {
  const auto first = id.find(':');
  const auto last = id.rfind(':');
  return first != last ? id.substr(first + 1, last - first - 1) : std::string();
}

Result<std::vector<RestItem>> ListContextRows(ServerContext& server, ContextKind kind) {
  const std::string word(RestWordOf(kind));
  return word.empty() ? ListAllContexts(server) : ListContextsByKind(server, word);
}

}  // namespace

Result<std::vector<RestItem>> ListAllContexts(ServerContext& server) {
  const FailureStep step("list the contexts");
  return ReadRestItems(server.http(), contextsPath, RestListForm::Wrapped);
}

Result<std::vector<RestItem>> ListContextsByKind(ServerContext& server, const std::string& word) {
  const FailureStep step("list the contexts");
  const std::string path = std::string(contextsPath) + "?type=" + EscapeForUrl(word);
  return ReadRestItems(server.http(), path, RestListForm::Wrapped);
}

std::optional<ContextRecord> FindContext(ServerContext& server, ContextKind kind, const std::string& name) {
  const auto [status, rows] = ListContextRows(server, kind);
  if (status != Ok) return std::nullopt;
  for (const RestItem& row : rows) {
    if (AttributeOf(row, "name") != name) continue;
    // The first of that name decides. Without a type class it cannot be addressed and counts as not found,
    // even when a later row of the same name could be.
    ContextRecord found{row.id, name, TypeClassOf(row.id), AttributeOf(row, "organizationReference.name")};
    if (found.typeClass.empty()) return std::nullopt;
    return found;
  }
  return std::nullopt;
}

std::string ResolveContextId(ServerContext& server, ContextKind kind, const std::string& name) {
  if (server.Services().dataAdminV5) {
    const std::string_view type = ODataTypeOf(kind);
    return type.empty() ? std::string() : FindContainerId(server, name, type);
  }
  return FindContext(server, kind, name).value_or(ContextRecord()).id;
}

bool ListContexts(ServerContext& server, ContextKind kind, const DirEntryCallback& callback,
                  ReadDirFlags flags) {
  if ((flags & Directories) == 0) return true;
  if (server.Services().dataAdminV5) {
    const std::string_view type = ODataTypeOf(kind);
    return !type.empty() && ListContainers(server, type, callback);
  }
  const auto [status, rows] = ListContextsByKind(server, std::string(RestWordOf(kind)));
  if (status != Ok) return false;
  for (const RestItem& row : rows) {
    EmitDirEntry(callback, AttributeOf(row, "name"), row.id, EntryKind::Directory);
  }
  return true;
}

}  // namespace lxservices::cms_interface::vantry
