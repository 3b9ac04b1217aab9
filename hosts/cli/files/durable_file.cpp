#include "hosts/cli/files/durable_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "hosts/cli/interruption.h"

namespace vtdirect_cli {
namespace {

// As many as the kernel follows.
constexpr int kMostLinks = 40;

}  // namespace

std::string DirectoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string BehindLinks(const std::string& path) {
  std::filesystem::path place(path);
  std::error_code error;
  for (int links = 0; links < kMostLinks && std::filesystem::is_symlink(place, error); ++links) {
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

void SyncDirectory(const std::string& directory) {
  const int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  static_cast<void>(fsync(descriptor));
  close(descriptor);
}

int ReplaceDurably(const std::string& path, std::string_view text) {
  const std::string target = BehindLinks(path);
  std::string pattern = target + "-XXXXXX";
  const InterruptionHold hold;
  const int descriptor = mkostemp(pattern.data(), O_CLOEXEC);
  if (descriptor < 0) return errno;
  int error = WriteAll(descriptor, text);
  if (error == 0 && fsync(descriptor) != 0) error = errno;
  if (close(descriptor) != 0 && error == 0) error = errno;
  if (error == 0 && rename(pattern.c_str(), target.c_str()) != 0) error = errno;
  if (error != 0) {
    unlink(pattern.c_str());
    return error;
  }
  SyncDirectory(DirectoryOf(target));
  return 0;
}

}  // namespace vtdirect_cli
