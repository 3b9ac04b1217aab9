#include "hosts/cli/many/file_places.h"

namespace vtdirect_cli {
namespace {

// In front of the extension, so that the file is opened by what opens its kind. A folder has none.
[[nodiscard]] std::string WithNumber(const std::string& name, int number, bool isFolder) {
  const std::string inserted = "%(" + std::to_string(number) + ")";
  const std::size_t dot = name.rfind('.');
  if (isFolder || dot == std::string::npos || dot == 0) return name + inserted;
  return name.substr(0, dot) + inserted + name.substr(dot);
}

}  // namespace

std::string FilePlaces::Take(const std::string& name, bool isFolder) {
  std::string free = name;
  for (int number = 2; !taken_.insert(free).second; ++number) free = WithNumber(name, number, isFolder);
  return free;
}

}  // namespace vtdirect_cli
