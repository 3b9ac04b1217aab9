#include "platform/files.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <tuple>

#include "platform/environment.h"

namespace du::FileSystem {
namespace {

void DropClosingSlashes(std::string* path) {
  while (path->size() > 1 && path->back() == '/') path->pop_back();
}

/// A piece of a file name that cannot lead out of the directory.
bool IsNamePiece(const char* text) {
  return text != nullptr && std::string(text).find('/') == std::string::npos;
}

}  // namespace

std::string GetTempDir(bool) {
  std::string directory = dp::Environment::Get("TMPDIR");
  if (directory.empty()) return "/tmp";
  DropClosingSlashes(&directory);
  return directory;
}

std::string MkTempFile(const char* directory, const char* stem, const char* extension) {
  if (!IsNamePiece(stem) || !IsNamePiece(extension)) return {};
  const std::string suffix = *extension == '\0' ? std::string() : std::string(".") + extension;
  const std::string where = directory == nullptr ? GetTempDir(true) : std::string(directory);
  std::string path = where + "/" + stem + "-XXXXXX" + suffix;
  // Created exclusively and with mode 0600: nobody can have placed a link there or read what follows.
  const int descriptor = ::mkostemps(path.data(), static_cast<int>(suffix.size()), O_CLOEXEC);
  if (descriptor < 0) return {};
  ::close(descriptor);
  return path;
}

std::string MkTempDir(const char* stem) {
  if (!IsNamePiece(stem)) return {};
  std::string path = GetTempDir(true) + "/" + stem + "-XXXXXX";
  return ::mkdtemp(path.data()) == nullptr ? std::string() : path;
}

int Unlink(const char* path, bool) {
  if (path == nullptr) {
    errno = EFAULT;
    return -1;
  }
  return ::unlink(path);
}

bool DeletePath(const std::string& path, bool) {
  std::string directory = path;
  // With a closing "/" a link to a directory would count as that directory.
  DropClosingSlashes(&directory);
  struct stat status {};
  if (::lstat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return false;
  std::error_code error;
  std::filesystem::remove_all(directory, error);
  return !error;
}

std::FILE* lxfopen(const char* path, const char* mode) {
  if (path == nullptr || *path == '\0' || mode == nullptr) return nullptr;
  return std::fopen(path, mode);
}

// Not posix_fallocate: where the file system can't reserve, that one writes into each block instead, and a
// copy that then breaks off would leave a file of the full length.
void ReserveSpace(std::FILE* file, std::uint64_t length, std::uint64_t bytes) {
#ifdef FALLOC_FL_KEEP_SIZE
  const int descriptor = ::fileno(file);
  const auto end = static_cast<off_t>(length);
  if (::fallocate(descriptor, FALLOC_FL_KEEP_SIZE, end, static_cast<off_t>(bytes)) == 0) return;
  // A disk or a user's share of it that has less gives what there is, and nothing would be left for others.
  std::ignore = ::ftruncate(descriptor, end);
#else
  static_cast<void>(file), static_cast<void>(length), static_cast<void>(bytes);
#endif
}

}  // namespace du::FileSystem
