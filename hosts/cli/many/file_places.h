#pragma once

#include <set>
#include <string>

namespace vtdirect_cli {

/// Gives each of several things a name of its own in one directory, so that two documents of one name never become
/// one file, and the folders of one name never one folder.
class FilePlaces {
 public:
  /// The name, or with "%(2)", "%(3)" in front of its extension when it is taken: "fork%(2).lxz". No name of a
  /// server has such an end, so the names of others stay free.
  [[nodiscard]] std::string TakeForFile(const std::string& name);
  /// The same for a folder, whose name has no extension: "forks.old%(2)".
  [[nodiscard]] std::string TakeForFolder(const std::string& name);

 private:
  using Numbered = std::string (*)(const std::string& name, int number);
  [[nodiscard]] std::string Take(const std::string& name, Numbered numbered);

  std::set<std::string> taken_;
};

}  // namespace vtdirect_cli
