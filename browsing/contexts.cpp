#include "browsing/contexts.h"

#include <utility>

#include "base/failure_step.h"
#include "browsing/containers.h"
#include "browsing/dir_entry.h"
#include "connection/url_escape.h"

namespace lxservices::cms_interface::vantry {
namespace {

constexpr const char* contextsPath = "servlet/rest/v1/contexts";

// The value of an attribute; a row without it counts as one with an empty value.
std::string AttributeOf(const RestItem& row, const char* name) {
  const auto attribute = row.attributes.find(name);
  return attribute != row.attributes.end() ? attribute->second : std::string();
}

std::string TypeClassOf(const std::string& id) {
  const auto first = id.find(':');
  const auto last = id.rfind(':');
  return first != last ? id.substr(first + 1, last - first - 1) : std::string();
}

bool ReadContextRows(ServerContext& server, ContextKind kind, std::vector<RestItem>& rows) {
  const char* word = RestWordOf(kind);
  if (word != nullptr) return ListContextsByKind(server, word, rows, nullptr);
  return ListAllContexts(server, rows);
}

}  // namespace

bool ListAllContexts(ServerContext& server, std::vector<RestItem>& rows) {
  const FailureStep step("list the contexts");
  return ReadRestItems(server.http(), contextsPath, rows, true, nullptr);
}

bool ListContextsByKind(ServerContext& server, const char* word, std::vector<RestItem>& rows,
                        Status* status) {
  const FailureStep step("list the contexts");
  const std::string path = std::string(contextsPath) + "?type=" + EscapeForUrl(word);
  return ReadRestItems(server.http(), path, rows, true, status);
}

bool FindContext(ServerContext& server, ContextKind kind, const std::string& name, ContextRecord& record) {
  std::vector<RestItem> rows;
  if (!ReadContextRows(server, kind, rows)) return false;
  record.typeClass.clear();
  for (const RestItem& row : rows) {
    if (AttributeOf(row, "name") != name) continue;
    // The first of that name decides. Without a type class it cannot be addressed and counts as not found,
    // even when a later row of the same name could be.
    ContextRecord found{row.id, name, TypeClassOf(row.id), AttributeOf(row, "organizationReference.name")};
    if (found.typeClass.empty()) return false;
    record = std::move(found);
    return true;
  }
  return false;
}

std::string ResolveContextId(ServerContext& server, ContextKind kind, const std::string& name) {
  if (server.Services().dataAdminV5) {
    const char* type = ODataTypeOf(kind);
    return type != nullptr ? FindContainerId(server, name, type) : std::string();
  }
  ContextRecord record;
  return FindContext(server, kind, name, record) ? record.id : std::string();
}

bool ListContexts(ServerContext& server, ContextKind kind, const DirEntryCallback& callback,
                  ReadDirFlags flags) {
  if ((flags & Directories) == 0) return true;
  if (server.Services().dataAdminV5) {
    const char* type = ODataTypeOf(kind);
    return type != nullptr && ListContainers(server, type, callback);
  }
  const char* word = RestWordOf(kind);
  std::vector<RestItem> rows;
  if (!ListContextsByKind(server, word != nullptr ? word : "", rows, nullptr)) return false;
  for (const RestItem& row : rows) EmitDirEntry(callback, AttributeOf(row, "name"), row.id, true);
  return true;
}

}  // namespace lxservices::cms_interface::vantry
