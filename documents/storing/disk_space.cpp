#include "documents/storing/disk_space.h"

#include <fcntl.h>
#include <unistd.h>

#include <tuple>

namespace lxservices::cms_interface::vantry {

// Not posix_fallocate: where the file system can't reserve, that one writes into each block instead, and a
// copy that then breaks off would leave a file of the full length.
void ReserveDiskSpace(std::FILE* file, std::uint64_t length, std::uint64_t bytes) {
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

}  // namespace lxservices::cms_interface::vantry
