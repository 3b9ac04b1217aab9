#include "hosts/mount/writing/kept_checkouts.h"

#include <sys/stat.h>

#include "hosts/cli/checkouts/checkout_book.h"

namespace vtdirect_mount {

std::string KeptCheckouts::WorkingCopyOf(const std::string& uid) {
  const vtdirect_cli::CheckoutBook book;
  struct stat status = {};
  const bool isThere = stat(book.path().c_str(), &status) == 0;
  const std::lock_guard lock(mutex_);
  if (!isThere) {
    checkouts_.clear();
    changed_ = {};
  } else if (status.st_mtim.tv_sec != changed_.tv_sec || status.st_mtim.tv_nsec != changed_.tv_nsec) {
    checkouts_ = book.Read().checkouts;
    changed_ = status.st_mtim;
  }
  for (const auto& kept : checkouts_) {
    if (vtdirect_cli::LeadsTo(kept, uid)) return kept.uid;
  }
  return {};
}

}  // namespace vtdirect_mount
