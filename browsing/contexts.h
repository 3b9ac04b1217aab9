#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/status.h"
#include "browsing/context_kind.h"
#include "browsing/dir_entry.h"
#include "connection/rest_items.h"
#include "connection/server_context.h"

/// The contexts of a server: products, libraries, projects, sites. Every call asks the server, on this
/// thread; nothing is cached or traced.
namespace lxservices::cms_interface::vantry {

struct ContextRecord {
  std::string id;
  std::string name;
  std::string typeClass;  ///< the part of the id between its first and its last ":"
  std::string organization;
};

/// The contexts of every kind by REST. One GET.
/// @return with the status of ReadRestItems
Result<std::vector<RestItem>> ListAllContexts(ServerContext& server);

/// The contexts of a kind by REST. One GET.
/// @param word  the REST word of the kind
/// @return with the status of ReadRestItems
Result<std::vector<RestItem>> ListContextsByKind(ServerContext& server, const std::string& word);

/// Finds a context by its name by REST. One GET.
/// @param kind  None looks among all contexts
/// @return nothing for an unknown name, and for a context whose id has no two colons
[[nodiscard]] std::optional<ContextRecord> FindContext(ServerContext& server, ContextKind kind,
                                                       const std::string& name);

/// The id of a context, by OData on a server with version 5 of the service, else by REST. Makes requests.
/// @return empty when it is not found
[[nodiscard]] std::string ResolveContextId(ServerContext& server, ContextKind kind, const std::string& name);

/// Delivers the contexts of a kind as directories, by OData on a server with version 5 of the service, else
/// by REST. Makes requests only when `flags` asks for directories; otherwise the result is true.
/// @return false when a request failed, and for a kind that the service does not know
[[nodiscard]] bool ListContexts(ServerContext& server, ContextKind kind, const DirEntryCallback& callback,
                                ReadDirFlags flags);

}  // namespace lxservices::cms_interface::vantry
