// A server with one product folder that holds as many documents as its name says, and with a schema of any
// size.
//
//   bench-listing-server SCHEMA-BYTES [PAGE-ROWS [MILLISECONDS]]
//
// PAGE-ROWS is 10,000 unless given. With MILLISECONDS, each answer takes that long: for clients that ask from
// several threads.
//
//   GET /servlet/odata/DataAdmin/$metadata                a schema of version 5 with about SCHEMA-BYTES bytes
//   GET /servlet/odata/<other service>/$metadata          a small schema of version 2
//   GET /servlet/odata/v1/DataAdmin/Containers/...        the product "N": its root folder
//   GET /servlet/odata/.../Containers('N')/.../Folders    no folders
//   GET /servlet/odata/.../Containers('N')/.../FolderContents/...   the first page of N documents
//   GET /pages/N                                          a page, with N documents from here to the end
//   GET /counters                                         "connections N" since the start
//
// All pages send the same rows, which were made before the first request.
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "bench/loopback_server.h"

namespace {

using namespace vtdirect_bench;

constexpr std::uint64_t usualPageRows = 10000;
constexpr const char* json = "application/json;odata.metadata=minimal";
constexpr std::string_view pageStart = R"({"@odata.context":"$metadata#FolderContents","value":[)";

// A file in memory and its size.
struct Prepared {
  explicit Prepared(const std::string& bytes) : file(MakeMemoryFile(bytes)), size(bytes.size()) {}
  int file;
  std::uint64_t size;
};

bool SendPrepared(int socket, const Prepared& prepared, const char* type) {
  return SendAll(socket, Head(200, prepared.size, type)) && SendFile(socket, prepared.file, 0, prepared.size);
}

std::string Version(std::uint64_t row, int iteration) {
  return R"({"Version":"B.)" + std::to_string(iteration) + R"(","ID":"OR:vn.epm.EPMDocument:)" +
         std::to_string(100000 + 10 * row + static_cast<std::uint64_t>(iteration)) + R"("})";
}

std::string Row(std::uint64_t row) {
  char number[16];
  std::snprintf(number, sizeof number, "%010u", static_cast<unsigned>(row));
  const std::string digits = number;
  return R"({"CADName":"bracket-)" + digits + R"(.lxz","ID":"OR:vn.epm.EPMDocument:)" +
         std::to_string(100003 + 10 * row) + R"(","Version":"B.3","Name":"Bracket of frame )" +
         std::to_string(row) + R"(","Number":")" + digits + R"(","Versions":[)" + Version(row, 1) + "," +
         Version(row, 2) + "," + Version(row, 3) + "]}";
}

std::string Rows(std::uint64_t count) {
  std::string rows;
  for (std::uint64_t row = 0; row < count; ++row) {
    if (row > 0) rows += ",";
    rows += Row(row);
  }
  return rows;
}

std::string Schema(int version, std::uint64_t bytes) {
  std::string text =
      R"(<?xml version="1.0" encoding="UTF-8"?><edmx:Edmx Version="4.0" )"
      R"(xmlns:edmx="http://docs.oasis-open.org/odata/ns/edmx"><edmx:DataServices>)"
      R"(<Schema xmlns="http://docs.oasis-open.org/odata/ns/edm" Namespace="ZVK.DataAdmin">)"
      R"(<Annotation Term="Core.SchemaVersion"><String>)" +
      std::to_string(version) +
      R"(</String></Annotation><EntityType Name="Folder"><Key><PropertyRef Name="ID"/></Key>)"
      R"xml(<NavigationProperty Name="FolderContents" Type="Collection(ZVK.DataAdmin.Content)"/>)xml"
      R"(</EntityType>)"
      "\n";
  for (std::uint64_t type = 0; text.size() < bytes; ++type) {
    const std::string name = "Type" + std::to_string(type);
    text += "      <EntityType Name=\"" + name +
            "\" BaseType=\"ZVK.DataAdmin.Persistable\">\n"
            "        <Key>\n          <PropertyRef Name=\"ID\"/>\n        </Key>\n";
    for (int property = 0; property < 8; ++property) {
      text += "        <Property Name=\"Attribute" + std::to_string(property) +
              "\" Type=\"Edm.String\" Nullable=\"true\">\n"
              "          <Annotation Term=\"Core.Description\"><String>What the attribute of a " +
              name + " tells</String></Annotation>\n        </Property>\n";
    }
    text += "        <NavigationProperty Name=\"Parts\" Type=\"Collection(ZVK.DataAdmin." + name +
            ")\"/>\n      </EntityType>\n";
  }
  return text + "</Schema></edmx:DataServices></edmx:Edmx>\n";
}

