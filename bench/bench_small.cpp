// Reads a document many times over, by the library or by libcurl alone on one handle, and prints
// "SECONDS PROCESSOR-SECONDS PEAK-KIB INSTRUCTIONS".
//
//   bench-small library|reference|alike SERVER-URL COUNT
//
// "reference" sends the one header line that a reader of JSON needs, and "alike" all those that the library sends:
// libcurl puts its requests together byte by byte, which costs it some 130 instructions a byte.
#include <curl/curl.h>
#include <vtdirect/vt_direct_manager.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "bench/measurement.h"

namespace {

std::size_t Append(char* data, std::size_t size, std::size_t count, void* target) {
  static_cast<std::string*>(target)->append(data, size * count);
  return size * count;
}

bool ReadByLibrary(const std::string& server, long count) {
  VtDirectManager::SetAppConfig(VtDirectManager::ConfigUriStem, "bench");
  VtDirectManager::UpdateServerList({{"server", server}});
  for (long i = 0; i < count; ++i) {
    const std::string address = "//server/?id=D" + std::to_string(i);
    if (!VtDirectManager::FileExists(address.c_str())) return false;
  }
  return true;
}

curl_slist* HeaderLines(bool alike) {
  curl_slist* lines = nullptr;
  if (alike) lines = curl_slist_append(lines, "X-Zvk-Connected: 1");
  lines = curl_slist_append(lines, "Accept: application/json");
  return alike ? curl_slist_append(lines, "Accept-Encoding: gzip, deflate") : lines;
}

// The same requests on one handle; what comes back is kept and not looked at.
bool ReadByLibcurl(const std::string& server, long count, bool alike) {
  CURL* handle = curl_easy_init();
  curl_slist* lines = HeaderLines(alike);
  if (alike) curl_easy_setopt(handle, CURLOPT_USERAGENT, "VtDirect/0.1.0");
  curl_easy_setopt(handle, CURLOPT_HTTPHEADER, lines);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, Append);
  bool done = true;
  for (long i = 0; i < count && done; ++i) {
    std::string body;
    const std::string url = server + "servlet/rest/v1/dkm/documents/D" + std::to_string(i);
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &body);
    done = curl_easy_perform(handle) == CURLE_OK && !body.empty();
  }
  curl_slist_free_all(lines);
  curl_easy_cleanup(handle);
  return done;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view mode = argc == 4 ? argv[1] : "";
  if (mode != "library" && mode != "reference" && mode != "alike") {
    std::fprintf(stderr, "usage: bench-small library|reference|alike SERVER-URL COUNT\n");
    return 2;
  }
  curl_global_init(CURL_GLOBAL_DEFAULT);
  const long count = std::strtol(argv[3], nullptr, 10);
  const vtdirect_bench::Stopwatch stopwatch;
  const bool done =
      mode == "library" ? ReadByLibrary(argv[2], count) : ReadByLibcurl(argv[2], count, mode == "alike");
  const std::string report = stopwatch.Report();
  if (!done) {
    std::fprintf(stderr, "bench-small: a request failed\n");
    return 1;
  }
  std::printf("%s\n", report.c_str());
  return 0;
}
