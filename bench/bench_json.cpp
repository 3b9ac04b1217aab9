// Reads one page of a folder's documents from its file, again and again, by the library's reader of JSON or by
// RapidJSON's, and prints "SECONDS PROCESSOR-SECONDS PEAK-KIB INSTRUCTIONS".
//
//   bench-json library|reference|in-situ events|rows|document TIMES
//
// "events" only counts them, so that the reader alone is measured; "rows" makes the rows of a listing, and
// "document" a document, as most answers become one. "in-situ" changes the text where it is, for events alone.
#include <rapidjson/filereadstream.h>
#include <rapidjson/reader.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/measurement.h"
#include "browsing/folder_contents_handler.h"
#include "connection/json_parsing.h"

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

constexpr int rowsOfThePage = 10000;
constexpr std::size_t pieceSize = 0x10000;

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

std::string MakePage() {
  std::string page =
      R"({"@odata.context":"http://plm.example/vt/servlet/odata/v5/DataAdmin/$metadata","value":[)";
  for (int row = 0; row < rowsOfThePage; ++row) {
    const std::string number = std::to_string(1000000 + row);
    if (row > 0) page += ',';
    page += R"({"ID":"OR:vn.doc.Document:)" + number + R"(","Version":"A.3","Name":"Housing )" + number +
            R"(","Number":"N-)" + number + R"(","CADName":"housing_)" + number + R"(.prt","Versions":[)";
    for (int version = 3; version > 0; --version) {
      page += R"({"Version":"A.)" + std::to_string(version) + R"(","ID":"OR:vn.doc.Document:)" + number +
              "-" + std::to_string(version) + (version > 1 ? "\"}," : "\"}");
    }
    page += "]}";
  }
  return page + "]}";
}

struct Counter {
  bool Null() { return Count(); }
  bool Bool(bool) { return Count(); }
  bool Int(int) { return Count(); }
  bool Uint(unsigned) { return Count(); }
  bool Int64(std::int64_t) { return Count(); }
  bool Uint64(std::uint64_t) { return Count(); }
  bool Double(double) { return Count(); }
  bool RawNumber(const char*, unsigned, bool) { return Count(); }
  bool String(const char*, unsigned length, bool) { return Count(length); }
  bool Key(const char*, unsigned length, bool) { return Count(length); }
  bool StartObject() { return Count(); }
  bool EndObject(unsigned) { return Count(); }
  bool StartArray() { return Count(); }
  bool EndArray(unsigned) { return Count(); }

  bool Count(std::size_t length = 0) {
    ++events;
    bytes += length;
    return true;
  }

  std::size_t events = 0;
  std::size_t bytes = 0;
};

// The file's pieces, as an answer on the disk is read.
template <typename Handler>
bool ReadByLibrary(std::FILE* file, Handler& handler) {
  std::vector<char> buffer(pieceSize);
  return ReadJson(
      [&] { return std::string_view(buffer.data(), std::fread(buffer.data(), 1, buffer.size(), file)); },
      handler);
}

template <typename Handler>
bool ReadByRapidJson(std::FILE* file, Handler& handler) {
  std::vector<char> buffer(pieceSize);
  rapidjson::FileReadStream stream(file, buffer.data(), buffer.size());
  return !rapidjson::Reader().Parse(stream, handler).IsError();
}

// With the copy that it needs: the text is changed where it is.
template <typename Handler>
bool ReadInSitu(std::FILE* file, Handler& handler) {
  std::string text;
  std::vector<char> buffer(pieceSize);
  while (const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), file))
    text.append(buffer.data(), got);
  rapidjson::InsituStringStream stream(text.data());
  return !rapidjson::Reader().Parse<rapidjson::kParseInsituFlag>(stream, handler).IsError();
}

bool ParseByLibrary(std::FILE* file, rapidjson::Document& document) {
  std::vector<char> buffer(pieceSize);
  return ParseJson(
      [&] { return std::string_view(buffer.data(), std::fread(buffer.data(), 1, buffer.size(), file)); },
      document);
}

bool ParseByRapidJson(std::FILE* file, rapidjson::Document& document) {
  std::vector<char> buffer(pieceSize);
  rapidjson::FileReadStream stream(file, buffer.data(), buffer.size());
  return !document.ParseStream(stream).HasParseError();
}

// Each gives false for a failure, and when there was nothing to read.
bool CountEvents(std::string_view mode, std::FILE* file) {
  Counter counter;
  const bool read = mode == "library"   ? ReadByLibrary(file, counter)
                    : mode == "in-situ" ? ReadInSitu(file, counter)
                                        : ReadByRapidJson(file, counter);
  return read && counter.events > 0;
}

bool MakeRows(std::string_view mode, std::FILE* file) {
  int rows = 0;
  FolderContentsHandler handler({.details = true, .versions = true},
                                [&rows](const DirEntryInfoExt&) { ++rows; });
  return (mode == "library" ? ReadByLibrary(file, handler) : ReadByRapidJson(file, handler)) &&
         rows == rowsOfThePage;
}

bool MakeDocument(std::string_view mode, std::FILE* file) {
  rapidjson::Document document;
  return mode == "library" ? ParseByLibrary(file, document) : ParseByRapidJson(file, document);
}

bool ReadPage(std::string_view mode, std::string_view what, std::FILE* file) {
  std::rewind(file);
  if (what == "events") return CountEvents(mode, file);
  return what == "rows" ? MakeRows(mode, file) : MakeDocument(mode, file);
}

bool IsKnown(std::string_view mode, std::string_view what) {
  if (mode == "in-situ") return what == "events";
  return (mode == "library" || mode == "reference") &&
         (what == "events" || what == "rows" || what == "document");
}

}  // namespace

int main(int argc, char** argv) {
  const long times = argc == 4 && IsKnown(argv[1], argv[2]) ? std::strtol(argv[3], nullptr, 10) : 0;
  const std::string page = MakePage();
  const File file(std::tmpfile(), &std::fclose);
  if (times <= 0 || !file || std::fwrite(page.data(), 1, page.size(), file.get()) != page.size()) {
    std::fprintf(stderr,
                 "usage: bench-json library|reference|in-situ events|rows|document TIMES, with room for a "
                 "temporary file\n");
    return 2;
  }
  const vtdirect_bench::Stopwatch stopwatch;
  for (long i = 0; i < times; ++i) {
    if (!ReadPage(argv[1], argv[2], file.get())) return 1;
  }
  std::printf("%s\n", stopwatch.Report().c_str());
  return 0;
}
