#include "hosts/cli/servers/server_access.h"

#include <vtdirect/platform/http_credentials.h>
#include <vtdirect/platform/http_settings.h>

#include <cerrno>
#include <cstring>

#include "hosts/cli/files/local_text_file.h"

namespace vtdirect_cli {
namespace {

// A file that is only too large for a text may hold certificates all the same.
[[nodiscard]] std::optional<Failure> RequireReadable(const std::string& path) {
  if (path.empty()) return std::nullopt;
  const int error = ReadLocalTextFile(path).error;
  if (error == 0 || error == EFBIG) return std::nullopt;
  return Failure{ExitCode::LocalFile, "cannot read " + path + ": " + std::strerror(error)};
}

[[nodiscard]] ServerSettings SettingsOf(const ServerAccess& access, const std::string& url) {
  // The command line counts for more where both say something.
  auto merged = MergeSettings(access.commandLine, SettingsFor(access.configuration, url));
  // A key of the file belongs to its certificate.
  if (!access.commandLine.clientCertificate.empty()) merged.settings.clientKey = access.commandLine.clientKey;
  return merged.settings;
}

// What counts for the whole process.
struct ProcessWide {
  std::string proxy;
  std::string authorityFile;
  std::string httpAddresses;
};

[[nodiscard]] du::http::HttpAddresses RuleOf(const std::string& name) {
  if (name == "allow") return du::http::HttpAddresses::Allow;
  return name == "upgrade" ? du::http::HttpAddresses::Upgrade : du::http::HttpAddresses::Refuse;
}

[[nodiscard]] Result<ProcessWide> CollectProcessWide(const ServerAccess& access) {
  ProcessWide wide;
  bool isFirst = true;
  for (const std::string& url : access.used) {
    const ServerSettings settings = SettingsOf(access, url);
    const ProcessWide next{settings.proxy, settings.authorityFile, settings.httpAddresses};
    if (!isFirst && (next.proxy != wide.proxy || next.authorityFile != wide.authorityFile ||
                     next.httpAddresses != wide.httpAddresses)) {
      return Failure{ExitCode::Usage,
                     "the servers of this command have different proxies, ca_files or http_addresses; give "
                     "them to commands of their own"};
    }
    isFirst = false;
    wide = next;
  }
  if (access.used.empty()) wide = {access.commandLine.proxy, access.commandLine.authorityFile, {}};
  return wide;
}

void ShowCertificate(const ServerAccess& access, const std::string& url, const ServerSettings& settings) {
  du::http::ClientCertificate certificate;
  certificate.certificateFile = settings.clientCertificate;
  certificate.keyFile = settings.clientKey;
  certificate.passphrase = [ask = access.passphrase, url](const std::string& keyFile) {
    return ask(url, keyFile);
  };
  du::http::SetClientCertificate(url, certificate);
}

}  // namespace

std::optional<Failure> ApplyServerAccess(const ServerAccess& access) {
  const auto collected = CollectProcessWide(access);
  if (!collected) return collected.failure();
  const ProcessWide& wide = *collected;
  if (auto failure = RequireReadable(wide.authorityFile)) return failure;
  du::http::TransportSettings transport = du::http::GetTransportSettings();
  transport.certificateAuthorityFile = wide.authorityFile;
  transport.proxy.reset();
  if (!wide.proxy.empty()) transport.proxy = wide.proxy == "none" ? std::string() : wide.proxy;
  transport.httpAddresses = RuleOf(wide.httpAddresses);
  du::http::SetTransportSettings(transport);
  for (const std::string& url : access.listed) {
    const ServerSettings settings = SettingsOf(access, url);
    if (settings.negotiate.value_or(false)) du::http::SetNegotiateCredentials(url);
    if (settings.clientCertificate.empty()) continue;
    if (auto failure = RequireReadable(settings.clientCertificate)) return failure;
    if (auto failure = RequireReadable(settings.clientKey)) return failure;
    ShowCertificate(access, url, settings);
  }
  return std::nullopt;
}

}  // namespace vtdirect_cli
