#include "hosts/mount/tree/kernel_pages.h"

#include <utility>

namespace vtdirect_mount {

KernelPages::Use KernelPages::NoteOpened(std::uint64_t file, const std::string& key) {
  const std::lock_guard lock(mutex_);
  auto& open = open_[file];
  open.insert(key);
  if (open.count(key) != open.size()) {
    // Who maps the file or copies it within the kernel brings in bytes all the same.
    kept_.erase(file);
    return Use::Bypass;
  }
  return std::exchange(kept_[file], key) == key ? Use::Keep : Use::Renew;
}

void KernelPages::NoteClosed(std::uint64_t file, const std::string& key) {
  const std::lock_guard lock(mutex_);
  const auto open = open_.find(file);
  if (open == open_.end()) return;
  const auto closed = open->second.find(key);
  if (closed != open->second.end()) open->second.erase(closed);
  if (open->second.empty()) open_.erase(open);
}

void KernelPages::Forget(std::uint64_t file) {
  const std::lock_guard lock(mutex_);
  kept_.erase(file);
}

void KernelPages::ForgetAll() {
  const std::lock_guard lock(mutex_);
  kept_.clear();
}

}  // namespace vtdirect_mount
