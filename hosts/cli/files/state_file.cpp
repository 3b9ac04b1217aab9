#include "hosts/cli/files/state_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/interruption.h"

namespace vtdirect_cli {
namespace {

constexpr int kLockTries = 500;
constexpr long kNanosecondsBetween = 20'000'000;
// What ReadLocalTextFile takes back.
constexpr std::size_t kLargest = std::size_t{1} << 20U;

[[nodiscard]] std::string Fault(const char* what, const std::string& path, int error) {
  return std::string(what) + " " + path + ": " + std::strerror(error);
}

[[nodiscard]] int LockWithPatience(int descriptor) {
  for (int tries = 0; tries < kLockTries && !Interrupted(); ++tries) {
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return 0;
    if (errno != EWOULDBLOCK && errno != EINTR) return errno;
    const timespec pause{0, kNanosecondsBetween};
    nanosleep(&pause, nullptr);
  }
  return EWOULDBLOCK;
}

}  // namespace

StateFileLock::StateFileLock(const std::string& path, std::string& fault) {
  const std::string directory = DirectoryOf(path);
  const std::string lockPath = path + ".lock";
  if (const int error = MakeDirectories(directory); error != 0) {
    fault = Fault("cannot make the directory", directory, error);
    return;
  }
  descriptor_ = open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (descriptor_ < 0) {
    fault = Fault("cannot write", lockPath, errno);
    return;
  }
  const int error = LockWithPatience(descriptor_);
  if (error == EWOULDBLOCK) {
    fault = "another run of vtdirect holds " + lockPath;
  } else if (error != 0) {
    fault = Fault("cannot lock", lockPath, error);
  }
}

StateFileLock::~StateFileLock() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::string ReplaceStateFile(const std::string& path, const std::string& text) {
  if (text.size() > kLargest) return Fault("cannot write", path, EFBIG);
  const int error = ReplaceDurably(path, text);
  return error == 0 ? "" : Fault("cannot write", path, error);
}

}  // namespace vtdirect_cli
