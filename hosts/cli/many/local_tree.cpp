#include "hosts/cli/many/local_tree.h"

#include <algorithm>
#include <filesystem>

#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

namespace fs = std::filesystem;

// One directory after the other, so that no depth of theirs is a depth of calls.
class Walk {
 public:
  explicit Walk(std::string directory) : directory_(std::move(directory)) {}

  [[nodiscard]] LocalTree Run() {
    waiting_.emplace_back();
    while (!waiting_.empty()) {
      const std::string folder = std::move(waiting_.back());
      waiting_.pop_back();
      Read(folder);
    }
    std::sort(tree_.files.begin(), tree_.files.end());
    std::sort(tree_.leftOut.begin(), tree_.leftOut.end(),
              [](const LeftOut& one, const LeftOut& other) { return one.path < other.path; });
    return std::move(tree_);
  }

 private:
  void Read(const std::string& folder) {
    const std::string path = PathBelow(directory_, folder);
    std::error_code error;
    fs::directory_iterator entry(path, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) Take(folder, *entry);
    if (!error) return;
    tree_.failures.push_back({ExitCode::LocalFile, "cannot read the directory " + Printable(path) + ": " +
                                                       error.message() + "; what is in it may not be sent"});
  }

  void Take(const std::string& folder, const fs::directory_entry& entry) {
    const std::string name = entry.path().filename().string();
    const std::string path = folder + name;
    std::error_code error;
    const fs::file_type type = entry.symlink_status(error).type();
    if (name.starts_with('.')) {
      tree_.leftOut.push_back({path, "it is hidden"});
    } else if (type == fs::file_type::symlink) {
      tree_.leftOut.push_back({path, "it is a symbolic link"});
    } else if (type == fs::file_type::directory) {
      waiting_.push_back(path + "/");
    } else if (type == fs::file_type::regular) {
      Add(path);
    } else {
      tree_.leftOut.push_back({path, "it is no regular file"});
    }
  }

  void Add(const std::string& path) {
    tree_.files.push_back(path);
    std::string folder = FolderPartOf(path);
    while (tree_.folders.insert(folder).second && !folder.empty()) {
      folder = FolderPartOf(folder.substr(0, folder.size() - 1));
    }
  }

  std::string directory_;
  std::vector<std::string> waiting_;
  LocalTree tree_;
};

}  // namespace

LocalTree ReadLocalTree(const std::string& directory) {
  return Walk(directory).Run();
}

std::string PathBelow(const std::string& directory, const std::string& path) {
  return directory + (directory.ends_with('/') || path.empty() ? "" : "/") + path;
}

std::string FolderPartOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

}  // namespace vtdirect_cli
