#include "hosts/mount/cache/content_cache.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <vector>

#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/files/sha256.h"

namespace vtdirect_mount {
namespace {

namespace fs = std::filesystem;

struct CachedFile {
  std::string path;
  std::uint64_t bytes = 0;
  timespec used{};
};

[[nodiscard]] bool WasUsedBefore(const CachedFile& one, const CachedFile& other) {
  return one.used.tv_sec != other.used.tv_sec ? one.used.tv_sec < other.used.tv_sec
                                              : one.used.tv_nsec < other.used.tv_nsec;
}

// The time of the last change is that of the last use here, since the contents never change.
[[nodiscard]] std::vector<CachedFile> FilesIn(const std::string& directory) {
  std::vector<CachedFile> files;
  std::error_code error;
  for (auto entry = fs::recursive_directory_iterator(directory, error);
       !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    struct stat status = {};
    if (lstat(entry->path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
    files.push_back({entry->path().string(), static_cast<std::uint64_t>(status.st_size), status.st_mtim});
  }
  return files;
}

[[nodiscard]] std::uint64_t SumOf(const std::vector<CachedFile>& files) {
  std::uint64_t sum = 0;
  for (const CachedFile& file : files) sum += file.bytes;
  return sum;
}

// Names of parts begin with the number of the process that writes them.
[[nodiscard]] bool HasWriter(const std::string& name) {
  pid_t writer = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), writer);
  return error == std::errc() && writer > 0 && (kill(writer, 0) == 0 || errno == EPERM);
}

[[nodiscard]] std::string FaultOfDirectory(const std::string& directory) {
  if (const int error = vtdirect_cli::MakeDirectories(directory); error != 0) {
    return "cannot make " + directory + ": " + std::strerror(error);
  }
  struct stat status = {};
  if (stat(directory.c_str(), &status) != 0) {
    return "cannot look at " + directory + ": " + std::strerror(errno);
  }
  if (!S_ISDIR(status.st_mode)) return directory + " is no directory";
  if (status.st_uid == geteuid() && (status.st_mode & 077U) == 0) return "";
  return directory + " is not used: it holds contents, and must belong to you alone (chmod 700 mends that)";
}

}  // namespace

std::string ContentCache::Prepare() {
  for (const std::string& directory : {directory_, Contents(), Parts()}) {
    if (std::string fault = FaultOfDirectory(directory); !fault.empty()) return fault;
  }
  RemoveDeadParts();
  bytes_ = SumOf(FilesIn(Contents()));
  if (bytes_ > limit_) ShrinkTo(limit_ - limit_ / 10);
  return "";
}

void ContentCache::RemoveDeadParts() const {
  std::error_code error;
  for (auto entry = fs::directory_iterator(Parts(), error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    if (!HasWriter(entry->path().filename().string())) Drop(entry->path().string());
  }
}

std::string ContentCache::PathOf(const std::string& key) const {
  const std::string hash = vtdirect_cli::Sha256OfText(key);
  return Contents() + "/" + hash.substr(0, 2) + "/" + hash.substr(2);
}

std::shared_ptr<const OpenFile> ContentCache::Open(const std::string& key, std::uint64_t size) const {
  const std::string path = PathOf(key);
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (descriptor < 0) return nullptr;
  auto file = std::make_shared<const OpenFile>(descriptor);
  struct stat status = {};
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
      static_cast<std::uint64_t>(status.st_size) == size) {
    futimens(descriptor, nullptr);
    return file;
  }
  unlink(path.c_str());
  return nullptr;
}

std::string ContentCache::NewFile() {
  return Parts() + "/" + std::to_string(getpid()) + "-" + std::to_string(next_++);
}

int ContentCache::ErrorOfWriting(std::uint64_t bytes) {
  const std::string file = NewFile();
  const OpenFile tried(open(file.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600));
  if (tried.descriptor() < 0) return errno;
  const int error = bytes == 0 ? 0 : posix_fallocate(tried.descriptor(), 0, static_cast<off_t>(bytes));
  Drop(file);
  return error == EDQUOT ? ENOSPC : error;
}

int ContentCache::Keep(const std::string& key, const std::string& file) {
  const std::string path = PathOf(key);
  // After a crash of the machine a renamed file may be there without its bytes, and as long as it must be.
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat status = {};
  int error = descriptor < 0 || fdatasync(descriptor) != 0 || fstat(descriptor, &status) != 0 ? errno : 0;
  if (descriptor >= 0) close(descriptor);
  if (error == 0) error = vtdirect_cli::MakeDirectories(vtdirect_cli::DirectoryOf(path));
  if (error == 0 && (chmod(file.c_str(), 0600) != 0 || rename(file.c_str(), path.c_str()) != 0))
    error = errno;
  if (error != 0) {
    Drop(file);
    return error;
  }
  const auto size = static_cast<std::uint64_t>(status.st_size);
  // Other processes put files in too, so what is there is counted from time to time.
  if ((bytes_ += size) > limit_ || (counted_ += size) > limit_ / 4) ShrinkTo(limit_ - limit_ / 10);
  return 0;
}

void ContentCache::Drop(const std::string& file) {
  unlink(file.c_str());
}

void ContentCache::DropAll() const {
  const std::string own = std::to_string(getpid()) + "-";
  std::error_code error;
  for (auto entry = fs::directory_iterator(Parts(), error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    if (entry->path().filename().string().starts_with(own)) Drop(entry->path().string());
  }
}

void ContentCache::ShrinkTo(std::uint64_t bytes) {
  const std::lock_guard lock(shrinking_);
  const OpenFile otherProcesses(open((directory_ + "/lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600));
  if (otherProcesses.descriptor() >= 0) static_cast<void>(flock(otherProcesses.descriptor(), LOCK_EX));
  std::vector<CachedFile> files = FilesIn(Contents());
  std::uint64_t sum = SumOf(files);
  if (sum > limit_ || bytes < limit_ - limit_ / 10) {
    std::sort(files.begin(), files.end(), WasUsedBefore);
    for (const CachedFile& file : files) {
      if (sum <= bytes) break;
      if (unlink(file.path.c_str()) == 0) sum -= file.bytes;
    }
  }
  bytes_ = sum;
  counted_ = 0;
}

}  // namespace vtdirect_mount
