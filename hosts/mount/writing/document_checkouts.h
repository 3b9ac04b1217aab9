#pragma once

#include <string>

#include "hosts/mount/writing/command_runner.h"
#include "hosts/mount/writing/kept_checkouts.h"
#include "hosts/mount/writing/mounted.h"
#include "hosts/mount/writing/turns.h"

namespace vtdirect_mount {

/// Which documents may be stored into. Any thread.
class DocumentCheckouts {
 public:
  /// @param mounted  must outlive this, as the runner must
  /// @param checksOut  whether a document is checked out when it is first written to
  DocumentCheckouts(const Mounted& mounted, const CommandRunner& runner, bool checksOut)
      : mounted_(mounted), runner_(runner), checksOut_(checksOut) {}

  /// Whether a document is checked out here. Makes no request.
  [[nodiscard]] bool Has(const std::string& uid) { return !kept_.WorkingCopyOf(uid).empty(); }
  /// The UID by which a document is read: that of its working copy when it is checked out here. Makes no
  /// request.
  [[nodiscard]] std::string ReadBy(const std::string& uid);

  /// A document that may be stored into, or why there is none.
  struct Required {
    int error = 0;     ///< EACCES for one that is not checked out here, ENOENT without a document
    std::string uid;   ///< the document's
    std::string base;  ///< what is written to it now is written for
  };
  /// Makes sure that a document may be stored into. May make requests, and block.
  [[nodiscard]] Required Require(const std::string& address);
  /// Why a file must not be stored at an address now; empty when it may be. Makes requests.
  /// @param base  what the file was written for
  [[nodiscard]] std::string WhyNotNow(const std::string& address, const std::string& base);

 private:
  [[nodiscard]] Required Known(const std::string& address);
  const Mounted& mounted_;
  const CommandRunner& runner_;
  const bool checksOut_;
  Turns turns_;
  KeptCheckouts kept_;
};

}  // namespace vtdirect_mount
