#include "hosts/cli/doctor/support_report.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "hosts/cli/commands/command_line.h"
#include "hosts/cli/editing/foreground_program.h"
#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

constexpr const char* withFolder = "vtdirect-support";

// What is harmless whatever its value is. Of all others that begin like ours, and of proxies, only that they are set.
constexpr std::string_view shownVariables[] = {"FENLOOM_TRACE", "FENLOOM_LANGUAGE", "LANG", "LC_ALL",
                                               "LC_MESSAGES",   "NO_COLOR",         "TERM"};

[[nodiscard]] bool PlaysAPart(const std::string& name) {
  std::string lower = name;
  for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return lower.starts_with("vtdirect_") || lower.starts_with("fenloom_") || lower.ends_with("_proxy") ||
         lower == "netrc" || lower == "krb5ccname" || lower == "ssl_cert_file" || lower == "ssl_cert_dir";
}

[[nodiscard]] std::string VariableLines() {
  std::vector<std::string> lines;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string text = *entry;
    const std::string name = text.substr(0, text.find('='));
    const bool isShown =
        std::find(std::begin(shownVariables), std::end(shownVariables), name) != std::end(shownVariables);
    if (isShown) {
      lines.push_back(Printable(text));
    } else if (PlaysAPart(name)) {
      lines.push_back(Printable(name) + " is set");
    }
  }
  std::sort(lines.begin(), lines.end());
  std::string out;
  for (const std::string& line : lines) out += line + "\n";
  return out;
}

void AddLine(std::string& text, const char* key, const std::string& value) {
  if (!value.empty()) text += "  " + std::string(key) + " = " + Printable(value) + "\n";
}

[[nodiscard]] std::string SettingLines(const ServerSettings& settings) {
  std::string text;
  AddLine(text, "client_cert", settings.clientCertificate);
  AddLine(text, "client_key", settings.clientKey);
  AddLine(text, "ca_file", settings.authorityFile);
  AddLine(text, "proxy", settings.proxy);
  // Its command line may hold anything.
  AddLine(text, "credential_helper", settings.credentialHelper.empty() ? "" : "(set)");
  AddLine(text, "login_also_for", settings.loginAlsoFor);
  AddLine(text, "http_addresses", settings.httpAddresses);
  if (settings.negotiate) AddLine(text, "negotiate", *settings.negotiate ? "yes" : "no");
  if (settings.maxTime) AddLine(text, "max_time", std::to_string(*settings.maxTime));
  return text;
}

[[nodiscard]] Failure CannotPack(const std::string& path, const std::string& why) {
  return {ExitCode::LocalFile, "cannot write " + Printable(path) + ": " + why};
}

}  // namespace

ReportFile VersionReport() {
  utsname system = {};
  std::string text = VersionText() + "\n";
  if (uname(&system) == 0) {
    text += std::string(system.sysname) + " " + system.release + " " + system.machine + "\n";
  }
  return {"version.txt", text};
}

ReportFile ConfigurationReport(const Host& host) {
  std::string text = "Servers\n";
  for (const auto& [nickname, url] : host.servers()) {
    text += Printable(nickname) + " = " + Printable(url.substr(0, url.find_first_of("?#"))) + "\n" +
            SettingLines(SettingsFor(host.configuration(), url));
  }
  return {"configuration.txt", text + "\nEnvironment\n" + VariableLines()};
}

std::optional<Failure> PackReport(const std::vector<ReportFile>& files, const std::string& directory,
                                  const std::string& path) {
  const std::string folder = directory + "/" + withFolder;
  if (const int error = MakeDirectories(folder); error != 0) return CannotPack(folder, std::strerror(error));
  for (const ReportFile& file : files) {
    const int error = ReplaceDurably(folder + "/" + file.name, file.text);
    if (error != 0) return CannotPack(folder + "/" + file.name, std::strerror(error));
  }
  DurableFile archive(path);
  if (archive.error() != 0) return CannotPack(path, std::strerror(archive.error()));
  const int status = RunInForeground("tar -czf", {archive.path(), "-C", directory, withFolder});
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
  if (status != 0)
    return CannotPack(path, "tar, which packs it, ended with status " + std::to_string(status));
  // What another program has put there since the path was looked at is not this one's to replace.
  const int error =
      archive.Commit(DurableFile::Permissions::OfOwner, DurableFile::Condition::AsBefore, std::nullopt);
  if (error != 0) return CannotPack(path, std::strerror(error));
  return std::nullopt;
}

}  // namespace vtdirect_cli
