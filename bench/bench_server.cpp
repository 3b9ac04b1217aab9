// A server for measuring clients: one document, its content of any size, and a count of what was asked.
//
//   bench-server BYTES
//
//   GET /servlet/rest/v1/dkm/documents/<any>   the document, as JSON
//   GET /content                               BYTES bytes
//   GET /counters                              "connections N requests M" since the start
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>

namespace {

constexpr std::uint64_t blockSize = 4 * 1024 * 1024;
constexpr std::size_t largestHead = 64 * 1024;

struct Server {
  int listener = -1;
  int block = -1;  // a file in memory that is sent again and again
  int port = 0;
  std::uint64_t contentSize = 0;
  std::string document;
  std::atomic<std::uint64_t> connections{0};
  std::atomic<std::uint64_t> requests{0};
};

bool SendAll(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

std::string Head(int status, std::uint64_t length, const char* type) {
  return "HTTP/1.1 " + std::to_string(status) + (status == 200 ? " OK" : " Not Found") +
         "\r\nContent-Type: " + type + "\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n";
}

bool SendText(int socket, int status, const char* type, const std::string& body) {
  return SendAll(socket, Head(status, body.size(), type) + body);
}

bool SendContent(int socket, const Server& server) {
  if (!SendAll(socket, Head(200, server.contentSize, "application/octet-stream"))) return false;
  for (std::uint64_t done = 0; done < server.contentSize;) {
    const std::uint64_t within = done % blockSize;
    off_t offset = static_cast<off_t>(within);
    const ssize_t sent =
        sendfile(socket, server.block, &offset, std::min(blockSize - within, server.contentSize - done));
    if (sent <= 0) return false;
    done += static_cast<std::uint64_t>(sent);
  }
  return true;
}

bool Answer(int socket, Server& server, std::string_view head) {
  const std::string_view target = head.substr(0, head.find("\r\n"));
  if (target.starts_with("GET /counters ")) {
    return SendText(socket, 200, "text/plain",
                    "connections " + std::to_string(server.connections) + " requests " +
                        std::to_string(server.requests) + "\n");
  }
  ++server.requests;
  if (target.starts_with("GET /content ")) return SendContent(socket, server);
  if (target.starts_with("GET /servlet/rest/v1/dkm/documents/"))
    return SendText(socket, 200, "application/json", server.document);
  return SendText(socket, 404, "text/plain", "not here\n");
}

void Serve(int socket, Server& server) {
  const int on = 1;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  std::string input;
  char buffer[8192];
  while (input.size() < largestHead) {
    const std::size_t end = input.find("\r\n\r\n");
    if (end != std::string::npos) {
      if (!Answer(socket, server, std::string_view(input).substr(0, end))) break;
      input.erase(0, end + 4);
      continue;
    }
    const ssize_t count = recv(socket, buffer, sizeof buffer, 0);
    if (count <= 0) break;
    input.append(buffer, static_cast<std::size_t>(count));
  }
  close(socket);
}

// A document of the size and shape that a server really answers: one content, no attributes of its own.
std::string Document(const Server& server) {
  return R"({"id":"D1","context":{"id":"OR:vn.product.Product:101","name":"Trekking Bike","type":"Product"},)"
         R"("revision":"B","iteration":"1","authAppVersion":"310","ndVersion":"J-01","pdmIterationState":{)"
         R"("isCheckout":false,"isCheckoutByYou":false,"isLatest":true,"checkoutByUser":"",)"
         R"("checkoutToFolderName":""},"isDerived":false,"epmMaster":{"id":"M2001","name":"Fork",)"
         R"("number":"0000100001","category":"iso","subCategory":"FENLET","cadName":"fork.lxz",)"
         R"("authoringApplication":"MERIDOX"},"locationFolder":{"id":"OR:vn.folder.SubFolder:211",)"
         R"("name":"Frame","path":"/Trekking Bike/Frame"},"derivedSourceDependencies":[],"cadContent":{)"
         R"("isSectioned":false,"contentSections":[{"id":"K6","category":"FENLET","fileName":"{$CAD_NAME}",)"
         R"("isForwardable":false,"isStale":false,"isHidden":false,"streamId":10010,)"
         R"("contentUrl":["http://127.0.0.1:)" +
         std::to_string(server.port) + R"(/content"],"fileSize":)" + std::to_string(server.contentSize) +
         R"(}]},"secondaryContents":[],"fileBasedAttributes":[]})";
}

bool MakeBlock(Server& server) {
  server.block = memfd_create("content", 0);
  std::uint64_t state = 0x9E3779B97F4A7C15ULL;
  std::string bytes(blockSize, '\0');
  for (std::size_t i = 0; i < bytes.size(); i += sizeof state) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    std::memcpy(&bytes[i], &state, sizeof state);
  }
  return server.block >= 0 &&
         write(server.block, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

bool Listen(Server& server) {
  server.listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (server.listener < 0 || bind(server.listener, generic, length) != 0 || listen(server.listener, 64) != 0)
    return false;
  if (getsockname(server.listener, generic, &length) != 0) return false;
  server.port = ntohs(address.sin_port);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  Server server;
  const std::string_view size = argc == 2 ? argv[1] : "";
  if (std::from_chars(size.data(), size.data() + size.size(), server.contentSize).ec != std::errc()) {
    std::fprintf(stderr, "usage: bench-server BYTES\n");
    return 2;
  }
  if (!MakeBlock(server) || !Listen(server)) {
    std::perror("bench-server");
    return 1;
  }
  server.document = Document(server);
  std::printf("bench-server listening on http://127.0.0.1:%d/\n", server.port);
  std::fflush(stdout);
  for (;;) {
    const int socket = accept(server.listener, nullptr, nullptr);
    if (socket < 0) continue;
    ++server.connections;
    std::thread([socket, &server] { Serve(socket, server); }).detach();
  }
}
