#include <string_view>

#include "platform/files.h"

namespace du {
namespace {

std::list<std::string> SplitDirectories(std::string_view path) {
  std::list<std::string> components;
  while (!path.empty()) {
    const std::size_t slash = path.find('/');
    if (slash != 0) components.emplace_back(path.substr(0, slash));
    if (slash == std::string_view::npos) break;
    path.remove_prefix(slash + 1);
  }
  return components;
}

}  // namespace

FileSpec::FileSpec() = default;

FileSpec::FileSpec(const char* path) : FileSpec(std::string(path == nullptr ? "" : path)) {}

FileSpec::FileSpec(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::size_t file = slash == std::string::npos ? 0 : slash + 1;
  SetDirPath(path.substr(0, file));
  file_ = path.substr(file);
}

void FileSpec::SetLocation(const std::string& directory) {
  SetDirPath(directory);
}

void FileSpec::SetFile(const std::string& name) {
  file_ = name;
}

void FileSpec::SetDirPath(const std::string& path) {
  absolute_ = !path.empty() && path.front() == '/';
  directories_ = SplitDirectories(path);
}

std::size_t FileSpec::DirCount() const {
  return directories_.size();
}

std::list<std::string>::const_iterator FileSpec::DirBegin() const {
  return directories_.begin();
}

std::list<std::string>::const_iterator FileSpec::DirEnd() const {
  return directories_.end();
}

bool FileSpec::GetFile(std::string* name) const {
  if (file_.empty()) return false;
  *name = file_;
  return true;
}

bool FileSpec::GetFileSpec(std::string* path) const {
  std::string whole = absolute_ ? "/" : "";
  for (const std::string& directory : directories_) whole += directory + "/";
  whole += file_;
  if (whole.empty()) return false;
  *path = std::move(whole);
  return true;
}

}  // namespace du
