#include "hosts/cli/servers/server_list.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "hosts/cli/files/local_text_file.h"
#include "hosts/cli/servers/origin.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] bool HasControlByte(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

[[nodiscard]] std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view blankBytes = " \t\r";
  const std::size_t first = text.find_first_not_of(blankBytes);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blankBytes) - first + 1);
}

[[nodiscard]] Failure LineFault(const std::string& name, int line, const std::string& what) {
  return {ExitCode::Usage, name + ":" + std::to_string(line) + ": " + what};
}

// Where the lines of a configuration file belong.
struct Section {
  enum class Kind { None, Servers, Server };
  Kind kind = Kind::None;
  std::string nickname;  // of a server's own section
};

// "KEY = VALUE" with the blanks around both taken away; nothing without a "=".
[[nodiscard]] std::optional<std::pair<std::string, std::string>> KeyAndValue(std::string_view line) {
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  return std::pair{std::string(Trimmed(line.substr(0, equals))),
                   std::string(Trimmed(line.substr(equals + 1)))};
}

[[nodiscard]] Failure Fault(const std::string& what) {
  return {ExitCode::Usage, what};
}

[[nodiscard]] Result<Configuration> WithListedServer(Configuration configuration, const std::string& nickname,
                                                     const std::string& url) {
  if (const auto fault = NicknameFault(nickname)) return Fault(*fault);
  if (const auto fault = ServerUrlFault(url)) return Fault(*fault);
  const bool isNew = configuration.servers.emplace(nickname, url).second;
  if (!isNew) return Fault("the nickname \"" + nickname + "\" comes twice");
  return configuration;
}

// "[servers]" or "[server NICK]".
[[nodiscard]] Result<Section> ReadSection(std::string_view line) {
  constexpr std::string_view serverSection = "[server ";
  if (line == "[servers]") return Section{Section::Kind::Servers, {}};
  if (!line.starts_with(serverSection) || !line.ends_with(']')) {
    return Fault("unknown section " + std::string(line) + "; those there are: [servers], [server NICK]");
  }
  const auto name = Trimmed(line.substr(serverSection.size(), line.size() - serverSection.size() - 1));
  if (const auto fault = NicknameFault(name)) return Fault(*fault);
  return Section{Section::Kind::Server, std::string(name)};
}

// A configuration file, as far as it was read.
struct Reading {
  Configuration configuration;
  Section section;
};

[[nodiscard]] Result<Reading> AfterSectionLine(Reading reading, std::string_view line) {
  const auto section = ReadSection(line);
  if (!section) return section.failure();
  reading.section = *section;
  if (section->kind == Section::Kind::Servers) return reading;
  const bool isNew = reading.configuration.settings.try_emplace(section->nickname).second;
  if (!isNew) return Fault("the section " + std::string(line) + " comes twice");
  return reading;
}

[[nodiscard]] Result<Configuration> WithSetting(Configuration configuration, const std::string& nickname,
                                                const std::string& key, const std::string& value) {
  auto settings = WithServerSetting(configuration.settings[nickname], key, value);
  if (!settings) return settings.failure();
  configuration.settings[nickname] = std::move(*settings);
  return configuration;
}

[[nodiscard]] Result<Configuration> WithLine(Configuration configuration, const Section& section,
                                             std::string_view line) {
  const auto read = KeyAndValue(line);
  switch (section.kind) {
    case Section::Kind::None:
      return Fault("this line is before any section; expected \"[servers]\"");
    case Section::Kind::Servers:
      if (!read) return Fault("expected \"NICK = URL\"");
      return WithListedServer(std::move(configuration), read->first, read->second);
    default:
      if (!read) return Fault("expected \"KEY = VALUE\"");
      if (read->first == "url") {
        return WithListedServer(std::move(configuration), section.nickname, read->second);
      }
      return WithSetting(std::move(configuration), section.nickname, read->first, read->second);
  }
}

[[nodiscard]] Result<Reading> AfterLine(Reading reading, std::string_view line) {
  if (line.front() == '[') return AfterSectionLine(std::move(reading), line);
  auto configuration = WithLine(std::move(reading.configuration), reading.section, line);
  if (!configuration) return configuration.failure();
  return Reading{std::move(*configuration), std::move(reading.section)};
}

// Host and, where the URL names one, port: what the library tells servers by, beside the path.
[[nodiscard]] std::string AuthorityOf(std::string_view url) {
  const Origin origin = OriginOf(url).value_or(Origin{});
  const std::size_t start = url.find("://") + 3;
  const std::string_view authority = url.substr(start, url.find_first_of("/?#", start) - start);
  const bool namesPort = authority.find(':', authority.rfind(']') + 1) != std::string_view::npos;
  return origin.host + (namesPort ? ":" + std::to_string(origin.port) : "");
}

// The nicknames of a list with commas between them.
[[nodiscard]] std::vector<std::string> Nicknames(std::string_view list) {
  std::vector<std::string> nicknames;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(','), list.size());
    nicknames.emplace_back(Trimmed(list.substr(0, end)));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return nicknames;
}

