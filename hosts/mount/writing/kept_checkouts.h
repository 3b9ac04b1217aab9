#pragma once

#include <sys/types.h>

#include <ctime>
#include <mutex>
#include <string>
#include <vector>

#include "hosts/cli/checkouts/kept_checkout.h"

namespace vtdirect_mount {

/// The checkouts of this user on this machine, as vtdirect keeps them. The file is read when it has changed.
/// Any thread. Makes no request.
class KeptCheckouts {
 public:
  /// The UID of the working copy of a document, by which its content is stored; empty when it is not checked
  /// out here.
  [[nodiscard]] std::string WorkingCopyOf(const std::string& uid);

  /// Whether a checkout has begun or ended since the last call; true at the first one.
  [[nodiscard]] bool HaveChanged();

 private:
  void ReadIfChanged();

  std::mutex mutex_;  // guards what follows
  timespec changed_{};
  ino_t file_ = 0;
  bool haveChanged_ = true;
  std::vector<vtdirect_cli::KeptCheckout> checkouts_;
};

}  // namespace vtdirect_mount
