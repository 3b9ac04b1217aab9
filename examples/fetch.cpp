// Fetches a document's content into a local file.
//
//   fetch http://127.0.0.1:8080/ '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz' fork.lxz
#include <vtdirect/vt_direct_manager.h>

#include <iostream>
#include <string>

int main(int count, char** arguments) {
  if (count != 4) {
    std::cerr << "usage: fetch SERVER ADDRESS FILE\n";
    return 2;
  }
  // "plm" is the name by which addresses tell the server, as in "//plm/Products/".
  VtDirectManager::UpdateServerList({{"plm", arguments[1]}});

  std::string uid;
  if (!VtDirectManager::GetFile(arguments[2], arguments[3], uid, {}, {})) {
    std::cerr << "could not fetch " << arguments[2] << '\n';
    return 1;
  }
  // The UID names the same document wherever it is moved to; a path names whatever is at that place.
  std::cout << uid << '\n';
  return 0;
}
