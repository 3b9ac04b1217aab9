// Downloads one document, and tells how much memory that took at its highest.
//
//   bench-download SERVER-URL FILE
#include <vtdirect/vt_direct_manager.h>

#include <cstdio>
#include <string>

#include "bench/measurement.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: bench-download SERVER-URL FILE\n");
    return 2;
  }
  VtDirectManager::SetAppConfig(VtDirectManager::ConfigUriStem, "bench");
  VtDirectManager::UpdateServerList({{"server", argv[1]}});
  std::string uid;
  if (!VtDirectManager::GetFile("//server/?id=D1", argv[2], uid, {}, {})) return 1;
  std::printf("%ld\n", vtdirect_bench::PeakResidentKilobytes());
  return 0;
}
