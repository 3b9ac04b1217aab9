#include "hosts/mount/options.h"

#include <sys/stat.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/program/environment.h"

namespace vtdirect_mount {
namespace {

using vtdirect_cli::Arguments;
using vtdirect_cli::ExitCode;
using vtdirect_cli::Failure;

constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20U;

struct NumberOption {
  vtdirect_cli::ArgumentName name;
  std::uint64_t usual;
  std::uint64_t least;
  std::uint64_t most;
};

constexpr NumberOption refreshOption{"refresh", 10, 0, 86'400};
constexpr NumberOption parallelOption{"parallel", 8, 1, 64};
constexpr NumberOption cacheSizeOption{"cache-size", 4096, 1, std::uint64_t{1} << 30U};

[[nodiscard]] std::optional<Failure> ReadNumber(const Arguments& arguments, const NumberOption& option,
                                                std::uint64_t& number) {
  number = option.usual;
  if (!arguments.Has(option.name)) return std::nullopt;
  const std::string text = arguments.Text(option.name);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isNumber = error == std::errc() && end == text.data() + text.size() && !text.empty();
  if (isNumber && number >= option.least && number <= option.most) return std::nullopt;
  return Failure{ExitCode::Usage, "--" + std::string(option.name.text()) + " takes a number from " +
                                      std::to_string(option.least) + " to " + std::to_string(option.most)};
}

[[nodiscard]] std::string AbsolutePath(const std::string& path) {
  std::error_code error;
  const auto absolute = std::filesystem::absolute(path, error);
  return path.empty() || error ? path : absolute.string();
}

[[nodiscard]] std::string UsualCache() {
  const std::string caches = vtdirect_cli::Environment("XDG_CACHE_HOME");
  if (caches.starts_with('/')) return caches + "/vtdirect";
  const std::string home = vtdirect_cli::Environment("HOME");
  return home.empty() ? "" : home + "/.cache/vtdirect";
}

[[nodiscard]] std::optional<Failure> ReadPlaces(const Arguments& arguments, MountOptions& options) {
  options.settings.address = vtdirect_cli::WithClosingSlash(arguments.Text("ADDRESS"));
  options.settings.directory = AbsolutePath(arguments.Text("DIR"));
  options.foreground = arguments.Has("foreground");
  options.cache = AbsolutePath(arguments.Has("cache") ? arguments.Text("cache") : UsualCache());
  if (options.cache.empty()) {
    return Failure{ExitCode::Usage, "there is no HOME to keep contents in; name a directory by --cache"};
  }
  options.log = AbsolutePath(arguments.Text("log"));
  const std::string state = vtdirect_cli::StateDirectory();
  if (options.log.empty() && !options.foreground && !state.empty()) options.log = state + "/mount.log";
  return std::nullopt;
}

// A store waits longer for an answer than a program that reads: the stall limit of the mount would end one that the
// server works on for minutes after it has got a large file.
[[nodiscard]] std::vector<vtdirect_cli::OptionRow> OptionsOfStores() {
  const auto all = vtdirect_cli::GlobalOptions();
  std::vector<vtdirect_cli::OptionRow> options(all.begin(), all.end());
  std::erase_if(options, [](const vtdirect_cli::OptionRow& row) {
    return std::string_view(row.name.text()) == "stall-timeout";
  });
  return options;
}

// It waits no longer for a connection than the mount.
void AddLimits(const Arguments& arguments, std::vector<std::string>& command) {
  if (arguments.Has("connect-timeout")) return;
  command.insert(command.end(), {"--connect-timeout", std::to_string(connectSeconds)});
}

[[nodiscard]] std::optional<Failure> ReadWriting(const Arguments& arguments, MountSettings& settings) {
  settings.write = arguments.Has("write");
  settings.autoCheckout = arguments.Has("auto-checkout");
  if (arguments.Has("no-usual-scratch")) settings.scratch.Clear();
  for (const std::string& pattern : arguments.All("scratch")) settings.scratch.Add(pattern);
  std::error_code error;
  settings.startDirectory = std::filesystem::current_path(error).string();
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  settings.command = {error ? "vtdirect" : (self.parent_path() / "vtdirect").string()};
  for (std::string& word : vtdirect_cli::WordsOf(OptionsOfStores(), arguments)) {
    settings.command.push_back(std::move(word));
  }
  AddLimits(arguments, settings.command);
  if (!arguments.Has("no-prompt")) settings.command.emplace_back("--no-prompt");
  const bool isOfWriting =
      settings.autoCheckout || arguments.Has("scratch") || arguments.Has("no-usual-scratch");
  if (settings.write || !isOfWriting) return std::nullopt;
  return Failure{ExitCode::Usage,
                 "--auto-checkout, --scratch and --no-usual-scratch take --write beside them"};
}

}  // namespace

std::optional<Failure> ReadMountOptions(const Arguments& arguments, MountOptions& options) {
  std::uint64_t refresh = 0;
  std::uint64_t parallel = 0;
  std::uint64_t mebibytes = 0;
  if (auto failure = ReadNumber(arguments, refreshOption, refresh)) return failure;
  if (auto failure = ReadNumber(arguments, parallelOption, parallel)) return failure;
  if (auto failure = ReadNumber(arguments, cacheSizeOption, mebibytes)) return failure;
  if (arguments.Has("max-time")) {
    return Failure{ExitCode::Usage, "--max-time would end the mount; --stall-timeout limits each request"};
  }
  options.settings.refresh = std::chrono::seconds(refresh);
  options.settings.parallel = parallel;
  options.settings.noPreview = arguments.Has("no-preview");
  if (auto failure = ReadWriting(arguments, options.settings)) return failure;
  options.cacheBytes = mebibytes * mebibyte;
  return ReadPlaces(arguments, options);
}

}  // namespace vtdirect_mount
