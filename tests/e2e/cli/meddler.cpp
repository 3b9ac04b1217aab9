#include "tests/e2e/cli/meddler.h"

#include <arpa/inet.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <sstream>

namespace vtdirect_test {
namespace {

// Header lines that are for the proxy, or that this one does otherwise.
[[nodiscard]] bool IsForTheProxy(const std::string& line) {
  for (const char* name : {"Proxy-Connection:", "Connection:", "Expect:"}) {
    if (strncasecmp(line.c_str(), name, std::char_traits<char>::length(name)) == 0) return true;
  }
  return false;
}

// "http://127.0.0.1:4711/path"
struct Place {
  int port = 0;
  std::string path;
};

[[nodiscard]] Place PlaceOf(const std::string& target) {
  const std::size_t host = target.find("://") + 3;
  const std::size_t path = target.find('/', host);
  const std::size_t colon = target.find(':', host);
  return {std::stoi(target.substr(colon + 1, path - colon - 1)), target.substr(path)};
}

[[nodiscard]] std::string TextOf(const WireRequest& request, const std::string& path) {
  std::istringstream lines(request.head);
  std::string line;
  std::getline(lines, line);
  std::string text = request.method + " " + path + " HTTP/1.1\r\nConnection: close\r\n";
  while (std::getline(lines, line)) {
    if (!IsForTheProxy(line)) text += line + "\n";
  }
  return text + "\r\n" + request.body;
}

[[nodiscard]] std::string Exchange(int port, const std::string& text) {
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  std::string answer;
  if (connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
    std::size_t sent = 0;
    while (sent < text.size()) {
      const ssize_t count = send(connection, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
      if (count <= 0) break;
      sent += static_cast<std::size_t>(count);
    }
    std::array<char, 65536> piece;
    for (ssize_t count = 0; (count = recv(connection, piece.data(), piece.size(), 0)) > 0;) {
      answer.append(piece.data(), static_cast<std::size_t>(count));
    }
  }
  close(connection);
  return answer;
}

}  // namespace

Meddler::Meddler(Meddle meddle)
    : meddle_(std::move(meddle)), server_([this](Peer& peer, WireRequest& request) {
        peer.ReadBody(&request);
        meddle_(peer, request, [&request] {
          const Place place = PlaceOf(request.target);
          return Exchange(place.port, TextOf(request, place.path));
        });
        peer.Close();
      }) {}

}  // namespace vtdirect_test
