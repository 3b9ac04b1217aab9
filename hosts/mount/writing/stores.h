#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "hosts/mount/writing/command_runner.h"
#include "hosts/mount/writing/document_checkouts.h"
#include "hosts/mount/writing/local_file.h"
#include "hosts/mount/writing/local_files.h"
#include "hosts/mount/writing/mounted.h"
#include "hosts/mount/writing/overlay.h"
#include "hosts/mount/writing/waiting_files.h"

namespace vtdirect_mount {

/// What stores deal with; all of it outlives them.
struct StoreParts {
  const Mounted& mounted;
  const CommandRunner& runner;
  LocalFiles& files;
  DocumentCheckouts& checkouts;
  WaitingFiles& waiting;
  Overlay& overlay;
};

/// Brings what programs have written to the server. One thread at a time.
class Stores {
 public:
  explicit Stores(const StoreParts& parts) : parts_(parts) {}

  /// Stores what was changed at its address; scratch files are stored nowhere. What fails waits. Makes requests, and
  /// blocks.
  /// @return EIO when it waits now; the error number of a write that failed, since half a file is never stored
  [[nodiscard]] int Store(const std::shared_ptr<LocalFile>& file);

 private:
  [[nodiscard]] int NoteHalf(LocalFile& file, std::uint64_t changes);
  [[nodiscard]] bool IsWhatWasMade(const std::string& address, const LocalFile& file);
  [[nodiscard]] std::string Put(const std::string& address, const LocalFile& file);
  void NoteStored(const std::string& address, const std::shared_ptr<LocalFile>& file, std::uint64_t changes);

  const StoreParts parts_;
};

/// What an entry says until a store has ended well.
inline constexpr const char* unconfirmedStore = "it was not confirmed that it is stored";

}  // namespace vtdirect_mount
