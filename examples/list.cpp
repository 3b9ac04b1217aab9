// Lists a directory: folders, and files with their numbers and versions where the server can tell them.
//
//   list http://127.0.0.1:8080/ '//plm/Products/Trekking Bike/Folders/Frame/'
#include <vtdirect/vt_direct_manager.h>

#include <iostream>

namespace {

using namespace VtDirectManager;

// Called once for each entry, while ReadDir runs. What the entry points to is gone after the call.
void PrintEntry(DirEntryExt& entry, void*) {
  std::cout << entry.name;
  if (entry.isFolder) std::cout << '/';
  if (entry.details != nullptr) std::cout << '\t' << entry.details->number;
  if (entry.versions != nullptr) {
    for (const char** version = entry.versions; *version != nullptr; ++version) std::cout << ' ' << *version;
  }
  std::cout << '\n';
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    std::cerr << "usage: list SERVER DIRECTORY\n";
    return 2;
  }
  UpdateServerList({{"plm", arguments[1]}});

  // The path of a directory ends with "/".
  const DirHandle directory = OpenDir(arguments[2]);
  if (!directory) {
    std::cerr << arguments[2] << " is no directory, or could not be reached\n";
    return 1;
  }
  const ReadDirFlags flags = ReadDirFiles | ReadDirFolders | ReadDirDetails | ReadDirVersions;
  if (!ReadDir(directory, PrintEntry, nullptr, flags)) {
    std::cerr << "the listing is not complete\n";
    return 1;
  }
  return 0;
}
