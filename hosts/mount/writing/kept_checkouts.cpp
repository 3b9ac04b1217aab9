#include "hosts/mount/writing/kept_checkouts.h"

#include <sys/stat.h>

#include <utility>

#include "hosts/cli/checkouts/checkout_book.h"

namespace vtdirect_mount {

// A change within one tick of the file system's clock makes another file of the same time.
void KeptCheckouts::ReadIfChanged() {
  const vtdirect_cli::CheckoutBook book;
  struct stat status = {};
  static_cast<void>(stat(book.path().c_str(), &status));
  const bool isAsBefore = status.st_ino == file_ && status.st_mtim.tv_sec == changed_.tv_sec &&
                          status.st_mtim.tv_nsec == changed_.tv_nsec;
  if (isAsBefore) return;
  checkouts_ = book.Read().checkouts;
  haveChanged_ = true;
  changed_ = status.st_mtim;
  file_ = status.st_ino;
}

bool KeptCheckouts::HaveChanged() {
  const std::lock_guard lock(mutex_);
  ReadIfChanged();
  return std::exchange(haveChanged_, false);
}

std::string KeptCheckouts::WorkingCopyOf(const std::string& uid) {
  const std::lock_guard lock(mutex_);
  ReadIfChanged();
  for (const auto& kept : checkouts_) {
    if (vtdirect_cli::LeadsTo(kept, uid)) return kept.uid;
  }
  return {};
}

}  // namespace vtdirect_mount
