#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vantry_sim {

/// A path below DataAdmin, such as `Containers('C')/Folders('F')/Folders('G')/FolderContents/ZVK.X.Y`.
struct ResourcePath {
  enum class Target { Containers, Folders, Contents };
  Target target = Target::Containers;
  std::string cast;       ///< type that containers must have, e.g. "ZVK.DataAdmin.Site"; empty: any
  std::string container;  ///< id; empty for the list of containers
  std::vector<std::string> folders;  ///< ids, the outermost first
  std::string contentType;           ///< type of the contents; empty: none was named
};

/// Reads the decoded segments after the service's name. An apostrophe inside an id is doubled.
/// @return nothing for a path of any other form
std::optional<ResourcePath> ParseResourcePath(const std::vector<std::string>& segments);

}  // namespace vantry_sim
