#include "hosts/cli/servers/server_environment.h"

#include <unistd.h>

#include <algorithm>
#include <string_view>

namespace vtdirect_cli {
namespace {

constexpr std::string_view prefix = "VTDIRECT_SERVER_";
constexpr std::string_view partingSign = "__";

// What the name of a variable says.
struct Named {
  std::string nickname;
  std::string key;  // empty for the URL
};

[[nodiscard]] std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return text;
}

[[nodiscard]] std::optional<Named> NamedBy(const std::string& variable) {
  if (!variable.starts_with(prefix)) return std::nullopt;
  const std::string rest = variable.substr(prefix.size());
  const std::size_t parting = rest.find(partingSign);
  if (parting == std::string::npos) return Named{rest, {}};
  return Named{rest.substr(0, parting), LowerCase(rest.substr(parting + partingSign.size()))};
}

[[nodiscard]] Failure FaultOf(const std::string& variable, const std::string& what) {
  return {ExitCode::Usage, variable + ": " + what};
}

[[nodiscard]] std::optional<std::string> Apply(const Named& named, const std::string& value,
                                               Configuration& configuration) {
  if (named.key.empty()) return SetServerUrl(named.nickname, value, configuration);
  if (auto fault = NicknameFault(named.nickname)) return fault;
  return ReadServerSetting(named.key, value, configuration.settings[named.nickname]);
}

}  // namespace

Variables ServerVariables() {
  Variables variables;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    const std::size_t equals = text.find('=');
    if (!text.starts_with(prefix) || equals == std::string_view::npos) continue;
    variables.emplace_back(text.substr(0, equals), text.substr(equals + 1));
  }
  return variables;
}

std::optional<Failure> AddServersOfEnvironment(const Variables& variables, Configuration& configuration) {
  // The URLs come first: another URL takes away what was said of the nickname, and nothing that is said here.
  for (const bool isUrl : {true, false}) {
    for (const auto& [variable, value] : variables) {
      const auto named = NamedBy(variable);
      if (!named || value.empty() || named->key.empty() != isUrl) continue;
      if (auto fault = Apply(*named, value, configuration)) return FaultOf(variable, *fault);
    }
  }
  return std::nullopt;
}

}  // namespace vtdirect_cli
