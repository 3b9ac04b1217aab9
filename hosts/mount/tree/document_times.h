#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "hosts/mount/tree/document_facts.h"

namespace vtdirect_mount {

/// The times of documents that a mount knows better than by when it met them: when a program wrote what was stored,
/// and when a working copy first had its length. Editors and rsync compare times, and a working copy has no iteration
/// of its own for each change. Any thread. Makes no request.
class DocumentTimes {
 public:
  /// Notes what was stored at a path: the next look there finds it.
  /// @param stored  its length, and when it was written
  void NoteStored(const std::string& path, const Facts& stored);

  /// What was stored at a path and not met there since.
  [[nodiscard]] std::optional<Facts> JustStored(const std::string& path);

  /// The iteration that was found at a path, with the time that counts there.
  [[nodiscard]] Iteration WithTime(const std::string& path, Iteration found);

  /// Lets no time count any more.
  void Forget();

 private:
  struct Known {
    std::string key;  // of the iteration; empty until it is met
    Facts facts;
  };

  std::mutex mutex_;
  std::map<std::string, Known> known_;
};

}  // namespace vtdirect_mount
