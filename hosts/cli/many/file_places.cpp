#include "hosts/cli/many/file_places.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::string FolderWithNumber(const std::string& name, int number) {
  return name + "%(" + std::to_string(number) + ")";
}

// In front of the extension, so that the file is opened by what opens its kind.
[[nodiscard]] std::string FileWithNumber(const std::string& name, int number) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string::npos || dot == 0) return FolderWithNumber(name, number);
  return FolderWithNumber(name.substr(0, dot), number) + name.substr(dot);
}

}  // namespace

std::string FilePlaces::TakeForFile(const std::string& name) {
  return Take(name, FileWithNumber);
}

std::string FilePlaces::TakeForFolder(const std::string& name) {
  return Take(name, FolderWithNumber);
}

std::string FilePlaces::Take(const std::string& name, Numbered numbered) {
  std::string free = name;
  for (int number = 2; !taken_.insert(free).second; ++number) free = numbered(name, number);
  return free;
}

}  // namespace vtdirect_cli
