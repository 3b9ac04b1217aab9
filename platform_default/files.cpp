#include "platform/files.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

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

}  // namespace du::FileSystem
