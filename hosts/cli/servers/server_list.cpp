#include "hosts/cli/servers/server_list.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "hosts/cli/files/local_text_file.h"
#include "hosts/cli/servers/origin.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] bool HasControlByte(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

[[nodiscard]] std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

[[nodiscard]] Failure LineFault(const std::string& name, int line, const std::string& what) {
  return {ExitCode::Usage, name + ":" + std::to_string(line) + ": " + what};
}

// One line below "[servers]".
[[nodiscard]] std::optional<std::string> ReadServerLine(std::string_view line, ServerMap& servers) {
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return "expected \"NICK = URL\"";
  const std::string nickname(Trimmed(line.substr(0, equals)));
  const std::string url(Trimmed(line.substr(equals + 1)));
  if (auto fault = NicknameFault(nickname)) return fault;
  if (auto fault = ServerUrlFault(url)) return fault;
  if (!servers.emplace(nickname, url).second) return "the nickname \"" + nickname + "\" comes twice";
  return std::nullopt;
}

}  // namespace

std::optional<std::string> NicknameFault(std::string_view nickname) {
  if (nickname.empty()) return "a nickname must not be empty";
  if (nickname.find('/') != std::string_view::npos) {
    return "the nickname \"" + std::string(nickname) +
           "\" holds a \"/\", which ends a nickname in an address";
  }
  if (HasControlByte(nickname)) return "a nickname must not hold control characters";
  return std::nullopt;
}

std::optional<std::string> ServerUrlFault(std::string_view url) {
  if (!url.starts_with("http://") && !url.starts_with("https://")) {
    return "a server URL begins with \"https://\" or \"http://\"";
  }
  if (HasControlByte(url) || url.find(' ') != std::string_view::npos) {
    return "a server URL must not hold blanks or control characters";
  }
  const std::string_view behindScheme = url.substr(url.find("://") + 3);
  if (behindScheme.substr(0, behindScheme.find('/')).find('@') != std::string_view::npos) {
    return "a server URL must not hold a user name or a password";
  }
  if (!OriginOf(url)) return "the server URL names no host, or a port that is none";
  return std::nullopt;
}

std::optional<Failure> AddServerArgument(std::string_view argument, ServerMap& servers) {
  const std::size_t equals = argument.find('=');
  if (equals == std::string_view::npos) {
    return Failure{ExitCode::Usage, "--server takes NICK=URL, for example plm=https://plm.example/vt"};
  }
  const std::string_view nickname = argument.substr(0, equals);
  const std::string_view url = argument.substr(equals + 1);
  auto fault = NicknameFault(nickname);
  if (!fault) fault = ServerUrlFault(url);
  if (fault) return Failure{ExitCode::Usage, "--server: " + *fault};
  servers[std::string(nickname)] = url;
  return std::nullopt;
}

std::optional<Failure> ReadConfiguration(std::string_view text, const std::string& name, ServerMap& servers) {
  bool inServers = false;
  for (int number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = Trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.empty() || line.front() == '#' || line.front() == ';') continue;
    if (line == "[servers]") {
      inServers = true;
      continue;
    }
    if (line.front() == '[') {
      return LineFault(name, number,
                       "unknown section " + std::string(line) + "; the one there is: [servers]");
    }
    if (!inServers)
      return LineFault(name, number, "this line stands before any section; expected \"[servers]\"");
    if (auto fault = ReadServerLine(line, servers)) return LineFault(name, number, *fault);
  }
  return std::nullopt;
}

std::string DefaultConfigurationPath(const std::string& configHome, const std::string& home) {
  if (configHome.starts_with('/')) return configHome + "/vtdirect/config";
  if (home.empty()) return {};
  return home + "/.config/vtdirect/config";
}

std::optional<Failure> LoadConfiguration(const std::string& path, bool required, ServerMap& servers) {
  std::string text;
  const int error = ReadLocalTextFile(path, text);
  if (error == ENOENT && !required) return std::nullopt;
  if (error != 0) {
    return Failure{ExitCode::LocalFile,
                   "cannot read the configuration file " + path + ": " + std::strerror(error)};
  }
  return ReadConfiguration(text, path, servers);
}

}  // namespace vtdirect_cli