struct CollectedSettings {
  ServerSettings settings;
  std::optional<Failure> fault;  // when two sections say different things
};

[[nodiscard]] CollectedSettings CollectSettings(const Configuration& configuration, const std::string& url) {
  CollectedSettings collected;
  const auto origin = OriginOf(url);
  for (const auto& [nickname, listed] : configuration.servers) {
    const auto found = configuration.settings.find(nickname);
    if (found == configuration.settings.end() || !origin || OriginOf(listed) != origin) continue;
    auto merged = MergeSettings(std::move(collected.settings), found->second);
    collected.settings = std::move(merged.settings);
    if (merged.contestedKey.empty()) continue;
    collected.fault =
        Failure{ExitCode::Usage, "two sections set " + merged.contestedKey + " for " + TextOf(*origin) +
                                     " and do not agree; what is said of one nickname holds for "
                                     "its scheme, host and port"};
  }
  return collected;
}

// A nickname that is misspelt would leave a server without its login, and nobody would know why.
[[nodiscard]] std::optional<Failure> LoginFault(const Configuration& configuration) {
  for (const auto& [nickname, settings] : configuration.settings) {
    for (const std::string& other : Nicknames(settings.loginAlsoFor)) {
      if (configuration.servers.count(other) != 0) continue;
      return Failure{ExitCode::Usage, "login_also_for of the server \"" + nickname + "\" names \"" + other +
                                          "\", which is not listed"};
    }
  }
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

Result<Configuration> WithServerUrl(Configuration configuration, const std::string& nickname,
                                    const std::string& url) {
  if (const auto fault = NicknameFault(nickname)) return Fault(*fault);
  if (const auto fault = ServerUrlFault(url)) return Fault(*fault);
  const auto before = configuration.servers.find(nickname);
  if (before != configuration.servers.end() && OriginOf(before->second) != OriginOf(url)) {
    // A certificate or a password of one server must not go to another.
    configuration.settings.erase(nickname);
  }
  configuration.servers[nickname] = url;
  return configuration;
}

Result<Configuration> WithServerArgument(std::string_view argument, Configuration configuration) {
  const std::size_t equals = argument.find('=');
  if (equals == std::string_view::npos) {
    return Failure{ExitCode::Usage, "--server takes NICK=URL, for example plm=https://plm.example/vt"};
  }
  const std::string nickname(argument.substr(0, equals));
  auto with = WithServerUrl(std::move(configuration), nickname, std::string(argument.substr(equals + 1)));
  if (!with) with.failure().message.insert(0, "--server: ");
  return with;
}

Result<Configuration> ReadConfiguration(std::string_view text, const std::string& name) {
  Reading reading;
  for (int number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = Trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.empty() || line.front() == '#' || line.front() == ';') continue;
    auto next = AfterLine(std::move(reading), line);
    if (!next) return LineFault(name, number, next.failure().message);
    reading = std::move(*next);
  }
  return reading.configuration;
}

std::string DefaultConfigurationPath(const std::string& configHome, const std::string& home) {
  if (configHome.starts_with('/')) return configHome + "/vtdirect/config";
  if (home.empty()) return {};
  return home + "/.config/vtdirect/config";
}

Result<Configuration> LoadConfiguration(const std::string& path, bool required) {
  const auto& [error, text] = ReadLocalTextFile(path);
  if (error == ENOENT && !required) return Configuration{};
  if (error != 0) {
    return Failure{ExitCode::LocalFile,
                   "cannot read the configuration file " + path + ": " + std::strerror(error)};
  }
  return ReadConfiguration(text, path);
}

std::optional<Failure> ConfigurationFault(const Configuration& configuration) {
  std::map<std::string, std::pair<std::string, std::string>> seen;  // authority to URL and nickname
  for (const auto& [nickname, url] : configuration.servers) {
    const auto [place, isNew] = seen.try_emplace(AuthorityOf(url), url, nickname);
    const auto& [otherUrl, otherNickname] = place->second;
    if (isNew || OriginOf(otherUrl)->scheme == OriginOf(url)->scheme) continue;
    return Failure{ExitCode::Usage, "the servers \"" + otherNickname + "\" (" + otherUrl + ") and \"" +
                                        nickname + "\" (" + url +
                                        ") are one host under http and https, which addresses do not tell "
                                        "apart; list it under one of them"};
  }
  for (const auto& [nickname, url] : configuration.servers) {
    if (auto fault = CollectSettings(configuration, url).fault) return fault;
  }
  return LoginFault(configuration);
}

std::vector<std::string> ServersWithLoginOf(const Configuration& configuration, const std::string& url) {
  std::vector<std::string> urls;
  for (const std::string& nickname : Nicknames(SettingsFor(configuration, url).loginAlsoFor)) {
    const auto server = configuration.servers.find(nickname);
    if (server != configuration.servers.end()) urls.push_back(server->second);
  }
  return urls;
}

ServerSettings SettingsFor(const Configuration& configuration, const std::string& url) {
  return CollectSettings(configuration, url).settings;
}

}  // namespace vtdirect_cli
