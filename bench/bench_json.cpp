// Reads one page of a folder's documents from its file by the library's reader of JSON, or by RapidJSON's.
// The handler only counts, so that the readers are measured. Prints for each, over a number of rounds that
// take them in turn, the lower quartile, the median and the upper quartile of the processor time in
// milliseconds, and what the page holds.
//
//   bench-json [ROUNDS]
#include <rapidjson/filereadstream.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
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

// A document, as most answers become one.
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

struct Reading {
  const char* name;
  std::function<std::size_t(std::FILE*)> run;  ///< gives what it counted, 0 for a failure
  std::vector<double> milliseconds = {};
};

std::vector<Reading> Readings() {
  const auto counting = [](auto read) {
    return [read](std::FILE* file) {
      Counter counter;
      return read(file, counter) ? counter.events : 0;
    };
  };
  const auto listing = [](auto read) {
    return [read](std::FILE* file) {
      std::size_t rows = 0;
      FolderContentsHandler handler(true, true, false, [&rows](const DirEntryInfoExt&) { ++rows; });
      return read(file, handler) ? rows : 0;
    };
  };
  const auto parsing = [](auto parse) {
    return [parse](std::FILE* file) {
      rapidjson::Document document;
      return parse(file, document) ? std::size_t{1} : 0;
    };
  };
  return {{"rapidjson, file", counting(ReadByRapidJson<Counter>)},
          {"rapidjson, in situ", counting(ReadInSitu<Counter>)},
          {"library, file", counting(ReadByLibrary<Counter>)},
          {"rapidjson, file, listing", listing(ReadByRapidJson<FolderContentsHandler>)},
          {"library, file, listing", listing(ReadByLibrary<FolderContentsHandler>)},
          {"rapidjson, document", parsing(ParseByRapidJson)},
          {"library, document", parsing(ParseByLibrary)}};
}

double Quantile(const std::vector<double>& sorted, double part) {
  return sorted[static_cast<std::size_t>(part * static_cast<double>(sorted.size() - 1) + 0.5)];
}

}  // namespace

int main(int argc, char** argv) {
  const long rounds = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 101;
  const std::string page = MakePage();
  const File file(std::tmpfile(), &std::fclose);
  if (rounds <= 0 || !file || std::fwrite(page.data(), 1, page.size(), file.get()) != page.size()) {
    std::fprintf(stderr, "usage: bench-json [ROUNDS], with room for a temporary file\n");
    return 2;
  }
  std::vector<Reading> readings = Readings();
  for (long round = 0; round < rounds; ++round) {
    for (Reading& reading : readings) {
      std::rewind(file.get());
      const double began = vtdirect_bench::ProcessorSeconds();
      if (reading.run(file.get()) == 0) return 1;
      reading.milliseconds.push_back((vtdirect_bench::ProcessorSeconds() - began) * 1000);
    }
  }
  std::printf("%zu bytes, %ld rounds: lower quartile, median, upper quartile\n", page.size(), rounds);
  for (Reading& reading : readings) {
    std::sort(reading.milliseconds.begin(), reading.milliseconds.end());
    std::printf("%-26s %6.2f %6.2f %6.2f ms\n", reading.name, Quantile(reading.milliseconds, 0.25),
                Quantile(reading.milliseconds, 0.5), Quantile(reading.milliseconds, 0.75));
  }
  return 0;
}
