#include "hosts/mount/writing/local_file.h"

#include <sys/stat.h>

namespace vtdirect_mount {

LocalFile::~LocalFile() {
  if (!keeps_) unlink(path_.c_str());
}

std::uint64_t LocalFile::size() const {
  struct stat status = {};
  return fstat(file_.descriptor(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace vtdirect_mount
