#include "hosts/cli/files/durable_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace vtdirect_cli {
namespace {

// As many as the kernel follows.
constexpr int mostLinks = 40;

// The group goes before the permissions, since giving one away takes permissions along. A user may give a
// file to groups of their own alone; what can't be given stays the user's.
void TakeOver(int descriptor, const struct stat& before) {
  static_cast<void>(!fchown(descriptor, static_cast<uid_t>(-1), before.st_gid));
}

// Asked once: the mask can't be read without being changed, which a second thread would notice.
[[nodiscard]] mode_t PermissionsOfNewFile() {
  static const mode_t mask = [] {
    const mode_t current = umask(0);
    umask(current);
    return current;
  }();
  return 0666U & ~mask;
}

[[nodiscard]] int PermitAsTarget(int descriptor, const std::string& target) {
  struct stat before = {};
  const bool replaces = stat(target.c_str(), &before) == 0;
  if (replaces) TakeOver(descriptor, before);
  return fchmod(descriptor, replaces ? before.st_mode & 0777U : PermissionsOfNewFile()) == 0 ? 0 : errno;
}

[[nodiscard]] int SyncAndPermit(const std::string& path, const std::string& target,
                                DurableFile::Permissions permissions) {
  const int descriptor = open(path.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) return errno;
  int error = permissions == DurableFile::Permissions::OfTarget ? PermitAsTarget(descriptor, target) : 0;
  if (error == 0 && fsync(descriptor) != 0) error = errno;
  if (close(descriptor) != 0 && error == 0) error = errno;
  return error;
}

[[nodiscard]] bool IsSameFile(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino && one.st_size == other.st_size &&
         one.st_mtim.tv_sec == other.st_mtim.tv_sec && one.st_mtim.tv_nsec == other.st_mtim.tv_nsec;
}

[[nodiscard]] int Rename(const std::string& from, const std::string& to) {
  return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

[[nodiscard]] int RenameToNewName(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // A filesystem without that kind of rename: a hard link refuses an existing name too.
  if (link(from.c_str(), to.c_str()) != 0) return errno;
  return unlink(from.c_str()) == 0 ? 0 : errno;
}

[[nodiscard]] int RenameOver(const std::string& from, const std::string& to, const struct stat& expected) {
  struct stat now = {};
  if (stat(to.c_str(), &now) != 0 || !IsSameFile(now, expected)) return ESTALE;
  return Rename(from, to);
}

[[nodiscard]] int WriteFile(const std::string& path, std::string_view text) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) return errno;
  const int error = WriteAll(descriptor, text);
  return close(descriptor) != 0 && error == 0 ? errno : error;
}

}  // namespace

std::string DirectoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string BehindLinks(const std::string& path) {
  std::filesystem::path place(path);
  std::error_code error;
  for (int links = 0; links < mostLinks && std::filesystem::is_symlink(place, error); ++links) {
    const auto target = std::filesystem::read_symlink(place, error);
    if (error) return path;
    place = target.is_absolute() ? target : place.parent_path() / target;
  }
  return place.string();
}

int MakeDirectories(const std::string& directory) {
  if (mkdir(directory.c_str(), 0700) == 0 || errno == EEXIST) return 0;
  if (errno != ENOENT) return errno;
  const std::string parent = DirectoryOf(directory);
  if (parent == "." || parent == directory) return ENOENT;
  if (const int error = MakeDirectories(parent); error != 0) return error;
  return mkdir(directory.c_str(), 0700) == 0 || errno == EEXIST ? 0 : errno;
}

int WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

DurableFile::DurableFile(std::string target) : DurableFile(target, DirectoryOf(target)) {}

DurableFile::DurableFile(std::string target, const std::string& directory) : target_(std::move(target)) {
  std::string pattern = directory + "/.vtdirect-XXXXXX";
  const InterruptionHold hold;
  const int descriptor = mkostemp(pattern.data(), O_CLOEXEC);
  if (descriptor < 0) {
    error_ = errno;
    return;
  }
  close(descriptor);
  path_ = pattern;
  removal_.emplace([file = path_] { unlink(file.c_str()); });
}

int DurableFile::Commit(Permissions permissions, Condition condition,
                        const std::optional<struct stat>& before) {
  if (error_ != 0) return error_;
  if (const int error = SyncAndPermit(path_, target_, permissions); error != 0) return error;
  {
    const InterruptionHold hold;
    int error = 0;
    if (condition == Condition::Anything) {
      error = Rename(path_, target_);
    } else {
      error = before ? RenameOver(path_, target_, *before) : RenameToNewName(path_, target_);
    }
    if (error != 0) return error;
    removal_->Dismiss();
  }
  SyncDirectory(DirectoryOf(target_));
  return 0;
}

void SyncDirectory(const std::string& directory) {
  const int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  static_cast<void>(fsync(descriptor));
  close(descriptor);
}

int ReplaceDurably(const std::string& path, std::string_view text) {
  const InterruptionHold hold;
  DurableFile file(BehindLinks(path));
  if (file.error() != 0) return file.error();
  const int error = WriteFile(file.path(), text);
  return error != 0 ? error : file.Commit(DurableFile::Permissions::OfOwner);
}

}  // namespace vtdirect_cli
