#pragma once

#include <string>

#include "platform/trace.h"

namespace lxservices::cms_interface::vantry {

/// Holds the path of something temporary and removes it when it goes. A failed removal is traced and reported
/// to no one. Makes no request.
class ScopedTempPath {
 public:
  /// @param path  an empty path holds nothing
  explicit ScopedTempPath(std::string path, bool isDirectory = false);
  ~ScopedTempPath();
  ScopedTempPath(const ScopedTempPath&) = delete;
  ScopedTempPath& operator=(const ScopedTempPath&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
  bool isDirectory_;
};

/// Removes a temporary file, or a directory with its content. A failure is traced by the given tracer.
void RemoveTempPath(const std::string& path, bool isDirectory, const dp::LXTracer& tracer);

/// Creates an empty temporary file in the directory for temporary files.
/// @return its path, or the empty text when it cannot be created
[[nodiscard]] std::string MakeTempFile(const char* stem, const char* extension);

}  // namespace lxservices::cms_interface::vantry
