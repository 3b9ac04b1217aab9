#include "hosts/cli/files/state_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>

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

[[nodiscard]] std::string DirectoryOf(const std::string& path) {
  return std::filesystem::path(path).parent_path().string();
}

// Every directory that is missing, as those are made that hold what is one user's own.
[[nodiscard]] int MakeDirectories(const std::string& directory) {
  if (mkdir(directory.c_str(), 0700) == 0 || errno == EEXIST) return 0;
  if (errno != ENOENT) return errno;
  const std::string parent = DirectoryOf(directory);
  if (parent.empty() || parent == directory) return ENOENT;
  if (const int error = MakeDirectories(parent); error != 0) return error;
  return mkdir(directory.c_str(), 0700) == 0 || errno == EEXIST ? 0 : errno;
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

[[nodiscard]] int WriteAndSync(int descriptor, const std::string& text) {
  for (std::size_t written = 0; written < text.size();) {
    const ssize_t count = write(descriptor, text.data() + written, text.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    written += static_cast<std::size_t>(count);
  }
  return fsync(descriptor) == 0 ? 0 : errno;
}

// A crash could otherwise bring back the old file. Some filesystems can't do this, which takes nothing from
// the file itself.
void SyncDirectory(const std::string& directory) {
  const int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  static_cast<void>(fsync(descriptor));
  close(descriptor);
}

[[nodiscard]] std::string BehindLinks(const std::string& path) {
  std::error_code error;
  const auto real = std::filesystem::canonical(path, error);
  return error ? path : real.string();
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
  const std::string target = BehindLinks(path);
  std::string pattern = target + "-XXXXXX";
  // A signal waits until the new file stands, and leaves no half of it.
  const InterruptionHold hold;
  const int descriptor = mkostemp(pattern.data(), O_CLOEXEC);
  if (descriptor < 0) return Fault("cannot write", path, errno);
  int error = WriteAndSync(descriptor, text);
  if (close(descriptor) != 0 && error == 0) error = errno;
  if (error == 0 && rename(pattern.c_str(), target.c_str()) != 0) error = errno;
  if (error != 0) {
    unlink(pattern.c_str());
    return Fault("cannot write", path, error);
  }
  SyncDirectory(DirectoryOf(target));
  return {};
}

}  // namespace vtdirect_cli
