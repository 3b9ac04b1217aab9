#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <utility>

#include "hosts/mount/fuse/entries.h"
#include "hosts/mount/fuse/operations.h"
#include "hosts/mount/names/preview_programs.h"

namespace vtdirect_mount {
namespace {

// An open file: the iteration that it was when it was opened, whatever becomes of the document. Its content
// is fetched when it is first read.
class OpenDocument {
 public:
  explicit OpenDocument(Iteration iteration) : iteration_(std::move(iteration)) {}

  [[nodiscard]] const Iteration& iteration() const { return iteration_; }
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
  mutable std::mutex mutex_;
  std::shared_ptr<const OpenFile> content_;
};

using Handle = std::shared_ptr<OpenDocument>;

[[nodiscard]] const Handle& HandleOf(const fuse_file_info* file) {
  return *reinterpret_cast<const Handle*>(file->fh);
}

[[nodiscard]] std::string ProgramOf(fuse_req_t request) {
  std::ifstream file("/proc/" + std::to_string(fuse_req_ctx(request)->pid) + "/comm");
  std::string name;
  std::getline(file, name);
  return name;
}

void ReplyOpen(fuse_req_t request, Mount& mount, std::uint64_t node, const Answer<Iteration>& answer) {
  if (answer.value == nullptr) {
    fuse_reply_err(request, answer.error);
    return;
  }
  fuse_file_info file = {};
  const bool isAsBefore = mount.IsAsBefore(node, answer.value->key);
  file.keep_cache = isAsBefore && !CanChange(answer.value->uid) ? 1 : 0;
  auto* const handle = new Handle(std::make_shared<OpenDocument>(*answer.value));
  file.fh = reinterpret_cast<std::uint64_t>(handle);
  if (fuse_reply_open(request, &file) != 0) delete handle;
}

// What is to be read of a file, as far as the file goes.
struct Stretch {
  off_t offset = 0;
  std::size_t size = 0;
};

[[nodiscard]] Stretch WithinFile(Stretch wanted, std::uint64_t bytes) {
  const auto offset = static_cast<std::uint64_t>(wanted.offset);
  const std::uint64_t left = offset < bytes ? bytes - offset : 0;
  return {wanted.offset, static_cast<std::size_t>(std::min<std::uint64_t>(wanted.size, left))};
}

// The bytes go from the file to the kernel without passing through this program where the kernel can do so.
void ReplyContent(fuse_req_t request, const OpenFile& content, const Stretch& stretch) {
  fuse_bufvec buffer = FUSE_BUFVEC_INIT(stretch.size);
  buffer.buf[0].flags = static_cast<fuse_buf_flags>(FUSE_BUF_IS_FD | FUSE_BUF_FD_SEEK);
  buffer.buf[0].fd = content.descriptor();
  buffer.buf[0].pos = stretch.offset;
  fuse_reply_data(request, &buffer, FUSE_BUF_SPLICE_MOVE);
}

}  // namespace

void OnOpen(fuse_req_t request, fuse_ino_t number, fuse_file_info* file) {
  Mount& mount = MountOf(request);
  const auto node = mount.nodes().Find(number);
  if (node == nullptr) {
    fuse_reply_err(request, ESTALE);
    return;
  }
  if ((file->flags & O_ACCMODE) != O_RDONLY) {
    fuse_reply_err(request, EROFS);
    return;
  }
  if (mount.settings().noPreview && MakesPreviews(ProgramOf(request))) {
    fuse_reply_err(request, EACCES);
    return;
  }
  const auto known = IterationOf(mount, *node, Effort::Known);
  if (known.error != EAGAIN) return ReplyOpen(request, mount, number, known);
  mount.Ask(request, [&mount, node](const auto& pending) {
    const auto answer = IterationOf(mount, *node, Effort::Ask);
    pending->Answer([&](fuse_req_t asked) { ReplyOpen(asked, mount, node->number, answer); });
  });
}

void OnRead(fuse_req_t request, fuse_ino_t /*node*/, std::size_t size, off_t offset, fuse_file_info* file) {
  const Handle handle = HandleOf(file);
  const Stretch stretch = WithinFile({offset, size}, handle->iteration().facts.size);
  if (stretch.size == 0) {
    fuse_reply_buf(request, nullptr, 0);
    return;
  }
  if (const auto content = handle->content()) return ReplyContent(request, *content, stretch);
  const auto pending = PendingRequest::Of(request);
  const auto done = [pending, handle, stretch](const Answer<OpenFile>& answer) {
    if (answer.value == nullptr) return pending->Fail(answer.error);
    handle->SetContent(answer.value);
    pending->Answer([&](fuse_req_t asked) { ReplyContent(asked, *answer.value, stretch); });
  };
  MountOf(request).fetches().Fetch(handle->iteration(), {[pending] { return !pending->IsAnswered(); }, done});
}

void OnRelease(fuse_req_t request, fuse_ino_t /*node*/, fuse_file_info* file) {
  delete reinterpret_cast<Handle*>(file->fh);
  fuse_reply_err(request, 0);
}

}  // namespace vtdirect_mount
