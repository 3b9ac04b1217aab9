// A server for measuring clients that upload: one document, which may be iterated, and a content store that
// keeps nothing.
//
//   bench-upload-server FILE
//
//   GET /compare, GET /swallow   from now on compares what is uploaded with FILE, or only takes it in
//   POST /upload                 a multipart body with one file: a receipt once all of it is there, 400 for a
//   body
//                                that holds less than FILE or, when compared, anything else
//   and what a new iteration of a document takes, answered the same each time
#include <strings.h>
#include <sys/socket.h>

#include <atomic>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include "bench/loopback_server.h"
#include "bench/upload_body.h"

namespace {

using namespace vtdirect_bench;

constexpr std::size_t largestHead = 64 * 1024;
constexpr const char* json = "application/json";

struct Store {
  std::string url;
  std::string file;
  std::uint64_t fileSize = 0;
  std::atomic<bool> comparing{false};
};

/// The value of a header line, or the empty text.
std::string_view HeaderValue(std::string_view head, std::string_view name) {
  for (std::size_t at = head.find("\r\n"); at != std::string_view::npos; at = head.find("\r\n", at)) {
    at += 2;
    const std::string_view line = head.substr(at, head.find("\r\n", at) - at);
    if (line.size() <= name.size() || line[name.size()] != ':') continue;
    if (strncasecmp(line.data(), name.data(), name.size()) != 0) continue;
    const std::size_t value = line.find_first_not_of(' ', name.size() + 1);
    return value == std::string_view::npos ? std::string_view() : line.substr(value);
  }
  return {};
}

bool Refuse(int socket) {
  static_cast<void>(
      SendAll(socket, "HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"));
  return false;
}

bool TakeUpload(int socket, const Store& store, IncomingBody& body) {
  if (body.remaining() <= store.fileSize) return Refuse(socket);
  if (store.comparing && !HoldsFile(body, store.file)) return Refuse(socket);
  if (!body.Swallow()) return false;
  return SendText(socket, 200, json, R"({"contentInfos":[{"streamId":901,"encodedInfo":"cmVjZWlwdA"}]})");
}

bool AnswerGet(int socket, Store& store, std::string_view target) {
  if (target == "/compare" || target == "/swallow") {
    store.comparing = target == "/compare";
    return SendText(socket, 200, "text/plain", "");
  }
  if (target.ends_with("/DynamicDocMgmt/$metadata"))
    return SendText(socket, 200, "application/xml", "<Schema/>");
  if (target.ends_with("/security/csrf")) {
    return SendText(socket, 200, json,
                    R"({"items":[{"id":"csrf","attributes":{"nonce_key":"X-Nonce","nonce":"n-1"}}]})");
  }
  if (target.find("/versions?") != std::string_view::npos) return SendText(socket, 200, json, "[]");
  if (target.ends_with("/dkm/documents/D1")) return SendText(socket, 200, json, R"({"id":"D1"})");
  return SendText(socket, 404, "text/plain", "not here\n");
}

bool AnswerPost(int socket, const Store& store, std::string_view target, IncomingBody& body) {
  if (target == "/upload") return TakeUpload(socket, store, body);
  if (!body.Swallow()) return false;
  if (target.ends_with("/content/creationFactory")) {
    return SendText(socket, 200, json,
                    R"({"masterUrl":"m","uploadUrl":")" + store.url +
                        R"(upload","fileNames":["f1"],"streamIds":["901"]})");
  }
  if (target.ends_with("/dkm/documents")) {
    return SendText(socket, 200, json,
                    R"([{"id":"D2","revision":"A","iteration":"2","epmMaster":{"cadName":"fork.lxz"}}])");
  }
  return SendText(socket, 404, "text/plain", "not here\n");
}

bool AnswerOne(int socket, Store& store, std::string_view head, std::string early) {
  const std::size_t method = head.find(' ');
  if (method == std::string_view::npos) return false;
  const std::string_view rest = head.substr(method + 1);
  const std::string_view target = rest.substr(0, rest.find(' '));
  if (head.starts_with("GET ")) return AnswerGet(socket, store, target);
  const std::string_view announced = HeaderValue(head, "Content-Length");
  std::uint64_t length = 0;
  if (std::from_chars(announced.data(), announced.data() + announced.size(), length).ec != std::errc() ||
      length < early.size()) {
    return Refuse(socket);
  }
  if (!HeaderValue(head, "Expect").empty() && !SendAll(socket, "HTTP/1.1 100 Continue\r\n\r\n")) return false;
  IncomingBody body(socket, length, std::move(early));
  return AnswerPost(socket, store, target, body);
}

/// No client of these sends a request before the answer to the one before, so what comes after a head is
/// its body.
void Converse(int socket, Store& store) {
  std::string input;
  char buffer[8192];
  while (input.size() < largestHead) {
    const std::size_t end = input.find("\r\n\r\n");
    if (end != std::string::npos) {
      const std::string head = input.substr(0, end);
      if (!AnswerOne(socket, store, head, input.substr(end + 4))) return;
      input.clear();
      continue;
    }
    const ssize_t count = recv(socket, buffer, sizeof buffer, 0);
    if (count <= 0) return;
    input.append(buffer, static_cast<std::size_t>(count));
  }
}

}  // namespace

int main(int argc, char** argv) {
  Store store;
  std::error_code error;
  if (argc == 2) {
    store.file = argv[1];
    store.fileSize = std::filesystem::file_size(store.file, error);
  }
  if (argc != 2 || error) {
    std::fprintf(stderr, "usage: bench-upload-server FILE\n");
    return 2;
  }
  LoopbackServer server;
  if (!server.Listen()) {
    std::perror("bench-upload-server");
    return 1;
  }
  store.url = server.Url();
  server.RunConversations("bench-upload-server", [&store](int socket) { Converse(socket, store); });
}
