#include "hosts/cli/work_folder/local_files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <filesystem>

#include "hosts/cli/files/sha256.h"

namespace vtdirect_cli {
namespace {

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;
// Of the disks in use: that of FAT.
constexpr std::int64_t longestTick = 2 * nanosecondsPerSecond;

[[nodiscard]] bool IsWorkFolder(const std::filesystem::path& directory) {
  std::error_code error;
  return std::filesystem::exists(directory / ".vtdirect" / "files.db", error);
}

}  // namespace

std::int64_t TimeNow() {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  return now.tv_sec * nanosecondsPerSecond + now.tv_nsec;
}

// A time in the future is that of a disk whose clock goes ahead of ours.
std::int64_t TimeToKeep(std::int64_t time, std::int64_t seen) {
  return time < seen - longestTick ? time : unsureTime;
}

std::int64_t StampFile(const std::string& path) {
  const std::int64_t now = TimeNow();
  const timespec exact{now / nanosecondsPerSecond, now % nanosecondsPerSecond};
  const timespec times[] = {exact, exact};
  if (utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0) return unsureTime;
  return FactsOf(path).time == now ? now : unsureTime;
}

LocalFacts FactsOf(const std::string& path) {
  const std::int64_t seen = TimeNow();
  struct stat facts = {};
  if (lstat(path.c_str(), &facts) != 0) return {};
  LocalFacts local;
  local.seen = seen;
  local.kind = S_ISREG(facts.st_mode) ? LocalFacts::Kind::File : LocalFacts::Kind::Other;
  local.size = static_cast<std::uint64_t>(facts.st_size);
  local.time = facts.st_mtim.tv_sec * nanosecondsPerSecond + facts.st_mtim.tv_nsec;
  return local;
}

bool IsReachedWithoutLink(const std::string& root, const std::string& path) {
  struct stat facts = {};
  for (std::size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    if (lstat((root + "/" + path.substr(0, slash)).c_str(), &facts) != 0 || !S_ISDIR(facts.st_mode))
      return false;
  }
  return FactsOf(root + "/" + path).kind == LocalFacts::Kind::File;
}

bool HasBytesOf(const std::string& path, const LocalFacts& facts, const FolderFile& file) {
  return facts.kind == LocalFacts::Kind::File && facts.size == file.size && Sha256OfFile(path) == file.sha256;
}

LocalState StateOf(FileStore& store, const std::string& path, const FolderFile& file) {
  const LocalFacts facts = FactsOf(path);
  if (facts.kind == LocalFacts::Kind::Nothing) return LocalState::Missing;
  const bool isFile = facts.kind == LocalFacts::Kind::File;
  if (isFile && facts.size == file.size && facts.time == file.time) return LocalState::Same;
  if (!HasBytesOf(path, facts, file)) return LocalState::Modified;
  // A copy of a work folder has other times. What can't be kept costs only another look.
  const std::int64_t time = TimeToKeep(facts.time, facts.seen);
  if (time != unsureTime) static_cast<void>(store.KeepTime(file, time));
  return LocalState::Same;
}

LocalState StateByBytes(const std::string& path, const FolderFile& file) {
  const LocalFacts facts = FactsOf(path);
  if (facts.kind == LocalFacts::Kind::Nothing) return LocalState::Missing;
  return HasBytesOf(path, facts, file) ? LocalState::Same : LocalState::Modified;
}

std::vector<std::string> FilesBelow(const std::string& root) {
  std::vector<std::string> files;
  std::error_code error;
  const auto options = std::filesystem::directory_options::skip_permission_denied;
  std::filesystem::recursive_directory_iterator entry(root, options, error);
  for (; !error && entry != std::filesystem::recursive_directory_iterator(); entry.increment(error)) {
    const bool isDirectory = entry->symlink_status(error).type() == std::filesystem::file_type::directory;
    if (!isDirectory) {
      files.push_back(entry->path().string().substr(root.size() + 1));
    } else if (entry->path() == root + "/.vtdirect" || IsWorkFolder(entry->path())) {
      entry.disable_recursion_pending();
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

int MakeFoldersFor(const std::string& root, const std::string& path) {
  for (std::size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    const std::string directory = root + "/" + path.substr(0, slash);
    if (mkdir(directory.c_str(), 0777) == 0) continue;
    if (errno != EEXIST) return errno;
    struct stat facts = {};
    if (lstat(directory.c_str(), &facts) != 0) return errno;
    if (!S_ISDIR(facts.st_mode)) return ENOTDIR;
  }
  return 0;
}

}  // namespace vtdirect_cli
