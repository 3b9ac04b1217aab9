#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "connection/server_context.h"
#include "documents/reading/document_records.h"

/// From a host's links, child name to document id, to the dependencies of a document. Each child that is not
/// known yet costs one GET, on this thread; one that cannot be read is left out without a trace.
namespace lxservices::cms_interface::vantry {

using DependencyMap = std::map<std::string, std::string>;
using DependencyList = std::vector<DerivedSourceDependency>;

/// The dependencies of a new document, in the order of the names.
[[nodiscard]] DependencyList ResolveDependencyMap(ServerContext& server, const DependencyMap& map);

/// The dependencies of a document's next iteration, in the order of the names: a dependency that the document
/// has for a name is kept as far as it goes. Those that the map does not name are dropped.
[[nodiscard]] DependencyList MergeDependencyMap(ServerContext& server, const DependencyMap& map,
                                                const DependencyList& known);

/// A dependency made from nothing but a name and an id.
/// @return nothing when the child cannot be read
[[nodiscard]] std::optional<DerivedSourceDependency> ResolveDependency(ServerContext& server,
                                                                       const std::string& name,
                                                                       const std::string& id);

/// Points a dependency at a child. One that points there already costs no request.
/// @return nothing when the child cannot be read
[[nodiscard]] std::optional<DerivedSourceDependency> FillDependencySource(ServerContext& server,
                                                                          const std::string& name,
                                                                          const std::string& id,
                                                                          DerivedSourceDependency dependency);

}  // namespace lxservices::cms_interface::vantry
