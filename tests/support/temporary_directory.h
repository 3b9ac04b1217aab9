#pragma once

#include <string>
#include <vector>

namespace vtdirect_test {

/// A directory of the test's own that is also the process's directory for temporary files (TMPDIR), so that a
/// test sees every temporary file that was left behind.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }
  /// The path of a file in it.
  [[nodiscard]] std::string File(const std::string& name) const { return path_ + "/" + name; }
  /// Names of all that is in it now, sorted, sub-directories included by name.
  [[nodiscard]] std::vector<std::string> Entries() const;

 private:
  std::string path_;
};

/// The content of a file; fails the test when it cannot be read.
std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& content);

}  // namespace vtdirect_test
