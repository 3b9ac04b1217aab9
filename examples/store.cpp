// Stores a local file: as a new document at a path where nothing is, or as a new iteration of the document
// that is there.
//
//   store http://127.0.0.1:8080/ '//plm/Products/Trekking Bike/Folders/Frame/stem.lxz' stem.lxz
#include <vtdirect/vt_direct_manager.h>

#include <iostream>
#include <string>

namespace {

using namespace VtDirectManager;

// Gives the UID of what was stored, or the empty text.
std::string Store(const std::string& address, const char* file) {
  std::string stored;
  const auto finished = [&](StatusCode code, const char* text) {
    if (code == StatusOk) stored = text;
    if (code == StatusConnectFailed) std::cerr << "the server does not answer\n";
    if (code == StatusCreateFailed) std::cerr << "the document could not be created\n";
    if (code == StatusUpdateFailed) std::cerr << "the document could not be iterated\n";
    if (code == StatusFileTooLarge) std::cerr << "the server takes no file of this size\n";
  };
  const char* language = nullptr;
  const bool checkIn = false;
  if (!Upload(FileTypeGeneral, address.c_str(), file, finished, {}, language, checkIn)) return {};
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
  const std::string stored = Store(existing.empty() ? arguments[2] : existing, arguments[3]);
  if (stored.empty()) return 1;

  std::string version;
  std::string newest;
  if (GetLatest(stored.c_str(), version, newest)) std::cout << version << '\t';
  std::cout << stored << '\n';
  return 0;
}
