#include "hosts/cli/files/target_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] Failure LocalFailure(const std::string& path, int error) {
  return {ExitCode::LocalFile, "cannot write " + Printable(path) + ": " + std::strerror(error)};
}

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

[[nodiscard]] int SyncAndPermit(const std::string& path, const std::string& target) {
  const int descriptor = open(path.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) return errno;
  struct stat before = {};
  const bool replaces = stat(target.c_str(), &before) == 0;
  if (replaces) TakeOver(descriptor, before);
  int error = fchmod(descriptor, replaces ? before.st_mode & 0777U : PermissionsOfNewFile()) == 0 ? 0 : errno;
  if (error == 0 && fsync(descriptor) != 0) error = errno;
  if (close(descriptor) != 0 && error == 0) error = errno;
  return error;
}

[[nodiscard]] bool IsSameFile(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino && one.st_size == other.st_size &&
         one.st_mtim.tv_sec == other.st_mtim.tv_sec && one.st_mtim.tv_nsec == other.st_mtim.tv_nsec;
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
  return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

[[nodiscard]] int CopyBetween(int from, int to) {
  std::vector<char> buffer(std::size_t{1} << 16U);
  for (;;) {
    const ssize_t count = read(from, buffer.data(), buffer.size());
    if (count == 0) return 0;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (Interrupted()) return EINTR;
    const int error = WriteAll(to, {buffer.data(), static_cast<std::size_t>(count)});
    if (error != 0) return error;
  }
}

}  // namespace

std::string SafeFileName(const std::string& name) {
  std::string out;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto byte = static_cast<unsigned char>(name[i]);
    const bool dotInFront = i == 0 && byte == '.';
    if (byte >= 0x20 && byte != 0x7F && byte != '/' && !dotInFront) {
      out += name[i];
      continue;
    }
    char escaped[4];
    std::snprintf(escaped, sizeof escaped, "%%%2.2x", static_cast<unsigned>(byte));
    out += escaped;
  }
  return out;
}

bool NeedsFileName(const std::string& option) {
  if (option.empty() || option.ends_with('/')) return true;
  struct stat facts = {};
  return option != "-" && stat(option.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

std::optional<Failure> SettleTarget(const std::string& option, const std::string& name, bool noClobber,
                                    Target& target) {
  if (option == "-") {
    target = {Target::Kind::StandardOutput, {}};
    return std::nullopt;
  }
  std::string path = option;
  if (option.empty()) {
    path = name;
  } else if (NeedsFileName(option)) {
    path = option + (option.ends_with('/') ? "" : "/") + name;
  }
  path = BehindLinks(path);

  struct stat facts = {};
  if (stat(path.c_str(), &facts) != 0) {
    // A name that is too long would show only when the whole content is there.
    if (errno != ENOENT) return LocalFailure(path, errno);
    target = {Target::Kind::File, path};
    return std::nullopt;
  }
  if (S_ISDIR(facts.st_mode)) return LocalFailure(path, EISDIR);
  if (S_ISREG(facts.st_mode)) {
    if (noClobber) return LocalFailure(path, EEXIST);
    target = {Target::Kind::File, path, facts};
    return std::nullopt;
  }
  // A device or a pipe is written into; replacing "/dev/null" by a file would be a bad joke.
  target = {Target::Kind::Device, path};
  return std::nullopt;
}

std::unique_ptr<PendingFile> PendingFile::Create(const std::string& target, int* error) {
  return CreateIn(DirectoryOf(target), target, error);
}

std::unique_ptr<PendingFile> PendingFile::CreateIn(const std::string& directory, const std::string& target,
                                                   int* error) {
  std::string pattern = directory + "/.vtdirect-XXXXXX";
  const InterruptionHold hold;
  const int descriptor = mkostemp(pattern.data(), O_CLOEXEC);
  if (descriptor < 0) {
    *error = errno;
    return nullptr;
  }
  close(descriptor);
  return std::unique_ptr<PendingFile>(new PendingFile(pattern, target));
}

PendingFile::PendingFile(std::string path, std::string target)
    : path_(std::move(path)),
      target_(std::move(target)),
      removal_([file = path_] { unlink(file.c_str()); }) {}

int PendingFile::Commit(const std::optional<struct stat>* expected) {
  if (const int error = SyncAndPermit(path_, target_); error != 0) return error;
  {
    const InterruptionHold hold;
    int error = 0;
    if (expected == nullptr) {
      if (rename(path_.c_str(), target_.c_str()) != 0) error = errno;
    } else {
      error = *expected ? RenameOver(path_, target_, **expected) : RenameToNewName(path_, target_);
    }
    if (error != 0) return error;
    removal_.Dismiss();
  }
  SyncDirectory(DirectoryOf(target_));
  return 0;
}

int CopyToDescriptor(const std::string& path, int descriptor) {
  const int from = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (from < 0) return errno;
  const int error = CopyBetween(from, descriptor);
  close(from);
  return error;
}

int ProbeWritable(const std::string& path) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  if (descriptor < 0) return errno;
  struct stat facts = {};
  int error = fstat(descriptor, &facts) == 0 ? 0 : errno;
  const std::vector<char> block(std::size_t{1} << 16U, '\0');
  for (std::size_t written = 0; error == 0 && written < block.size();) {
    const ssize_t count = write(descriptor, block.data() + written, block.size() - written);
    if (count < 0) error = errno;
    if (count > 0) written += static_cast<std::size_t>(count);
  }
  if (error == 0 && fsync(descriptor) != 0) error = errno;
  static_cast<void>(ftruncate(descriptor, facts.st_size));
  close(descriptor);
  return error;
}

}  // namespace vtdirect_cli
