#pragma once

#include <string>

#include "hosts/cli/checkouts/journal.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {

/// A change on a server, from before it is sent: its entry is in the journal when this is made. A journal
/// that can't be written is a warning, since it would cost the user the change otherwise.
class JournaledStep {
 public:
  JournaledStep(Host& host, JournalEntry entry);
  JournaledStep(const JournaledStep&) = delete;
  JournaledStep& operator=(const JournaledStep&) = delete;

  /// The answer is in, and all that follows from it is kept: the entry is struck out. Not to be called while
  /// the change may have been carried out and nobody knows.
  void Settle();

  /// Settles a step that failed, unless a request of it may have been carried out all the same; to be called
  /// before the reasons are forgotten.
  void SettleUnlessUnknown();

 private:
  Host& host_;
  JournalEntry entry_;
  bool written_ = false;
};

}  // namespace vtdirect_cli
