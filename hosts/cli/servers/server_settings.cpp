#include "hosts/cli/servers/server_settings.h"

#include <charconv>
#include <utility>

#include "hosts/cli/servers/origin.h"

namespace vtdirect_cli {
namespace {

constexpr std::pair<const char*, std::string ServerSettings::*> texts[] = {
    {"client_cert", &ServerSettings::clientCertificate},
    {"client_key", &ServerSettings::clientKey},
    {"ca_file", &ServerSettings::authorityFile},
    {"proxy", &ServerSettings::proxy},
    {"credential_helper", &ServerSettings::credentialHelper},
    {"login_also_for", &ServerSettings::loginAlsoFor},
    {"http_addresses", &ServerSettings::httpAddresses},
};

template <typename Value>
[[nodiscard]] bool Merge(const std::optional<Value>& other, std::optional<Value>& value) {
  if (!value) value = other;
  return !other || value == other;
}

[[nodiscard]] std::optional<std::string> HttpAddressesFault(const std::string& value) {
  if (value == "refuse" || value == "allow" || value == "upgrade") return std::nullopt;
  return "http_addresses takes refuse, allow or upgrade";
}

[[nodiscard]] std::optional<std::string> FaultOfText(const std::string& key, const std::string& value) {
  if (key == "http_addresses") return HttpAddressesFault(value);
  return key == "proxy" ? ProxyFault(value) : std::nullopt;
}

[[nodiscard]] Failure Fault(const std::string& what) {
  return {ExitCode::Usage, what};
}

[[nodiscard]] std::string UnknownKey(const std::string& key) {
  std::string known = "url";
  for (const auto& [name, member] : texts) known += std::string(", ") + name;
  return "unknown setting \"" + key + "\"; those there are: " + known + ", negotiate, max_time";
}

}  // namespace

std::optional<long> ReadSeconds(std::string_view text) {
  long seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  if (!whole || seconds < 1 || seconds > longestSeconds) return std::nullopt;
  return seconds;
}

std::optional<std::string> ProxyFault(std::string_view proxy) {
  if (proxy == "none") return std::nullopt;
  if (!OriginOf(proxy)) {
    return "a proxy is \"none\", or a URL that begins with \"http://\" or \"https://\" and holds a host, and "
           "no user name or password";
  }
  return std::nullopt;
}

Result<ServerSettings> WithServerSetting(ServerSettings settings, const std::string& key,
                                         const std::string& value) {
  if (value.empty()) return Fault("\"" + key + "\" has no value");
  if (key == "negotiate") {
    if (value != "yes" && value != "no") return Fault("negotiate takes yes or no");
    settings.negotiate = value == "yes";
    return settings;
  }
  if (key == "max_time") {
    settings.maxTime = ReadSeconds(value);
    if (settings.maxTime) return settings;
    return Fault("max_time takes a number of seconds from 1 to " + std::to_string(longestSeconds));
  }
  for (const auto& [name, member] : texts) {
    if (key != name) continue;
    if (const auto fault = FaultOfText(key, value)) return Fault(*fault);
    settings.*member = value;
    return settings;
  }
  return Fault(UnknownKey(key));
}

MergedSettings MergeSettings(ServerSettings settings, const ServerSettings& other) {
  std::string contested;
  const auto contest = [&contested](const char* key) {
    if (contested.empty()) contested = key;
  };
  for (const auto& [name, member] : texts) {
    if ((settings.*member).empty()) settings.*member = other.*member;
    if (!(other.*member).empty() && other.*member != settings.*member) contest(name);
  }
  if (!Merge(other.negotiate, settings.negotiate)) contest("negotiate");
  if (!Merge(other.maxTime, settings.maxTime)) contest("max_time");
  return {std::move(settings), std::move(contested)};
}

}  // namespace vtdirect_cli
