#pragma once

#include <cstddef>
#include <cstdint>

namespace vtdirect::platform {

/// What is never taken of a file system for temporary files, in bytes: others have to be able to go on.
inline constexpr std::uint64_t leftOfFileSystem = std::uint64_t{64} << 20;

/// The longest temporary file of an answer from now on, in bytes. For the settings of the transport, which
/// may not be there. Any thread.
void SetLargestTemporaryFile(std::uint64_t bytes);

/// True when a file system with so many bytes to be had can give `count` of them. Pure.
[[nodiscard]] constexpr bool LeavesEnough(std::uint64_t available, std::uint64_t count) {
  return available >= leftOfFileSystem && available - leftOfFileSystem >= count;
}

/// Whether the temporary file of an answer, of `length` bytes, may grow by `count`. A trace line tells why it
/// may not.
[[nodiscard]] bool MayGrow(int descriptor, std::uint64_t length, std::size_t count);

}  // namespace vtdirect::platform
