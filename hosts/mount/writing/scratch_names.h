#pragma once

#include <string>
#include <vector>

namespace vtdirect_mount {

/// The last part of an address.
[[nodiscard]] inline std::string NameOf(const std::string& address) {
  return address.substr(address.rfind('/') + 1);
}

/// The names that editors and other programs give to files of their own beside a document: swap files, locks,
/// backups, and new contents before they are renamed. Such files stay on this machine.
class ScratchNames {
 public:
  /// The patterns of well-known programs.
  ScratchNames();

  /// One more pattern of the shell's kind, "*.tmp".
  void Add(const std::string& pattern) { patterns_.push_back({pattern, ""}); }
  /// No pattern from now on.
  void Clear() { patterns_.clear(); }

  /// Whether any program's file of that name is one.
  [[nodiscard]] bool Has(const std::string& name) const { return HasNewOf(name, ""); }
  /// Whether a file of that name is one when this program makes it. Some names look like those that users give,
  /// and count only when they come from the program that is known for them.
  /// @param program  the name of its process; empty when that is not known
  [[nodiscard]] bool HasNewOf(const std::string& name, const std::string& program) const;

 private:
  struct Pattern {
    std::string names;
    std::string programs;  // a pattern too; empty for all programs
  };

  std::vector<Pattern> patterns_;
};

}  // namespace vtdirect_mount
