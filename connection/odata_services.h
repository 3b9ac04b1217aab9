#pragma once

#include <string>
#include <vector>

#include "connection/vt_connection.h"

/// What else a server tells of its OData services. Each call makes one GET on this thread; nothing is kept.
namespace lxservices::cms_interface::vantry {

/// One entry of the server's service list.
struct ODataDomain {
  std::string path;
  std::string name;
  std::string description;
  std::string id;
};

/// The server's service list; an entry for each element, an empty one for what is no object. Empty on
/// failure.
[[nodiscard]] std::vector<ODataDomain> GetODataDomains(VtConnection& connection);

/// Whether the service list holds an entry with exactly that id.
[[nodiscard]] bool HasODataDomain(VtConnection& connection, const char* id);

/// Whether an add-on is installed on the server. Only the text "true" says yes, a JSON true does not.
/// @param assemblyName  goes into the path as it is, not escaped
[[nodiscard]] bool IsAssemblyInstalled(VtConnection& connection, const char* assemblyName);

}  // namespace lxservices::cms_interface::vantry
