#include "hosts/mount/writing/local_files.h"

#include <fcntl.h>
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

[[nodiscard]] int FetchInto(const std::string& uid, const std::string& path) {
  const VtDirectManager::Outcome outcome;
  VtDirectManager::DownloadOptions options;
  options.compareSize = true;
  std::string result;
  if (VtDirectManager::GetFile(uid.c_str(), path.c_str(), result, options)) return 0;
  // Only a document that can't be downloaded is empty: a length of 0 also means that the server tells none.
  const int error = ErrorOf(outcome);
  return error == ENOENT && VtDirectManager::ShouldCreate(uid.c_str()) ? 0 : error;
}

}  // namespace

std::string LocalFiles::NewName() {
  return std::to_string(getpid()) + "-" + std::to_string(next_++) + "-" + std::to_string(std::time(nullptr));
}

Writable LocalFiles::Open(const std::string& name) const {
  const std::string path = unstored_.ContentOf(name);
  const int descriptor = open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600);
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
  return Open(NewName());
}

Writable LocalFiles::MakeOf(const std::string& uid) {
  const std::string name = NewName();
  // Opened after the fetch, which may put a file of its own in the place.
  const int error = FetchInto(uid, unstored_.ContentOf(name));
  if (error == 0) return Open(name);
  unlink(unstored_.ContentOf(name).c_str());
  return {error};
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
