#include "hosts/cli/files/state_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <sstream>

#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/files/local_text_file.h"
#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {
namespace {

constexpr int lockTries = 500;
constexpr long nanosecondsBetween = 20'000'000;
// What ReadLocalTextFile takes back.
constexpr std::size_t largest = std::size_t{1} << 20U;

[[nodiscard]] std::string Fault(const char* what, const std::string& path, int error) {
  return std::string(what) + " " + path + ": " + std::strerror(error);
}

[[nodiscard]] int LockWithPatience(int descriptor) {
  for (int tries = 0; tries < lockTries && !Interrupted(); ++tries) {
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return 0;
    if (errno != EWOULDBLOCK && errno != EINTR) return errno;
    const timespec pause{0, nanosecondsBetween};
    nanosleep(&pause, nullptr);
  }
  return EWOULDBLOCK;
}

/// Keeps other runs of the program from changing a state file while it lives. What it locks is a file of its own,
/// since the state file itself is replaced.
class Lock {
 public:
  explicit Lock(const std::string& path) : fault_(Take(path + ".lock")) {}
  ~Lock() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  // Why there is no lock; empty if there is one.
  [[nodiscard]] const std::string& fault() const { return fault_; }

 private:
  [[nodiscard]] std::string Take(const std::string& path) {
    const std::string directory = DirectoryOf(path);
    if (const int error = MakeDirectories(directory); error != 0) {
      return Fault("cannot make the directory", directory, error);
    }
    descriptor_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor_ < 0) return Fault("cannot write", path, errno);
    const int error = LockWithPatience(descriptor_);
    if (error == EWOULDBLOCK) return "another run of vtdirect holds " + path;
    return error == 0 ? "" : Fault("cannot lock", path, error);
  }

  int descriptor_ = -1;
  std::string fault_;
};

[[nodiscard]] std::string Replace(const std::string& path, const std::string& text) {
  if (text.size() > largest) return Fault("cannot write", path, EFBIG);
  const int error = ReplaceDurably(path, text);
  return error == 0 ? "" : Fault("cannot write", path, error);
}

}  // namespace

std::string StateFile::FaultOfFirstLine(std::string_view line) const {
  if (line == form_) return {};
  const std::string_view name = std::string_view(form_).substr(0, form_.rfind(' ') + 1);
  if (line.starts_with(name)) {
    return path_ + " was written by another release of vtdirect, and is left as it is; " +
           "go on with that release, or move the file away";
  }
  return path_ + " holds no " + noun_ + ", and is left as it is; move it away";
}

Result<StateLines> StateFile::Read() const {
  StateLines lines;
  if (path_.empty()) return lines;
  const auto& [error, text] = ReadLocalTextFile(path_);
  if (error != 0 && error != ENOENT) return Failure{ExitCode::LocalFile, Fault("cannot read", path_, error)};
  if (text.empty()) return lines;
  std::istringstream stream(text);
  std::string line;
  std::getline(stream, line);
  if (const std::string fault = FaultOfFirstLine(line); !fault.empty()) {
    return Failure{ExitCode::LocalFile, fault};
  }
  while (std::getline(stream, line)) lines.push_back(line);
  return lines;
}

std::string StateFile::Change(const std::function<bool(StateLines&)>& change) const {
  if (path_.empty()) return "there is no home directory (HOME, XDG_STATE_HOME) to keep it in";
  const Lock lock(path_);
  if (!lock.fault().empty()) return lock.fault();
  auto lines = Read();
  if (!lines) return lines.failure().message;
  if (!change(*lines)) return {};
  std::string text = form_ + '\n';
  for (const std::string& line : *lines) text += line + '\n';
  return Replace(path_, text);
}

std::string TimeOfNow() {
  const std::time_t now = std::time(nullptr);
  std::tm parts = {};
  if (gmtime_r(&now, &parts) == nullptr) return {};
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

}  // namespace vtdirect_cli
