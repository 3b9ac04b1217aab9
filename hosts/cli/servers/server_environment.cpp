#include "hosts/cli/servers/server_environment.h"

#include <unistd.h>

#include <algorithm>
#include <string_view>
#include <utility>

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

[[nodiscard]] Result<Configuration> With(Configuration configuration, const Named& named,
                                         const std::string& value) {
  if (named.key.empty()) return WithServerUrl(std::move(configuration), named.nickname, value);
  if (const auto fault = NicknameFault(named.nickname)) return Failure{ExitCode::Usage, *fault};
  auto settings = WithServerSetting(configuration.settings[named.nickname], named.key, value);
  if (!settings) return settings.failure();
  configuration.settings[named.nickname] = std::move(*settings);
  return configuration;
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

Result<Configuration> WithServersOfEnvironment(Configuration configuration, const Variables& variables) {
  // The URLs come first: another URL takes away what was said of the nickname, and nothing that is said here.
  for (const bool isUrl : {true, false}) {
    for (const auto& [variable, value] : variables) {
      const auto named = NamedBy(variable);
      if (!named || value.empty() || named->key.empty() != isUrl) continue;
      auto with = With(std::move(configuration), *named, value);
      if (!with) return FaultOf(variable, with.failure().message);
      configuration = std::move(*with);
    }
  }
  return configuration;
}

}  // namespace vtdirect_cli
