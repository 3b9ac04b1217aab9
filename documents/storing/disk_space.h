#pragma once

#include <cstdint>
#include <cstdio>

namespace lxservices::cms_interface::vantry {

/// Asks the file system in one go for the space of the `bytes` bytes that are going to be appended, as far as
/// the platform can (du::FileSystem::ReserveSpace, which it need not have). A hint: the file's length and
/// position stay as they are, and where the space can't be had nothing changes.
/// @param file    open for writing, with nothing in its buffer
/// @param length  the bytes that it holds
void ReserveDiskSpace(std::FILE* file, std::uint64_t length, std::uint64_t bytes);

}  // namespace lxservices::cms_interface::vantry
