// Fetches a document, tells how far it is, and cancels when more bytes come than are wanted.
//
//   progress http://127.0.0.1:8080/ '//plm/?id=D1009' scan.bin 100000000
#include <vtdirect/vt_direct_manager.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

int main(int count, char** arguments) {
  if (count != 5) {
    std::cerr << "usage: progress SERVER ADDRESS FILE MOST_BYTES\n";
    return 2;
  }
  const std::size_t most = std::strtoull(arguments[4], nullptr, 10);
  VtDirectManager::UpdateServerList({{"plm", arguments[1]}});

  bool cancelled = false;
  std::size_t told = 0;
  // Called often, on the thread of the transfer. `total` is 0 as long as the server hasn't told it. A host
  // that wants to let a person cancel reads an atomic flag here, which the window's thread sets.
  const auto progress = [&](std::size_t done, std::size_t total) {
    cancelled = done > most || total > most;
    const std::size_t percent = total == 0 ? 0 : 100 * (done / 1024) / (total / 1024 + 1);
    if (percent >= told + 10) {
      told = percent;
      std::cerr << percent << " %\n";
    }
    return !cancelled;
  };

  std::string uid;
  if (VtDirectManager::GetFile(arguments[2], arguments[3], uid, {}, progress)) {
    std::cout << uid << '\n';
    return 0;
  }
  // What came until then is in the file. The library leaves it to the host, who alone knows whether it is of
  // use.
  std::remove(arguments[3]);
  std::cerr << (cancelled ? "cancelled\n" : "failed\n");
  return 1;
}
