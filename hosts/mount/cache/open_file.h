#pragma once

#include <unistd.h>

#include <utility>

namespace vtdirect_mount {

/// An open file, closed when nobody has it any more.
class OpenFile {
 public:
  explicit OpenFile(int descriptor) : descriptor_(descriptor) {}
  OpenFile(OpenFile&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  OpenFile& operator=(OpenFile&&) = delete;
  ~OpenFile() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  [[nodiscard]] int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace vtdirect_mount
