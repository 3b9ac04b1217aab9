#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "hosts/mount/fuse/calling_process.h"
#include "hosts/mount/fuse/entries.h"
#include "hosts/mount/fuse/open_document.h"
#include "hosts/mount/fuse/operations.h"
#include "hosts/mount/names/preview_programs.h"

namespace vtdirect_mount {
namespace {

// A program that was interrupted never closes what it opened.
void ReplyHandle(fuse_req_t request, fuse_file_info file, std::shared_ptr<OpenDocument> opened) {
  auto* const handle = new Handle(std::move(opened));
  file.fh = reinterpret_cast<std::uint64_t>(handle);
  if (fuse_reply_open(request, &file) == 0) return;
  if (const auto& local = (*handle)->local(); local != nullptr) local->NoteClosed((*handle)->writes());
  delete handle;
}

void ReplyOpen(fuse_req_t request, Mount& mount, std::uint64_t node, const Answer<Iteration>& answer) {
  if (answer.value == nullptr) {
    fuse_reply_err(request, answer.error);
    return;
  }
  fuse_file_info file = {};
  const bool isAsBefore = mount.IsAsBefore(node, answer.value->key);
  file.keep_cache = isAsBefore && !CanChange(answer.value->uid) ? 1 : 0;
  ReplyHandle(request, file, std::make_shared<OpenDocument>(*answer.value));
}

// What lies on this machine changes without the kernel's knowledge only by the kernel's own writes.
void ReplyOpenLocal(fuse_req_t request, Mount& mount, const Node& node, const Writable& writable, int flags) {
  if (writable.file == nullptr) {
    fuse_reply_err(request, writable.error);
    return;
  }
  const bool writes = (flags & O_ACCMODE) != O_RDONLY;
  if (writes && (flags & O_TRUNC) != 0) {
    if (const int error = mount.writing()->Empty(writable.file); error != 0) {
      fuse_reply_err(request, error);
      return;
    }
  }
  mount.writing()->NoteOpened(writable.file, writes);
  static_cast<void>(mount.IsAsBefore(node.number, writable.file->name()));
  ReplyHandle(
      request, {},
      std::make_shared<OpenDocument>(writable.file, writes ? ProcessOf(fuse_req_ctx(request)->pid) : 0));
}

// True when the request is taken care of.
[[nodiscard]] bool OpenLocal(fuse_req_t request, Mount& mount, const std::shared_ptr<const Node>& node,
                             int flags) {
  const bool writes = (flags & O_ACCMODE) != O_RDONLY;
  if (const auto local = mount.LocalAt(*node)) {
    ReplyOpenLocal(request, mount, *node, {0, local}, flags);
    return true;
  }
  if (!writes) return false;
  if (mount.writing() == nullptr || node->kind != NodeKind::Document) {
    fuse_reply_err(request, mount.writing() == nullptr ? EROFS : EPERM);
    return true;
  }
  mount.Ask(request, [&mount, node, flags](const auto& pending) {
    const Writable writable = mount.writing()->Edit(node->address, (flags & O_TRUNC) == 0);
    pending->Answer([&](fuse_req_t asked) { ReplyOpenLocal(asked, mount, *node, writable, flags); });
  });
  return true;
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
  if (stretch.size == 0) {
    fuse_reply_buf(request, nullptr, 0);
    return;
  }
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
  if (OpenLocal(request, mount, node, file->flags)) return;
  if (mount.settings().noPreview && MakesPreviews(ProgramOf(fuse_req_ctx(request)->pid))) {
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
  if (handle->local() != nullptr) {
    return ReplyContent(request, handle->local()->file(),
                        WithinFile({offset, size}, handle->local()->size()));
  }
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
  Mount& mount = MountOf(request);
  const std::unique_ptr<Handle> handle(reinterpret_cast<Handle*>(file->fh));
  if (const auto& local = (*handle)->local(); local != nullptr) {
    mount.writing()->Close(local, (*handle)->writes());
  }
  fuse_reply_err(request, 0);
}

}  // namespace vtdirect_mount
