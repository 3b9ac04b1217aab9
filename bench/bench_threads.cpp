// Asks a server from several threads at once, each the same number of times, and prints
// "SECONDS PROCESSOR-SECONDS PEAK-KIB INSTRUCTIONS".
//
//   bench-threads exists|listing SERVER-URL THREADS COUNT [ROWS]
//
// "exists" reads a document by its id; "listing" lists the folder of a product with ROWS documents.
#include <vtdirect/vt_direct_manager.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "bench/measurement.h"

namespace {

bool Exists(long number) {
  return VtDirectManager::FileExists(("//server/?id=D" + std::to_string(number)).c_str());
}

void Count(VtDirectManager::DirEntryExt&, void* user) {
  ++*static_cast<long*>(user);
}

bool List(long rows) {
  long seen = 0;
  const std::string path = "//server/Products/" + std::to_string(rows) + "/Folders/";
  return VtDirectManager::ReadDirExt(path.c_str(), Count, &seen,
                                     static_cast<VtDirectManager::ReadDirFlags>(15)) &&
         seen == rows;
}

/// Gives how many of the calls failed.
long AskAtOnce(long threads, long count, const std::function<bool()>& ask) {
  std::atomic<long> failed{0};
  std::vector<std::thread> askers;
  for (long i = 0; i < threads; ++i) {
    askers.emplace_back([&] {
      for (long call = 0; call < count; ++call) failed += ask() ? 0 : 1;
    });
  }
  for (std::thread& asker : askers) asker.join();
  return failed;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view mode = argc >= 5 ? argv[1] : "";
  if (mode != "exists" && mode != "listing") {
    std::fprintf(stderr, "usage: bench-threads exists|listing SERVER-URL THREADS COUNT [ROWS]\n");
    return 2;
  }
  VtDirectManager::SetAppConfig(VtDirectManager::ConfigUriStem, "bench");
  VtDirectManager::UpdateServerList({{"server", argv[2]}});
  const long rows = argc == 6 ? std::strtol(argv[5], nullptr, 10) : 0;
  std::atomic<long> next{0};
  const std::function<bool()> ask = mode == "exists"
                                        ? std::function<bool()>([&next] { return Exists(++next); })
                                        : [rows] { return List(rows); };
  // What is learned once about a server is learned by then.
  if (!ask()) {
    std::fprintf(stderr, "bench-threads: the first call failed\n");
    return 1;
  }
  const vtdirect_bench::Stopwatch stopwatch;
  const long failed = AskAtOnce(std::strtol(argv[3], nullptr, 10), std::strtol(argv[4], nullptr, 10), ask);
  const std::string report = stopwatch.Report();
  if (failed > 0) {
    std::fprintf(stderr, "bench-threads: %ld calls failed\n", failed);
    return 1;
  }
  std::printf("%s\n", report.c_str());
  return 0;
}
