#include "tests/e2e/cli/simulator.h"

#include <arpa/inet.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "tests/support/unused_port.h"

namespace vtdirect_test {
namespace {

constexpr std::string_view readyLine = "vantry-sim listening on ";

std::vector<std::string> Words(const std::string& directory, const std::string& log,
                               const std::vector<std::string>& options) {
  std::vector<std::string> words = {SIMULATOR_PROGRAM, "--data", directory + "/data", "--log", log};
  if (std::find(options.begin(), options.end(), "--port") == options.end()) {
    words.insert(words.end(), {"--port", std::to_string(UnusedPort())});
  }
  words.insert(words.end(), options.begin(), options.end());
  return words;
}

int PortOf(const std::string& authority) {
  return std::stoi(authority.substr(authority.rfind(':') + 1));
}

std::string Exchange(int port, const std::string& request) {
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  std::string answer;
  if (connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
      send(connection, request.data(), request.size(), MSG_NOSIGNAL) ==
          static_cast<ssize_t>(request.size())) {
    char buffer[65536];
    ssize_t count = 0;
    while ((count = recv(connection, buffer, sizeof buffer, 0)) > 0) {
      answer.append(buffer, static_cast<std::size_t>(count));
    }
  }
  close(connection);
  return answer;
}

}  // namespace

Simulator::Simulator(const std::string& directory, const std::vector<std::string>& options)
    : log_(directory + "/log") {
  const auto admin = std::find(options.begin(), options.end(), "--admin-port");
  if (admin != options.end()) adminPort_ = std::stoi(*(admin + 1));
  process_ = std::make_unique<Process>(Words(directory, log_, options), ProcessOptions{});
  const auto ready = [this] {
    const std::string output = process_->OutputSoFar();
    const std::size_t start = output.find(readyLine);
    if (start == std::string::npos || output.find('\n', start) == std::string::npos)
      return !process_->Running();
    // The address of the admin port may follow after a blank.
    const std::size_t begin = start + readyLine.size();
    url_ = output.substr(begin, output.find_first_of(" \n", begin) - begin);
    return true;
  };
  if (!WaitUntil(ready) || url_.empty()) throw std::runtime_error("vantry-sim: " + process_->Wait().err);
}

Simulator::~Simulator() {
  process_->Signal(SIGKILL);
}

std::string Simulator::authority() const {
  const std::size_t start = url_.find("://") + 3;
  return url_.substr(start, url_.find('/', start) - start);
}

std::string Simulator::Uid(const std::string& id) const {
  return "korvufenloom-vt://" + url_.substr(url_.find("://") + 3) + "?id=" + id;
}

std::string Simulator::Get(const std::string& target) const {
  const std::string answer =
      Exchange(PortOf(authority()),
               "GET " + target + " HTTP/1.1\r\nHost: " + authority() + "\r\nConnection: close\r\n\r\n");
  const std::size_t head = answer.find("\r\n\r\n");
  if (head == std::string::npos) throw std::runtime_error("no answer to " + target);
  return answer.substr(head + 4);
}

void Simulator::Control(const std::string& method, const std::string& target) const {
  const std::string answer = Exchange(
      adminPort_, method + " " + target + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(adminPort_) +
                      "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
  if (!answer.starts_with("HTTP/1.1 2")) throw std::runtime_error(method + " " + target + ": " + answer);
}

std::string Simulator::Log() const {
  return ReadFile(log_);
}

}  // namespace vtdirect_test
