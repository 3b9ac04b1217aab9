#include "hosts/mount/program.h"

#include <sys/xattr.h>
#include <unistd.h>
#include <vtdirect/outcome.h>
#include <vtdirect/platform/http_settings.h>
#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/commands/command_line.h"
#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/files/work_directory.h"
#include "hosts/cli/program/environment.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/trace_log.h"
#include "hosts/mount/background.h"
#include "hosts/mount/credentials.h"
#include "hosts/mount/fuse/session.h"
#include "hosts/mount/options.h"
#include "hosts/mount/requests/failure_errno.h"

namespace vtdirect_mount {
namespace {

using vtdirect_cli::Arguments;
using vtdirect_cli::ExitCode;
using vtdirect_cli::Failure;

// A program that reads a file waits for this long at most when the server is silent, unless the options say
// something else.
constexpr long silenceSeconds = 30;
constexpr int exchangesAtOnce = 64;

void SetLimits(const Arguments& arguments) {
  du::http::TransportSettings settings = du::http::GetTransportSettings();
  if (!arguments.Has("connect-timeout")) settings.connectTimeoutMilliseconds = connectSeconds * 1000;
  if (!arguments.Has("stall-timeout")) {
    settings.stallTimeoutSeconds = silenceSeconds;
    settings.firstByteTimeoutSeconds = silenceSeconds;
  }
  settings.exchangesAtOnce = exchangesAtOnce;
  settings.idleConnections = exchangesAtOnce / 2;
  du::http::SetTransportSettings(settings);
}

[[nodiscard]] std::optional<Failure> SetUpHost(vtdirect_cli::Host& host, const vtdirect_cli::CommandRow& row,
                                               const Arguments& arguments, const MountOptions& options) {
  if (auto failure = host.SetUp(row, arguments)) return failure;
  SetLimits(arguments);
  ShareCredentials(host);
  const auto kind = vtdirect_cli::RequireAddress(options.settings.address);
  if (!kind) return kind.failure();
  if (*kind == vtdirect_cli::AddressKind::Path) return std::nullopt;
  return Failure{ExitCode::Usage, "a UID names no directory; give a path, //NICK/..."};
}

void KeepFirstFolder(const char* name, bool isFolder, void* user) {
  auto& first = *static_cast<std::string*>(user);
  if (isFolder && first.empty()) first = name;
}

// The root of a server is listed without a request, so the first directory below it is tried.
[[nodiscard]] bool CanList(const std::string& address) {
  std::string first;
  if (!VtDirectManager::ReadDir(address.c_str(), KeepFirstFolder, &first)) return false;
  const std::string nickname = VtDirectManager::GetServerNickname(address.c_str());
  const bool isRoot = address.ends_with("//" + nickname + "/");
  if (!isRoot || first.empty()) return true;
  return VtDirectManager::ReadDir((address + first + "/").c_str(), KeepFirstFolder, &first);
}

// Asks once, so that a user is asked for a password while there is a terminal. A server that is away is no
// reason not to mount: it may come back.
[[nodiscard]] std::optional<Failure> TryServer(vtdirect_cli::Host& host, const std::string& address,
                                               Log& log) {
  const VtDirectManager::Outcome outcome;
  if (CanList(address)) {
    host.TellCredentialsAccepted();
    return std::nullopt;
  }
  if (host.authenticationRefused()) {
    return host.authenticationRefusal();
  }
  const int error = ErrorOf(outcome);
  if (error == ENOENT) return Failure{ExitCode::NotFound, "there is no directory " + address};
  host.output().Warning("the server is away (" + WordsOf(outcome) +
                        "); the tree is there when it comes back");
  log.Write("the server is away: " + WordsOf(outcome));
  return std::nullopt;
}

[[nodiscard]] std::optional<Failure> OpenLog(const MountOptions& options, Log& log) {
  if (options.log.empty()) {
    if (options.foreground) log.UseStandardError();
    return std::nullopt;
  }
  static_cast<void>(vtdirect_cli::MakeDirectories(vtdirect_cli::DirectoryOf(options.log)));
  const int error = log.OpenFile(options.log);
  if (error == 0) return std::nullopt;
  return Failure{ExitCode::LocalFile, "cannot write the log " + options.log + ": " + std::strerror(error)};
}

// What a mount lives on, in the order in which it is made.
struct Parts {
  explicit Parts(const MountOptions& options)
      : cache(options.cache, options.cacheBytes), facts(options.cache + "/facts") {}

