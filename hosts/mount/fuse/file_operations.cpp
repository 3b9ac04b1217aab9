#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>
#include <utility>

#include "hosts/mount/fuse/calling_process.h"
#include "hosts/mount/fuse/entries.h"
#include "hosts/mount/fuse/open_document.h"
#include "hosts/mount/fuse/operations.h"
#include "hosts/mount/names/preview_programs.h"

namespace vtdirect_mount {
namespace {

// A program that was interrupted never closes what it opened.
void ReplyHandle(fuse_req_t request, Mount& mount, std::uint64_t node, const Handle& handle) {
  fuse_file_info file = mount.Keep(node, handle);
  if (fuse_reply_open(request, &file) == 0) return;
  mount.Drop(node, handle);
  if (handle->writes()) mount.writing()->LetGo(handle->local());
}

void ReplyOpen(fuse_req_t request, Mount& mount, std::uint64_t node, const Answer<Iteration>& answer) {
  if (answer.value == nullptr) {
    fuse_reply_err(request, answer.error);
    return;
  }
  // A working copy may have other bytes at each open. Who opens it after a store must not get those that another began
  // to fetch before.
  Iteration iteration = *answer.value;
  if (CanChange(iteration.uid)) iteration.key += " " + std::to_string(mount.NextOpen());
  ReplyHandle(request, mount, node, std::make_shared<OpenDocument>(std::move(iteration)));
}

// How a file of this machine is opened.
struct Opening {
  std::uint64_t node = 0;
  int flags = 0;
  // What it is written for when it is emptied; empty for what it was written for before.
  std::string base = {};

  [[nodiscard]] bool writes() const { return (flags & O_ACCMODE) != O_RDONLY; }
  [[nodiscard]] bool empties() const { return writes() && (flags & O_TRUNC) != 0; }
};

// @param writable  counts as opened when it is to be written to
void ReplyOpenLocal(fuse_req_t request, Mount& mount, const Writable& writable, const Opening& opening) {
  if (writable.file == nullptr) {
    fuse_reply_err(request, writable.error);
    return;
  }
  if (opening.empties()) {
    if (const int error = mount.writing()->Empty(writable.file, opening.base); error != 0) {
      mount.writing()->Close(writable.file);
      fuse_reply_err(request, error);
      return;
    }
  }
  std::optional<pid_t> writer;
  if (opening.writes()) writer = ProcessOf(fuse_req_ctx(request)->pid);
  ReplyHandle(request, mount, opening.node, std::make_shared<OpenDocument>(writable.file, writer));
}

// What a program that was interrupted has not got must not lie over the document for good.
void EditAndReply(const std::shared_ptr<PendingRequest>& pending, Mount& mount, const Node& node,
                  Opening opening) {
  // What waits may be of another checkout than what is written now.
  if (opening.empties() && mount.writing()->IsWaiting(node.address)) {
    opening.base = mount.writing()->BaseNow(node.address);
  }
  const Writable writable = mount.writing()->Edit(node.address, !opening.empties());
  // The file may be longer or shorter than the document was when the kernel heard of it.
  mount.LetKernelForget(node.number, Kept::Attributes);
  const bool isTold =
      pending->Answer([&](fuse_req_t asked) { ReplyOpenLocal(asked, mount, writable, opening); });
  if (!isTold && writable.file != nullptr) mount.writing()->LetGo(writable.file);
}

void OpenToWrite(fuse_req_t request, Mount& mount, const std::shared_ptr<const Node>& node,
                 const Opening& opening) {
  if (mount.writing() == nullptr || node->kind != NodeKind::Document) {
    fuse_reply_err(request, mount.writing() == nullptr ? EROFS : EPERM);
    return;
  }
  if (!opening.empties() || !mount.writing()->IsWaiting(node->address)) {
    if (const auto known = mount.writing()->EditKnown(node->address)) {
      return ReplyOpenLocal(request, mount, {0, known}, opening);
    }
  }
  mount.Ask(request,
            [&mount, node, opening](const auto& pending) { EditAndReply(pending, mount, *node, opening); });
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
  // libfuse's own macro for this is a literal of C.
  fuse_bufvec buffer = {};
  buffer.count = 1;
  buffer.buf[0].size = stretch.size;
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
  const Opening opening{number, file->flags};
  if (opening.writes()) return OpenToWrite(request, mount, node, opening);
  if (const auto local = mount.LocalAt(*node)) return ReplyOpenLocal(request, mount, {0, local}, opening);
  if (mount.settings().noPreview && MakesPreviews(ProgramOf(fuse_req_ctx(request)->pid))) {
    fuse_reply_err(request, EACCES);
    return;
  }
  const auto known = IterationOf(mount, *node, Effort::Known);
  if (known.value != nullptr && !CanChange(known.value->uid)) return ReplyOpen(request, mount, number, known);
  mount.Ask(request, [&mount, node](const auto& pending) {
    const auto answer = IterationToRead(mount, *node);
    // It may be longer or shorter than when the kernel heard of it, which reads no further than it knows.
    mount.LetKernelForget(node->number, Kept::Attributes);
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

void OnRelease(fuse_req_t request, fuse_ino_t node, fuse_file_info* file) {
  Mount& mount = MountOf(request);
  const Handle handle = HandleOf(file);
  mount.Drop(node, handle);
  if (handle->writes()) mount.writing()->Close(handle->local());
  fuse_reply_err(request, 0);
}

}  // namespace vtdirect_mount
