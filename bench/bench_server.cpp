// A server for measuring clients: one document, its content of any size, and a count of what was asked.
//
//   bench-server BYTES [MILLISECONDS]
//
// With MILLISECONDS, each answer takes that long: for clients that ask from several threads.
//
//   GET /servlet/rest/v1/dkm/documents/<any>   the document, as JSON
//   GET /content                               BYTES bytes
//   GET /counters                              "connections N requests M" since the start
//   GET /servlet/OrvetGW                       what server it is
//   GET /servlet/rest/v1/contexts              no context, so nobody has a workspace
#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>

#include "bench/loopback_server.h"

namespace {

using namespace vtdirect_bench;

constexpr std::uint64_t blockSize = 4 * 1024 * 1024;

struct Content {
  int block = -1;  // a file in memory that is sent again and again
  std::uint64_t size = 0;
};

bool SendContent(int socket, const Content& content) {
  if (!SendAll(socket, Head(200, content.size, "application/octet-stream"))) return false;
  for (std::uint64_t done = 0; done < content.size; done += blockSize) {
    if (!SendFile(socket, content.block, 0, std::min(blockSize, content.size - done))) return false;
  }
  return true;
}

// A document of the size and shape that a server really answers: one content, no attributes of its own.
std::string Document(const std::string& url, const Content& content) {
  return R"({"id":"D1","context":{"id":"OR:vn.product.Product:101","name":"Trekking Bike","type":"Product"},)"
         R"("revision":"B","iteration":"1","authAppVersion":"310","ndVersion":"J-01","pdmIterationState":{)"
         R"("isCheckout":false,"isCheckoutByYou":false,"isLatest":true,"checkoutByUser":"",)"
         R"("checkoutToFolderName":""},"isDerived":false,"epmMaster":{"id":"M2001","name":"Fork",)"
         R"("number":"0000100001","category":"iso","subCategory":"FENLET","cadName":"fork.lxz",)"
         R"("authoringApplication":"MERIDOX"},"locationFolder":{"id":"OR:vn.folder.SubFolder:211",)"
         R"("name":"Frame","path":"/Trekking Bike/Frame"},"derivedSourceDependencies":[],"cadContent":{)"
         R"("isSectioned":false,"contentSections":[{"id":"K6","category":"FENLET","fileName":"{$CAD_NAME}",)"
         R"("isForwardable":false,"isStale":false,"isHidden":false,"streamId":10010,)"
         R"("contentUrl":[")" +
         url + R"(content"],"fileSize":)" + std::to_string(content.size) +
         R"(}]},"secondaryContents":[],"fileBasedAttributes":[]})";
}

constexpr const char* identification =
    "ServerName:bench-server\nServerMajorVersion:12\nServerMinorVersion:0\nServerServicepackVersion:2\n"
    "ServerCPSVersion:0\nServerGeneration:schema5\n";

std::string RandomBlock() {
  std::uint64_t state = 0x9E3779B97F4A7C15ULL;
  std::string bytes(blockSize, '\0');
  for (std::size_t i = 0; i < bytes.size(); i += sizeof state) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    std::memcpy(&bytes[i], &state, sizeof state);
  }
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  Content content;
  long delay = 0;
  const std::string_view size = argc == 2 || argc == 3 ? argv[1] : "";
  if (std::from_chars(size.data(), size.data() + size.size(), content.size).ec != std::errc()) {
    std::fprintf(stderr, "usage: bench-server BYTES [MILLISECONDS]\n");
    return 2;
  }
  if (argc == 3) delay = std::strtol(argv[2], nullptr, 10);
  LoopbackServer server;
  content.block = MakeMemoryFile(RandomBlock());
  if (content.block < 0 || !server.Listen()) {
    std::perror("bench-server");
    return 1;
  }
  const std::string document = Document(server.Url(), content);
  std::atomic<std::uint64_t> requests{0};
  server.Run("bench-server", [&](int socket, std::string_view target) {
    if (target.starts_with("GET /counters ")) {
      return SendText(socket, 200, "text/plain",
                      "connections " + std::to_string(server.connections()) + " requests " +
                          std::to_string(requests) + "\n");
    }
    ++requests;
    if (delay > 0) std::this_thread::sleep_for(std::chrono::milliseconds(delay));
    if (target.starts_with("GET /content ")) return SendContent(socket, content);
    if (target.starts_with("GET /servlet/rest/v1/dkm/documents/"))
      return SendText(socket, 200, "application/json", document);
    if (target.starts_with("GET /servlet/OrvetGW "))
      if (target.starts_with("GET /servlet/rest/v1/contexts "))
        return SendText(socket, 200, "application/json", "[]");
    return SendText(socket, 200, "text/plain", identification);
    return SendText(socket, 404, "text/plain", "not here\n");
  });
}
