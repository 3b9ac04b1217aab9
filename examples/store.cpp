// Stores a local file: as a new document at a path where nothing is, or as a new iteration of the document
// that is there.
//
//   store http://127.0.0.1:8080/ '//plm/Products/Trekking Bike/Folders/Frame/stem.lxz' stem.lxz
#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <iostream>
#include <map>
#include <optional>
#include <string>

namespace {

using namespace VtDirectManager;

using SourceLinks = std::map<std::string, std::string>;

// Nothing if they could not be read: without a look into the Outcome that looks like a document without links.
std::optional<SourceLinks> ReadLinks(const std::string& uid) {
  const Outcome outcome;
  SourceLinks links;
  GetSourceLinks(uid.c_str(), links);
  if (links.empty() && !outcome.Empty()) return std::nullopt;
  return links;
}

// A folder of the path that is not there is passed over by a server: the document would be made in a folder above it.
bool FolderExists(const std::string& path) {
  return FileOrFolderExists(path.substr(0, path.rfind('/') + 1).c_str());
}

// Gives the UID of what was stored, or the empty text.
std::string StoreFile(const std::string& address, const char* file, const SourceLinks& links) {
  std::string stored;
  // The kind FileTypeFenlet, which is the default, suits a document that is there: a server carries its viewable
  // over. The other kinds would drop viewable and links.
  StoreOptions options;
  options.sourceLinks = &links;
  options.status = [&](StatusCode code, const char* text) {
    if (code == StatusOk) stored = text;
    if (code == StatusConnectFailed) std::cerr << "the server does not answer\n";
    if (code == StatusCreateFailed) std::cerr << "the document could not be created\n";
    if (code == StatusUpdateFailed) std::cerr << "the document could not be iterated\n";
    if (code == StatusFileTooLarge) std::cerr << "the server takes no file of this size\n";
  };
  if (!Store(address.c_str(), file, options)) return {};
  return stored;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) {
    std::cerr << "usage: store SERVER PATH FILE\n";
    return 2;
  }
  UpdateServerList({{"plm", arguments[1]}});

  // A path never overwrites: it names a new document. What exists is iterated by its UID.
  const std::string existing = FileExists(arguments[2]) ? GetUID(arguments[2]) : std::string();
  if (existing.empty() && !FolderExists(arguments[2])) {
    std::cerr << "there is no such folder; nothing was stored\n";
    return 1;
  }
  // An iteration has the links that it is told of and no others, so it is told of those that the document has.
  const std::optional<SourceLinks> links = existing.empty() ? SourceLinks() : ReadLinks(existing);
  if (!links) {
    std::cerr << "the source links of the document could not be read and would be lost; nothing was stored\n";
    return 1;
  }
  const std::string stored = StoreFile(existing.empty() ? arguments[2] : existing, arguments[3], *links);
  if (stored.empty()) return 1;

  std::string version;
  std::string newest;
  if (GetLatest(stored.c_str(), version, newest)) std::cout << version << '\t';
  std::cout << stored << '\n';
  return 0;
}
