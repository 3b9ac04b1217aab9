#include "hosts/mount/writing/local_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <vector>

#include "hosts/mount/requests/failure_errno.h"

namespace vtdirect_mount {
namespace {

struct Fetched {
  int error = 0;
  bool isEmpty = false;  // the document has no content
};

[[nodiscard]] Fetched FetchInto(const std::string& uid, const std::string& path) {
  const VtDirectManager::Outcome outcome;
  VtDirectManager::DownloadOptions options;
  options.compareSize = true;
  std::string result;
  if (VtDirectManager::GetFile(uid.c_str(), path.c_str(), result, options)) return {};
  // Only a document that can't be downloaded is empty: a length of 0 also means that the server tells none.
  const int error = ErrorOf(outcome);
  if (error == ENOENT && VtDirectManager::ShouldCreate(uid.c_str())) return {.isEmpty = true};
  return {.error = error};
}

[[nodiscard]] bool HasItsName(const LocalFile& file) {
  struct stat opened = {};
  struct stat named = {};
  return fstat(file.file().descriptor(), &opened) == 0 && stat(file.path().c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

}  // namespace

std::string LocalFiles::NewName() {
  return std::to_string(getpid()) + "-" + std::to_string(next_++) + "-" + std::to_string(std::time(nullptr));
}

Writable LocalFiles::Open(const std::string& name, int flags) const {
  const std::string path = unstored_.ContentOf(name);
  const int descriptor = open(path.c_str(), flags | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (descriptor < 0) {
    const int fault = errno;
    unlink(path.c_str());
    return {fault};
  }
  Writable made{0, std::make_shared<LocalFile>(name, path, descriptor)};
  // Nobody else knows the name yet.
  static_cast<void>(made.file->Claim());
  return made;
}

Writable LocalFiles::MakeEmpty() {
  return Open(NewName(), O_CREAT);
}

Writable LocalFiles::MakeOf(const std::string& uid) {
  const std::string name = NewName();
  // Another mount may begin during the fetch, and clears away what nobody has.
  Writable made = Open(name, O_CREAT);
  if (made.file == nullptr) return made;
  const Fetched fetched = FetchInto(uid, made.file->path());
  if (fetched.error != 0) return {fetched.error};
  if (HasItsName(*made.file)) return made;
  // The fetch may have put a file of its own in the place. What is not there any more is not empty.
  made.file->KeepContent();
  made = Open(name, fetched.isEmpty ? O_CREAT : 0);
  return made.error == ENOENT ? Writable{EIO} : made;
}

bool HaveSameBytes(const LocalFile& one, const LocalFile& other) {
  std::vector<char> bytes(65536);
  std::vector<char> others(bytes.size());
  off_t offset = 0;
  ssize_t count = 0;
  while ((count = pread(one.file().descriptor(), bytes.data(), bytes.size(), offset)) > 0) {
    const auto length = static_cast<std::size_t>(count);
    if (pread(other.file().descriptor(), others.data(), length, offset) != count) return false;
    if (std::memcmp(bytes.data(), others.data(), length) != 0) return false;
    offset += count;
  }
  return count == 0 && one.size() == other.size();
}

bool CopyBytes(const LocalFile& from, const LocalFile& to) {
  char buffer[65536];
  off_t offset = 0;
  ssize_t count = 0;
  while ((count = pread(from.file().descriptor(), buffer, sizeof buffer, offset)) > 0) {
    if (pwrite(to.file().descriptor(), buffer, static_cast<std::size_t>(count), offset) != count)
      return false;
    offset += count;
  }
  return count == 0;
}

}  // namespace vtdirect_mount
