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
  [[nodiscard]] std::string Take(const std::string& name, bool isFolder);

 private:
  std::set<std::string> taken_;
};

}  // namespace vtdirect_cli
