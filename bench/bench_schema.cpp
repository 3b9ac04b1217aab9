// Finds out what a server offers by the library, which reads its schema, or runs the XML parser alone over
// the same schema in memory. Prints the seconds that took and the highest resident memory of the process in
// KiB.
//
//   bench-schema library|reference SERVER-URL
#include <curl/curl.h>
#include <expat.h>
#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>

#include "bench/measurement.h"

namespace {

constexpr std::size_t pieceBytes = 64 * 1024;

// The schemas of all three services; those of two are small.
bool ReadByLibrary(const std::string& server) {
  VtDirectManager::SetAppConfig(VtDirectManager::ConfigUriStem, "bench");
  VtDirectManager::UpdateServerList({{"server", server}});
  return VtDirectManager::CanPathShowVersions("//server/Products/Bike/Folders/");
}

std::size_t Append(char* data, std::size_t size, std::size_t count, void* target) {
  static_cast<std::string*>(target)->append(data, size * count);
  return size * count;
}

std::string Fetch(const std::string& url) {
  std::string body;
  CURL* handle = curl_easy_init();
  curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, Append);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &body);
  if (curl_easy_perform(handle) != CURLE_OK) body.clear();
  curl_easy_cleanup(handle);
  return body;
}

bool ParseAlone(std::string_view document) {
  XML_Parser parser = XML_ParserCreate(nullptr);
  bool parsed = !document.empty();
  while (parsed && !document.empty()) {
    const std::size_t count = std::min(pieceBytes, document.size());
    parsed = XML_Parse(parser, document.data(), static_cast<int>(count), count == document.size()) ==
             XML_STATUS_OK;
    document.remove_prefix(count);
  }
  XML_ParserFree(parser);
  return parsed;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view mode = argc == 3 ? argv[1] : "";
  if (mode != "library" && mode != "reference") {
    std::fprintf(stderr, "usage: bench-schema library|reference SERVER-URL\n");
    return 2;
  }
  curl_global_init(CURL_GLOBAL_DEFAULT);
  const std::string server = argv[2];
  const bool library = mode == "library";
  const std::string document = library ? std::string() : Fetch(server + "servlet/odata/DataAdmin/$metadata");
  const vtdirect_bench::Stopwatch stopwatch;
  const bool done = library ? ReadByLibrary(server) : ParseAlone(document);
  const std::string report = stopwatch.Report();
  if (!done) {
    std::fprintf(stderr, "bench-schema: the schema could not be read\n");
    return 1;
  }
  std::printf("%s\n", report.c_str());
  return 0;
}
