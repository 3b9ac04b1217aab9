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
  void Add(const std::string& pattern) { patterns_.push_back(pattern); }
  /// No pattern from now on.
  void Clear() { patterns_.clear(); }

  [[nodiscard]] bool Has(const std::string& name) const;

 private:
  std::vector<std::string> patterns_;
};

}  // namespace vtdirect_mount
