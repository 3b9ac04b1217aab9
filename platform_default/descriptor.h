#pragma once

#include <cstddef>
#include <cstdint>

/// What the platform's files have in common: calls that a signal may interrupt, done to the end.
namespace vtdirect::platform {

/// Writes all bytes. False on the first error, with `errno` set; part of the bytes may then be written.
[[nodiscard]] bool WriteAll(int descriptor, const std::uint8_t* data, std::size_t count);

/// Reads up to `capacity` bytes. Gives their number, 0 at the end of the file, -1 on an error with `errno`
/// set.
[[nodiscard]] std::ptrdiff_t ReadSome(int descriptor, std::uint8_t* buffer, std::size_t capacity);

/// Closes a descriptor and makes it -1; one that is -1 already is left alone. False when the system reports
/// that bytes written earlier did not reach the disk.
bool CloseDescriptor(int* descriptor);

}  // namespace vtdirect::platform
