#pragma once

#include <cstdint>
#include <cstdio>

namespace lxservices::cms_interface::vantry {

/// Asks the file system in one go for the space of the `bytes` bytes that are going to be appended; without
/// that it looks for space again with each piece that is written. A hint: the file's length and position stay
/// as they are, and where the space can't be had, as on a disk that hasn't enough, on a pipe or on a file
/// system that knows nothing of it, nothing changes.
/// @param file    open for writing, with nothing in its buffer
/// @param length  the bytes that it holds
void ReserveDiskSpace(std::FILE* file, std::uint64_t length, std::uint64_t bytes);

}  // namespace lxservices::cms_interface::vantry
