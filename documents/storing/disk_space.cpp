#include "documents/storing/disk_space.h"

#include "platform/files.h"

namespace du::FileSystem {

// Weak, so that the library links with a platform that has no such operation; its address is then null.
void ReserveSpace(std::FILE* file, std::uint64_t length, std::uint64_t bytes) __attribute__((weak));

}  // namespace du::FileSystem

namespace lxservices::cms_interface::vantry {

void ReserveDiskSpace(std::FILE* file, std::uint64_t length, std::uint64_t bytes) {
  if (du::FileSystem::ReserveSpace != nullptr) du::FileSystem::ReserveSpace(file, length, bytes);
}

}  // namespace lxservices::cms_interface::vantry
