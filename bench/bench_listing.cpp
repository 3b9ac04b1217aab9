// Lists a folder of many documents by the library, or only fetches the pages and runs a JSON reader over
// them, or only fetches them. Prints "SECONDS PROCESSOR-SECONDS PEAK-KIB INSTRUCTIONS".
//
//   bench-listing library|reference|fetch SERVER-URL ROWS
#include <curl/curl.h>
#include <rapidjson/reader.h>
#include <vtdirect/vt_direct_manager.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "bench/measurement.h"

namespace {

constexpr long pageRows = 10000;
constexpr long versionsOfARow = 3;
// As large as the library's own, so that the reference is not held up by small reads.
constexpr long receiveBufferBytes = 512 * 1024;

struct Seen {
  long rows = 0;
  long versions = 0;
  long complete = 0;  // rows with number and name
};

void Count(VtDirectManager::DirEntryExt& entry, void* user) {
  Seen& seen = *static_cast<Seen*>(user);
  if (entry.isFolder) return;
  ++seen.rows;
  if (entry.details != nullptr && *entry.details->number != '\0' && *entry.details->name != '\0')
    ++seen.complete;
  for (const char** version = entry.versions; version != nullptr && *version != nullptr; ++version)
    ++seen.versions;
}

bool ListByLibrary(const std::string& server, long rows) {
  VtDirectManager::SetAppConfig(VtDirectManager::ConfigUriStem, "bench");
  VtDirectManager::UpdateServerList({{"server", server}});
  const std::string path = "//server/Products/" + std::to_string(rows) + "/Folders/";
  Seen seen;
  const bool done =
      VtDirectManager::ReadDirExt(path.c_str(), Count, &seen, static_cast<VtDirectManager::ReadDirFlags>(15));
  return done && seen.rows == rows && seen.complete == rows && seen.versions == versionsOfARow * rows;
}

std::size_t Append(char* data, std::size_t size, std::size_t count, void* target) {
  static_cast<std::string*>(target)->append(data, size * count);
  return size * count;
}

struct EmptyHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, EmptyHandler> {};

bool ReadPages(CURL* handle, const std::string& server, long rows, bool reading) {
  std::string page;
  curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, receiveBufferBytes);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, Append);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &page);
  for (; rows > 0; rows -= pageRows) {
    page.clear();
    curl_easy_setopt(handle, CURLOPT_URL, (server + "pages/" + std::to_string(rows)).c_str());
    if (curl_easy_perform(handle) != CURLE_OK) return false;
    if (!reading) continue;
    rapidjson::Reader reader;
    EmptyHandler handler;
    rapidjson::StringStream stream(page.c_str());
    if (reader.Parse(stream, handler).IsError()) return false;
  }
  return true;
}

bool ReadByReference(const std::string& server, long rows, bool reading) {
  CURL* handle = curl_easy_init();
  const bool done = handle != nullptr && ReadPages(handle, server, rows, reading);
  curl_easy_cleanup(handle);
  return done;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view mode = argc == 4 ? argv[1] : "";
  const long rows = argc == 4 ? std::strtol(argv[3], nullptr, 10) : 0;
  const bool isKnown = mode == "library" || mode == "reference" || mode == "fetch";
  if (!isKnown || rows <= 0 || rows % pageRows != 0) {
    std::fprintf(stderr,
                 "usage: bench-listing library|reference|fetch SERVER-URL ROWS (a multiple of 10000)\n");
    return 2;
  }
  curl_global_init(CURL_GLOBAL_DEFAULT);
  const vtdirect_bench::Stopwatch stopwatch;
  const bool done =
      mode == "library" ? ListByLibrary(argv[2], rows) : ReadByReference(argv[2], rows, mode == "reference");
  const std::string report = stopwatch.Report();
  if (!done) {
    std::fprintf(stderr, "bench-listing: the listing failed or was not complete\n");
    return 1;
  }
  std::printf("%s\n", report.c_str());
  return 0;
}
