#include "platform_default/descriptor.h"

#include <unistd.h>

#include <cerrno>

namespace vtdirect::platform {

bool WriteAll(int descriptor, const std::uint8_t* data, std::size_t count) {
  while (count > 0) {
    const ssize_t written = ::write(descriptor, data, count);
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    data += written;
    count -= static_cast<std::size_t>(written);
  }
  return true;
}

std::ptrdiff_t ReadSome(int descriptor, std::uint8_t* buffer, std::size_t capacity) {
  while (true) {
    const ssize_t count = ::read(descriptor, buffer, capacity);
    if (count >= 0 || errno != EINTR) return count;
  }
}

bool CloseDescriptor(int* descriptor) {
  if (*descriptor < 0) return true;
  const int closing = *descriptor;
  *descriptor = -1;
  // Linux has released the number even when close() was interrupted; a second close could hit another file.
  return ::close(closing) == 0 || errno == EINTR;
}

}  // namespace vtdirect::platform
