// Downloads one document.
//
//   bench-download SERVER-URL FILE
#include <vtdirect/vt_direct_manager.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: bench-download SERVER-URL FILE\n");
    return 2;
  }
  VtDirectManager::SetAppConfig(VtDirectManager::ConfigUriStem, "bench");
  VtDirectManager::UpdateServerList({{"server", argv[1]}});
  std::string uid;
  return VtDirectManager::GetFile("//server/?id=D1", argv[2], uid, {}, {}) ? 0 : 1;
}