  Log log;
  std::unique_ptr<vtdirect_cli::WorkDirectory> temporary;
  ContentCache cache;
  FactsFile facts;
};

[[nodiscard]] std::optional<Failure> Prepare(const MountOptions& options, Parts& parts) {
  if (auto failure = OpenLog(options, parts.log)) return failure;
  auto temporary = vtdirect_cli::WorkDirectory::Create();
  if (!temporary) return temporary.failure();
  parts.temporary = std::move(*temporary);
  const std::string fault = parts.cache.Prepare();
  if (!fault.empty()) return Failure{ExitCode::LocalFile, fault};
  parts.facts.Load();
  return std::nullopt;
}

// Some thread waits for a server that is silent. The tree is gone, so nobody waits for that thread.
[[noreturn]] void EndAtOnce(Parts& parts, ExitCode code) {
  parts.temporary.reset();
  parts.cache.DropAll();
  _exit(static_cast<int>(code));
}

[[nodiscard]] ExitCode Serve(vtdirect_cli::Host& host, const MountOptions& options, Parts& parts,
                             Background* background) {
  Mount mount(options.settings, parts.facts, parts.cache, parts.log);
  const std::string fault =
      mount.writing() == nullptr ? "" : mount.writing()->Prepare(options.settings.address);
  if (!fault.empty()) return host.output().Fail({ExitCode::LocalFile, fault});
  const auto opened = Session::Open(mount);
  if (opened.session == nullptr) return host.output().Fail({ExitCode::Failure, opened.fault});
  parts.log.Write(options.settings.address + " is mounted at " + options.settings.directory);
  host.output().JsonOnly({{"path", options.settings.address}, {"directory", options.settings.directory}});
  static_cast<void>(host.output().Flush());
  if (background != nullptr) background->LetGo();
  const ExitCode code = opened.session->Run() ? ExitCode::Ok : ExitCode::Failure;
  const bool allHasEnded = mount.Stop();
  parts.log.Write(options.settings.directory + " is unmounted");
  if (!allHasEnded) EndAtOnce(parts, code);
  return code;
}

[[nodiscard]] ExitCode RunMount(const vtdirect_cli::CommandLine& line, vtdirect_cli::Output& output,
                                const MountOptions& options, Background* background) {
  Session::KeepSignals();
  vtdirect_cli::StartTraceLog(line.arguments.Text("trace"), std::cerr);
  vtdirect_cli::Host host(output);
  Parts parts(options);
  if (const auto failure = SetUpHost(host, *line.command, line.arguments, options))
    return output.Fail(*failure);
  if (const auto failure = Prepare(options, parts)) return output.Fail(*failure);
  if (const auto failure = TryServer(host, options.settings.address, parts.log)) return output.Fail(*failure);
  return Serve(host, options, parts, background);
}

// A second mount there would hide the first one, and each would store what the other has no idea of.
[[nodiscard]] std::optional<Failure> RequireUnmounted(const std::string& directory) {
  if (getxattr(directory.c_str(), "user.vantry.mount", nullptr, 0) < 0) return std::nullopt;
  return Failure{ExitCode::Failure, directory + " is a mount of vtdirect already, or lies in one"};
}

[[nodiscard]] int Start(const vtdirect_cli::CommandLine& line, vtdirect_cli::Output& output) {
  MountOptions options;
  if (const auto failure = ReadMountOptions(line.arguments, options)) {
    return static_cast<int>(output.Fail(*failure));
  }
  if (const auto failure = RequireUnmounted(options.settings.directory)) {
    return static_cast<int>(output.Fail(*failure));
  }
  std::optional<Background> background;
  if (!options.foreground) background.emplace();
  const ExitCode code = RunMount(line, output, options, background ? &*background : nullptr);
  if (background) background->Tell(static_cast<int>(code));
  return static_cast<int>(code);
}

}  // namespace

int RunProgram(int argc, const char* const* argv) {
  std::vector<const char*> words{"vtdirect", "mount"};
  words.insert(words.end(), argv + 1, argv + argc);
  vtdirect_cli::Output output(std::cout, std::cerr);
  const auto line = vtdirect_cli::ParseCommandLine(static_cast<int>(words.size()), words.data());
  if (line.failure) return static_cast<int>(output.Fail(*line.failure));
  if (line.command == nullptr) {
    std::cout << line.text;
    return 0;
  }
  output.Configure(line.command->name, line.arguments.Has("json"), line.arguments.Has("quiet"));
  return Start(line, output);
}

}  // namespace vtdirect_mount
