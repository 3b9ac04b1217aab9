// Stores one file as a new iteration of a document, and tells how much memory that took at its highest.
//
//   bench-upload SERVER-URL FILE
#include <vtdirect/vt_direct_manager.h>

#include <cstdio>
#include <map>
#include <string>

#include "bench/measurement.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: bench-upload SERVER-URL FILE\n");
    return 2;
  }
  const std::string server = argv[1];
  VtDirectManager::SetAppConfig(VtDirectManager::ConfigUriStem, "bench");
  VtDirectManager::UpdateServerList({{"server", server}});
  // Only an address that is unique stands for an existing document; behind "http" it is the server's own.
  const std::string address = "bench-vt" + server.substr(server.find(':')) + "?id=D1";
  const std::map<std::string, std::string> noLinks;
  if (!VtDirectManager::Upload(address.c_str(), argv[2], "", noLinks, {}, {}, nullptr, false)) return 1;
  std::printf("%ld\n", vtdirect_bench::PeakResidentKilobytes());
  return 0;
}
