#include "browsing/contexts.h"

#include <utility>

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

bool ReadContextRows(const std::shared_ptr<VtConnection>& connection, ContextKind kind,
                     std::vector<RestItem>& rows) {
  const char* word = RestWordOf(kind);
  if (word != nullptr) return ListContextsByKind(connection, word, rows, nullptr);
  return ReadRestItems(connection->http(), contextsPath, rows, true, nullptr);
}

}  // namespace

bool ListContextsByKind(const std::shared_ptr<VtConnection>& connection, const char* word,
                        std::vector<RestItem>& rows, Status* status) {
  const std::string path = std::string(contextsPath) + "?type=" + EscapeForUrl(word);
  return ReadRestItems(connection->http(), path, rows, true, status);
}

bool FindContext(const std::shared_ptr<VtConnection>& connection, ContextKind kind, const std::string& name,
                 ContextRecord& record) {
  std::vector<RestItem> rows;
  if (!ReadContextRows(connection, kind, rows)) return false;
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

std::string ResolveContextId(const std::shared_ptr<VtConnection>& connection, const ServiceFlags& services,
                             ContextKind kind, const std::string& name) {
  if (services.dataAdminV5) {
    const char* type = ODataTypeOf(kind);
    return type != nullptr ? FindContainerId(connection, name, type) : std::string();
  }
  ContextRecord record;
  return FindContext(connection, kind, name, record) ? record.id : std::string();
}

bool ListContexts(const std::shared_ptr<VtConnection>& connection, const ServiceFlags& services,
                  ContextKind kind, const DirEntryCallback& callback, ReadDirFlags flags) {
  if ((flags & Directories) == 0) return true;
  if (services.dataAdminV5) {
    const char* type = ODataTypeOf(kind);
    return type != nullptr && ListContainers(connection, type, callback);
  }
  const char* word = RestWordOf(kind);
  std::vector<RestItem> rows;
  if (!ListContextsByKind(connection, word != nullptr ? word : "", rows, nullptr)) return false;
  for (const RestItem& row : rows) EmitDirEntry(callback, AttributeOf(row, "name"), row.id, true);
  return true;
}

}  // namespace lxservices::cms_interface::vantry
