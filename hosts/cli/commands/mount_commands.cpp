#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <vector>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption.h"

/// The tree of a server as a directory is the work of a program of its own beside this one, which takes the
/// same command line: only who mounts needs libfuse.
namespace vtdirect_cli {
namespace {

constexpr const char* mountProgram = "vtdirect-mount";
constexpr const char* mountAttribute = "user.vantry.mount";
constexpr int waitMilliseconds = 50;
constexpr int mostWaits = 600;

[[nodiscard]] std::string ProgramBeside(const char* name) {
  std::error_code error;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? name : (self.parent_path() / name).string();
}

// Signals are as usual in a program that is started.
void RestoreSignals() {
  sigset_t none;
  sigemptyset(&none);
  pthread_sigmask(SIG_SETMASK, &none, nullptr);
}

void Execute(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  execvp(pointers.front(), pointers.data());
}

ExitCode RunMount(Host& host, const Arguments& arguments) {
  const CommandRow row = MountCommand();
  std::vector<std::string> words{ProgramBeside(mountProgram)};
  for (std::string& word : WordsOf(GlobalOptions(), arguments)) words.push_back(std::move(word));
  for (std::string& word : WordsOf(row.options, arguments)) words.push_back(std::move(word));
  words.insert(words.end(), {"--", arguments.Text("ADDRESS"), arguments.Text("DIR")});
  RestoreSignals();
  Execute(words);
  return host.output().Fail({ExitCode::Failure, "cannot start " + words.front() + ": " +
                                                    std::strerror(errno) +
                                                    "; it is built and installed where libfuse3 is"});
}

// What a mount tells of itself: the number of its process, and how often it was refreshed.
struct MountState {
  pid_t process = 0;
  unsigned long refreshes = 0;
};

[[nodiscard]] std::optional<MountState> StateOfMount(const std::string& directory) {
  char text[64];
  const ssize_t length = getxattr(directory.c_str(), mountAttribute, text, sizeof text);
  if (length <= 0) return std::nullopt;
  MountState state;
  const auto [blank, error] = std::from_chars(text, text + length, state.process);
  if (error != std::errc() || blank == text + length || state.process <= 0) return std::nullopt;
  std::from_chars(blank + 1, text + length, state.refreshes);
  return state;
}

[[nodiscard]] Failure NoMount(const std::string& directory) {
  return {ExitCode::NotFound, directory + " is no mount of vtdirect"};
}

template <typename Condition>
[[nodiscard]] bool WaitFor(Condition condition) {
  for (int waits = 0; waits < mostWaits && !Interrupted(); ++waits) {
    if (condition()) return true;
    const timespec pause{0, waitMilliseconds * 1'000'000L};
    nanosleep(&pause, nullptr);
  }
  return condition();
}

ExitCode Report(Host& host, const std::string& directory) {
  host.output().JsonOnly({{"directory", directory}});
  return ExitCode::Ok;
}

ExitCode RunRefresh(Host& host, const Arguments& arguments) {
  const std::string directory = arguments.Text("DIR");
  const auto before = StateOfMount(directory);
  if (!before) return host.output().Fail(NoMount(directory));
  if (kill(before->process, SIGHUP) != 0) {
    return host.output().Fail(
        {ExitCode::Failure, "cannot reach the mount of " + directory + ": " + std::strerror(errno)});
  }
  const auto isRefreshed = [&] {
    const auto now = StateOfMount(directory);
    return now && now->refreshes != before->refreshes;
  };
  if (WaitFor(isRefreshed)) return Report(host, directory);
  return host.output().Fail({ExitCode::TimedOut, "the mount of " + directory + " did not answer"});
}

[[nodiscard]] int RunUnmountProgram(const std::string& directory) {
  std::vector<std::string> words{"fusermount3", "-u", "--", directory};
  const pid_t process = fork();
  if (process == 0) {
    RestoreSignals();
    Execute(words);
    _exit(127);
  }
  int status = -1;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

// A mount whose process was killed answers everything with this.
[[nodiscard]] bool IsDeadMount(const std::string& directory) {
  struct stat status = {};
  return stat(directory.c_str(), &status) != 0 && errno == ENOTCONN;
}

// A process that has ended and that its parent has not yet asked about has a number, and no program.
[[nodiscard]] bool HasEnded(pid_t process) {
  std::error_code error;
  static_cast<void>(std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/exe", error));
  return static_cast<bool>(error);
}

ExitCode RunUnmount(Host& host, const Arguments& arguments) {
  const std::string directory = arguments.Text("DIR");
  const auto state = StateOfMount(directory);
  if (!state && !IsDeadMount(directory)) return host.output().Fail(NoMount(directory));
  if (RunUnmountProgram(directory) != 0) {
    return host.output().Fail({ExitCode::Failure, directory + " is not unmounted; it may be in use"});
  }
  if (WaitFor([&] { return !state || HasEnded(state->process); })) return Report(host, directory);
  return host.output().Fail({ExitCode::TimedOut, directory + " is unmounted, and its program still runs"});
}

[[nodiscard]] MemberRow DirectoryMember() {
  return {"directory", MemberType::Text, nullptr, "the directory where it is shown"};
}

[[nodiscard]] std::vector<OptionRow> MountOptions() {
  return {
      {.name = "foreground", .letter = 'f', .help = "Stay in the foreground, and log to standard error."},
      {.name = "refresh",
       .value = "SECONDS",
       .help = "How long a folder's listing counts; 10 unless given, 0 asks each time."},
      {.name = "parallel",
       .value = "COUNT",
       .help = "How many folders and attributes are asked for at a time; 8 unless given."},
      {.name = "cache",
       .value = "DIR",
       .completion = Completion::Directories,
       .help = "Where contents are kept; $XDG_CACHE_HOME/vtdirect or ~/.cache/vtdirect unless given."},
      {.name = "cache-size",
       .value = "MIB",
       .help = "How much the kept contents may take, in mebibytes; 4096 unless given."},
      {.name = "log",
       .value = "FILE",
       .completion = Completion::Files,
       .help = "Where the mount says what went wrong."},
      {.name = "write",
       .letter = 'w',
       .help = "Let documents that are checked out be written to, and files be created."},
      {.name = "auto-checkout", .help = "With --write: check a document out when it is first written to."},
      {.name = "scratch",
       .value = "PATTERN",
       .repeatable = true,
       .help = "With --write: files whose names match this shell pattern stay on this machine, in addition "
               "to those "
               "of well-known editors. May be given several times."},
      {.name = "no-usual-scratch",
       .help = "With --write: ignore the usual names of editors' files; use only the patterns of --scratch."},
      {.name = "no-preview", .help = "Give no contents to programs that make thumbnails."},
  };
}

}  // namespace

CommandRow MountCommand() {
  return {"mount",
          "Show a server as a directory",
          "Mounts the directory ADDRESS of a server, such as //plm/, at DIR, an empty directory. Every "
          "program then sees contexts, folders, workspaces and documents as directories and files, which it "
          "can read, and with --write change. Returns when the tree is there, unless --foreground is "
          "given.\n\n"
          "Names are plain. One that a file can't have, as with a \"/\", is shown escaped as in a path. "
          "Beside the documents is a hidden directory .versions, with a directory for each document that "
          "holds its versions. Extended attributes tell the rest: user.vantry.uid, .version, .number, .name, "
          ".checked_out_by, .writable and .address.\n\n"
          "A content is fetched when it is first read, and then kept: a version never changes. A folder is "
          "asked for anew when its listing is older than --refresh, and when refresh or SIGHUP says so. "
          "While the server is away, what is kept stays readable.\n\n"
          "The log is $XDG_STATE_HOME/vtdirect/mount.log, or ~/.local/state/vtdirect/mount.log.",
          {{"ADDRESS", "The path of a directory."}, {"DIR", "Where it is shown."}},
          MountOptions(),
          Requests::None,
          RunMount,
          {{"path", MemberType::Text, nullptr, "the object's own path; a folder's closes with \"/\""},
           DirectoryMember()}};
}

CommandRow UnmountCommand() {
  return {"unmount",
          "Unmount a server",
          "Unmounts what mount has mounted at DIR, and returns when its program has ended. Also clears away "
          "what a killed mount has left.",
          {{"DIR", "The directory."}},
          {},
          Requests::None,
          RunUnmount,
          {DirectoryMember()}};
}

CommandRow RefreshCommand() {
  return {"refresh",
          "Ask a mounted server anew",
          "Lets the mount at DIR ask the server anew for folders and versions. Contents are kept.",
          {{"DIR", "The directory, or any file in it."}},
          {},
          Requests::None,
          RunRefresh,
          {DirectoryMember()}};
}

}  // namespace vtdirect_cli
