#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantry_sim {

/// A file that the build put into the program.
struct EmbeddedFile {
  std::string_view name;
  std::string_view type;  ///< content type
  std::string_view bytes;
};

/// The file of this name; null for none.
const EmbeddedFile* FindEmbeddedFile(std::string_view name);

/// The headers of every page and of what it is made of: only this server's own scripts and styles run in it,
/// nobody frames it, and a browser asks again each time.
std::vector<std::pair<std::string, std::string>> PageHeaders();

}  // namespace vantry_sim
