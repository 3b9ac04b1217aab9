// Stores one file as a new iteration of a document, and writes into PARTS, when it is given, how long the parts of
// that took: "BEFORE SENDING AFTER", in seconds. Before the first piece goes out the body is made; after the last
// one the server answers and the body is removed.
//
//   bench-upload SERVER-URL FILE [PARTS]
#include <vtdirect/vt_direct_manager.h>

#include <chrono>
#include <fstream>
#include <map>
#include <optional>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;

struct Moments {
  Clock::time_point began = Clock::now();
  std::optional<Clock::time_point> firstPiece;
  Clock::time_point lastPiece;
};

double Seconds(Clock::time_point from, Clock::time_point to) {
  return std::chrono::duration<double>(to - from).count();
}

bool Store(const std::string& server, const char* file, Moments& moments) {
  VtDirectManager::SetAppConfig(VtDirectManager::ConfigUriStem, "bench");
  VtDirectManager::UpdateServerList({{"server", server}});
  // Only an address that is unique stands for an existing document; after "http" it is the server's own.
  const std::string address = "bench-vt" + server.substr(server.find(':')) + "?id=D1";
  const std::map<std::string, std::string> noLinks;
  const auto progress = [&moments](std::size_t, std::size_t) {
    moments.lastPiece = Clock::now();
    if (!moments.firstPiece) moments.firstPiece = moments.lastPiece;
    return true;
  };
  return VtDirectManager::Upload(address.c_str(), file, "", noLinks, {}, progress, nullptr, false);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 && argc != 4) return 2;
  Moments moments;
  if (!Store(argv[1], argv[2], moments) || !moments.firstPiece) return 1;
  if (argc == 3) return 0;
  std::ofstream parts(argv[3]);
  parts << Seconds(moments.began, *moments.firstPiece) << ' '
        << Seconds(*moments.firstPiece, moments.lastPiece) << ' ' << Seconds(moments.lastPiece, Clock::now())
        << '\n';
  return parts.flush() ? 0 : 1;
}
