#pragma once

#include <sys/types.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "hosts/mount/fuse/fuse_api.h"
#include "hosts/mount/tree/document_facts.h"
#include "hosts/mount/writing/local_file.h"

namespace vtdirect_mount {

/// An open file: either the iteration that it was when it was opened, whatever becomes of the document, whose
/// content is fetched when it is first read; or a file of this machine.
class OpenDocument : public std::enable_shared_from_this<OpenDocument> {
 public:
  explicit OpenDocument(Iteration iteration) : iteration_(std::move(iteration)) {}
  /// @param writer  the process that opened it for writing; none when it was opened for reading
  OpenDocument(std::shared_ptr<LocalFile> local, std::optional<pid_t> writer)
      : local_(std::move(local)), writer_(writer) {}

  [[nodiscard]] const Iteration& iteration() const { return iteration_; }
  /// Null for a document of the server.
  [[nodiscard]] const std::shared_ptr<LocalFile>& local() const { return local_; }
  /// Names the bytes that it shows, and no others.
  [[nodiscard]] const std::string& key() const { return local_ == nullptr ? iteration_.key : local_->name(); }
  [[nodiscard]] bool writes() const { return writer_.has_value(); }
  [[nodiscard]] std::optional<pid_t> writer() const { return writer_; }
  [[nodiscard]] std::shared_ptr<const OpenFile> content() const {
    const std::lock_guard lock(mutex_);
    return content_;
  }
  void SetContent(const std::shared_ptr<const OpenFile>& content) {
    const std::lock_guard lock(mutex_);
    content_ = content;
  }

 private:
  const Iteration iteration_;
  const std::shared_ptr<LocalFile> local_;
  const std::optional<pid_t> writer_;
  mutable std::mutex mutex_;
  std::shared_ptr<const OpenFile> content_;
};

/// An open file for those who deal with it, as long as they do so.
using Handle = std::shared_ptr<OpenDocument>;

/// The open file that the kernel speaks of.
[[nodiscard]] inline Handle HandleOf(const fuse_file_info* file) {
  return reinterpret_cast<OpenDocument*>(file->fh)->shared_from_this();
}

}  // namespace vtdirect_mount
