#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "hosts/cli/translation/xliff_check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::size_t position = 0;
  const auto read = [&](char* buffer, std::size_t room) {
    const std::size_t count = std::min(room, size - position);
    if (count > 0) std::memcpy(buffer, data + position, count);
    position += count;
    return static_cast<std::ptrdiff_t>(count);
  };
  (void)vtdirect_cli::CheckXliff(read, "en-US");
  return 0;
}
