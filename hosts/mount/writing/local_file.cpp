#include "hosts/mount/writing/local_file.h"

#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

namespace vtdirect_mount {

LocalFile::~LocalFile() {
  if (!keeps_) unlink(path_.c_str());
}

// A file system without such locks has every file free: then two mounts may store the same bytes twice.
bool LocalFile::Claim() const {
  return flock(file_.descriptor(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

Facts LocalFile::facts() const {
  struct stat status = {};
  if (fstat(file_.descriptor(), &status) != 0) return {};
  return {static_cast<std::uint64_t>(status.st_size), status.st_mtim.tv_sec};
}

std::uint64_t LocalFile::size() const {
  return facts().size;
}

}  // namespace vtdirect_mount
