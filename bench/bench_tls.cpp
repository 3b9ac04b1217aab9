// Fetches the content of documents over TLS, by the library or by libcurl alone on one handle, and prints
// "SECONDS PROCESSOR-SECONDS PEAK-KIB INSTRUCTIONS".
//
//   bench-tls library|reference|fresh SERVER-URL COUNT CERTIFICATES DIRECTORY
//
// CERTIFICATES is the file of all that is trusted. The library writes each content into a file of DIRECTORY,
// as a host has it; the reference keeps it in memory. "fresh" is the library with a new connection for each
// request.
#include <curl/curl.h>
#include <vtdirect/platform/http_settings.h>
#include <vtdirect/vt_direct_manager.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "bench/measurement.h"

namespace {

constexpr std::size_t contentBytes = 4096;

bool FetchByLibrary(const std::string& server, long count, const std::string& certificates,
                    const std::string& directory, bool fresh) {
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  settings.certificateAuthorityFile = certificates;
  if (fresh) settings.idleConnections = 0;
  du::http::SetTransportSettings(settings);
  VtDirectManager::SetAppConfig(VtDirectManager::ConfigUriStem, "bench");
  VtDirectManager::UpdateServerList({{"server", server}});
  for (long i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    const std::string address = "//server/?id=D" + number;
    // Each into a file of its own. Replacing one makes a disk write at once, and that would be measured.
    const std::string file = directory + "/" + number;
    std::string uid;
    if (!VtDirectManager::GetFile(address.c_str(), file.c_str(), uid, {}, {})) return false;
  }
  return true;
}

std::size_t Append(char* data, std::size_t size, std::size_t count, void* target) {
  static_cast<std::string*>(target)->append(data, size * count);
  return size * count;
}

bool FetchByReference(const std::string& server, long count, const std::string& certificates) {
  CURL* handle = curl_easy_init();
  curl_slist* lines = curl_slist_append(nullptr, "Accept: application/json");
  std::string body;
  curl_easy_setopt(handle, CURLOPT_CAINFO, certificates.c_str());
  curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, Append);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &body);
  const auto get = [&](const std::string& path, curl_slist* header) {
    body.clear();
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, header);
    curl_easy_setopt(handle, CURLOPT_URL, (server + path).c_str());
    return curl_easy_perform(handle) == CURLE_OK && !body.empty();
  };
  bool done = true;
  for (long i = 0; i < count && done; ++i) {
    done = get("servlet/rest/v1/dkm/documents/D" + std::to_string(i), lines) && get("content", nullptr) &&
           body.size() == contentBytes;
  }
  curl_slist_free_all(lines);
  curl_easy_cleanup(handle);
  return done;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view mode = argc == 6 ? argv[1] : "";
  if (mode != "library" && mode != "reference" && mode != "fresh") {
    std::fprintf(stderr,
                 "usage: bench-tls library|reference|fresh SERVER-URL COUNT CERTIFICATES DIRECTORY\n");
    return 2;
  }
  curl_global_init(CURL_GLOBAL_DEFAULT);
  const long count = std::strtol(argv[3], nullptr, 10);
  const vtdirect_bench::Stopwatch stopwatch;
  const bool done = mode == "reference" ? FetchByReference(argv[2], count, argv[4])
                                        : FetchByLibrary(argv[2], count, argv[4], argv[5], mode == "fresh");
  const std::string report = stopwatch.Report();
  if (!done) {
    std::fprintf(stderr, "bench-tls: a request failed\n");
    return 1;
  }
  std::printf("%s\n", report.c_str());
  return 0;
}
