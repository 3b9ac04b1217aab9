// Downloads one document, and tells how much memory that took at its highest.
//
//   bench-download SERVER-URL FILE
#include <vtdirect/vt_direct_manager.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace {

/// The "VmHWM" line of the kernel's account of this process, in KiB; -1 when there is none.
long PeakResidentKilobytes() {
  std::ifstream account("/proc/self/status");
  std::string word;
  while (account >> word) {
    long kilobytes = -1;
    if (word == "VmHWM:" && account >> kilobytes) return kilobytes;
  }
  return -1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: bench-download SERVER-URL FILE\n");
    return 2;
  }
  VtDirectManager::SetAppConfig(VtDirectManager::ConfigUriStem, "bench");
  VtDirectManager::UpdateServerList({{"server", argv[1]}});
  std::string uid;
  if (!VtDirectManager::GetFile("//server/?id=D1", argv[2], uid, {}, {})) return 1;
  std::printf("%ld\n", PeakResidentKilobytes());
  return 0;
}