// The number after the first `mark`; 0 when there is none.
std::uint64_t NumberBehind(std::string_view text, std::string_view mark) {
  std::uint64_t number = 0;
  const std::size_t found = text.find(mark);
  if (found == std::string_view::npos) return 0;
  const std::string_view digits = text.substr(found + mark.size());
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

class Repository {
 public:
  Repository(std::string url, std::uint64_t schemaBytes, std::uint64_t pageRows)
      : url_(std::move(url)),
        pageRows_(pageRows),
        rows_(Rows(pageRows)),
        bigSchema_(Schema(5, schemaBytes)),
        smallSchema_(Schema(2, 0)) {}

  [[nodiscard]] bool ready() const {
    return rows_.file >= 0 && bigSchema_.file >= 0 && smallSchema_.file >= 0;
  }

  [[nodiscard]] bool Answer(int socket, std::string_view target) const {
    if (target.starts_with("GET /pages/")) return SendPage(socket, NumberBehind(target, "/pages/"));
    if (target.starts_with("GET /servlet/odata/DataAdmin/$metadata "))
      return SendPrepared(socket, bigSchema_, "application/xml");
    if (target.find("/$metadata ") != std::string_view::npos)
      return SendPrepared(socket, smallSchema_, "application/xml");
    if (target.find("/FolderContents/") != std::string_view::npos)
      return SendPage(socket, NumberBehind(target, "Containers('"));
    if (target.find("/Folders?$select=Name ") != std::string_view::npos)
      return SendText(socket, 200, json, R"({"value":[]})");
    if (target.starts_with("GET /servlet/odata/v1/DataAdmin/Containers/"))
      return SendContainer(socket, target);
    return SendText(socket, 404, "text/plain", "not here\n");
  }

 private:
  [[nodiscard]] static bool SendContainer(int socket, std::string_view target) {
    const std::string rows = std::to_string(NumberBehind(target, "Name%20eq%20%27"));
    return SendText(socket, 200, json,
                    R"({"value":[{"ID":")" + rows + R"(","Folders":[{"ID":"F","Name":"Default"}]}]})");
  }

  [[nodiscard]] bool SendPage(int socket, std::uint64_t rowsLeft) const {
    std::string end = "]}";
    if (rowsLeft > pageRows_)
      end = R"(],"@odata.nextLink":")" + url_ + "pages/" + std::to_string(rowsLeft - pageRows_) + R"("})";
    return SendAll(socket, Head(200, pageStart.size() + rows_.size + end.size(), json).append(pageStart)) &&
           SendFile(socket, rows_.file, 0, rows_.size) && SendAll(socket, end);
  }

  std::string url_;
  std::uint64_t pageRows_;
  Prepared rows_;
  Prepared bigSchema_;
  Prepared smallSchema_;
};

/// A number among the arguments; `otherwise` when there is none, nothing when it is no number.
std::optional<std::uint64_t> Number(int argc, char** argv, int index, std::uint64_t otherwise) {
  if (index >= argc) return otherwise;
  const std::string_view text = argv[index];
  std::uint64_t number = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc()) return std::nullopt;
  return number;
}

}  // namespace

int main(int argc, char** argv) {
  const auto schemaBytes = argc < 2 ? std::nullopt : Number(argc, argv, 1, 0);
  const auto pageRows = Number(argc, argv, 2, usualPageRows);
  const auto delay = Number(argc, argv, 3, 0);
  if (!schemaBytes || !pageRows || *pageRows == 0 || !delay) {
    std::fprintf(stderr, "usage: bench-listing-server SCHEMA-BYTES [PAGE-ROWS [MILLISECONDS]]\n");
    return 2;
  }
  LoopbackServer server;
  if (!server.Listen()) {
    std::perror("bench-listing-server");
    return 1;
  }
  const Repository repository(server.Url(), *schemaBytes, *pageRows);
  if (!repository.ready()) {
    std::fprintf(stderr, "bench-listing-server: no file in memory could be made\n");
    return 1;
  }
  server.Run("bench-listing-server", [&](int socket, std::string_view target) {
    if (target.starts_with("GET /counters "))
      return SendText(socket, 200, "text/plain",
                      "connections " + std::to_string(server.connections()) + "\n");
    if (*delay > 0) std::this_thread::sleep_for(std::chrono::milliseconds(*delay));
    return repository.Answer(socket, target);
  });
}
