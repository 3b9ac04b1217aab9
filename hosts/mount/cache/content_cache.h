#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "hosts/mount/cache/open_file.h"

namespace vtdirect_mount {

/// The contents of iterations, as files in a directory that only its user can read. Several processes share
/// it: a file is written under a name of its own and then renamed, and only one process at a time throws
/// files away. What is not as long as it must be counts as not there, and is removed. Files that are open
/// stay readable when they are thrown away.
///
/// When the files take more than the limit, those that were not used for the longest time go, until a tenth
/// of the limit is free. Any thread. Makes no request.
class ContentCache {
 public:
  /// @param directory  made when it is missing; must belong to the user alone
  /// @param limit      bytes
  ContentCache(std::string directory, std::uint64_t limit)
      : directory_(std::move(directory)), limit_(limit) {}

  /// Makes the directory, clears away what a killed process has left in it, and counts what is there.
  /// @return why it can't be used, or an empty text
  [[nodiscard]] std::string Prepare();

  /// The content of an iteration; null when it is not there, or not `size` bytes long.
  /// @param key  anything that names the iteration and nothing else
  [[nodiscard]] std::shared_ptr<const OpenFile> Open(const std::string& key, std::uint64_t size) const;

  /// A name for a file that a content is to be written to, before Keep or Drop.
  [[nodiscard]] std::string NewFile();

  /// Takes over a whole content.
  /// @param file  from NewFile; gone afterwards in any case
  /// @return the error number of what failed; 0 for none
  [[nodiscard]] int Keep(const std::string& key, const std::string& file);

  /// Why a file of so many bytes can't be written now: the error number of trying it, with ENOSPC for a quota too;
  /// 0 when it can.
  [[nodiscard]] int ErrorOfWriting(std::uint64_t bytes);

  /// Removes a file of NewFile.
  static void Drop(const std::string& file);

  /// Removes all files of NewFile that this process has; for its end.
  void DropAll() const;

  /// Throws files away until they take no more than so many bytes.
  void ShrinkTo(std::uint64_t bytes);

  [[nodiscard]] std::uint64_t limit() const { return limit_; }
  /// What the files took when they were last counted, and what came in since.
  [[nodiscard]] std::uint64_t bytes() const { return bytes_; }

 private:
  [[nodiscard]] std::string PathOf(const std::string& key) const;
  [[nodiscard]] std::string Contents() const { return directory_ + "/contents"; }
  [[nodiscard]] std::string Parts() const { return directory_ + "/parts"; }
  void RemoveDeadParts() const;

  const std::string directory_;
  const std::uint64_t limit_;
  std::atomic<std::uint64_t> bytes_{0};
  std::atomic<std::uint64_t> counted_{0};  // bytes that came in since the files were counted
  std::atomic<std::uint64_t> next_{0};
  std::mutex shrinking_;
};

}  // namespace vtdirect_mount
