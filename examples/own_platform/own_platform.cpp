// Fetches a document's content by a platform that the host itself brings, in the files beside this one: plain
// HTTP on a socket, one connection an exchange. It knows no TLS, no passwords and no redirects.
//
//   own_platform http://127.0.0.1:8080/ '//plm/?id=D1001' fork.lxz
//
// Everything that vtdirect/platform/*.h declares must be there, or the host doesn't link.
#include <vtdirect/vt_direct_manager.h>

#include <iostream>
#include <string>

int main(int count, char** arguments) {
  if (count != 4) {
    std::cerr << "usage: own_platform SERVER ADDRESS FILE\n";
    return 2;
  }
  VtDirectManager::UpdateServerList({{"plm", arguments[1]}});
  std::string uid;
  if (!VtDirectManager::GetFile(arguments[2], arguments[3], uid, {}, {})) {
    std::cerr << "could not fetch " << arguments[2] << '\n';
    return 1;
  }
  std::cout << uid << '\n';
  return 0;
}
