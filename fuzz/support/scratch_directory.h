#pragma once

#include <string>
#include <string_view>

namespace vtdirect_fuzz {

/// A directory of this process, below the one for temporary files, with two in it: one is TMPDIR from then
/// on, so that what a reader leaves behind is seen, and one is for a target's own files. It goes when the
/// program ends; a program that crashes leaves it to whoever gave it its TMPDIR.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  /// The path of a file of the target's own.
  [[nodiscard]] std::string File(const std::string& name) const { return own_ + "/" + name; }

  /// Ends the program, with their names on standard error, when there are temporary files.
  void RequireNothingLeft() const;

 private:
  std::string path_;
  std::string own_;
  std::string temporary_;
};

/// The one of the process, made by the first call.
[[nodiscard]] const ScratchDirectory& Scratch();

/// Writes a file of the target's own. Ends the program when that fails.
void WriteScratchFile(const std::string& path, std::string_view content);

}  // namespace vtdirect_fuzz
