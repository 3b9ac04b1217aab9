#include "tests/unit/house/sources.h"

#include <fstream>
#include <iterator>

namespace vtdirect_house {

namespace fs = std::filesystem;

std::vector<fs::path> SourcesBelow(const std::string& folder) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
    const auto extension = entry.path().extension();
    if (extension == ".cpp" || extension == ".h") files.push_back(entry.path());
  }
  return files;
}

std::string ReadWhole(const fs::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace vtdirect_house
