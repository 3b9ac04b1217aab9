#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "hosts/mount/fuse/calling_process.h"
#include "hosts/mount/fuse/entries.h"
#include "hosts/mount/fuse/open_document.h"
#include "hosts/mount/fuse/operations.h"
#include "hosts/mount/names/shown_name.h"

namespace vtdirect_mount {
namespace {

void ReplyCreated(fuse_req_t request, Mount& mount, const Node& wanted, const Writable& made) {
  if (made.file == nullptr) {
    fuse_reply_err(request, made.error);
    return;
  }
  const auto node = mount.nodes().Enter(wanted);
  fuse_entry_param entry = {};
  entry.ino = node->number;
  entry.attr = AttributesOfLocal(mount, *made.file);
  entry.attr.st_ino = node->number;
  entry.attr_timeout = entry.entry_timeout = mount.seconds();
  const auto handle = std::make_shared<OpenDocument>(made.file, ProcessOf(fuse_req_ctx(request)->pid));
  fuse_file_info file = mount.Keep(node->number, handle);
  if (fuse_reply_create(request, &entry, &file) == 0) return;
  mount.writing()->LetGo(made.file);
  mount.Drop(node->number, handle);
  mount.nodes().Forget(node->number, 1);
}

// Stores what was changed, by the thread that does so, and answers when that is done. A process that got the
// open file from the one that opened it closes it too, "(a; b) >FILE" after each of its commands; then the
// file is not complete yet, and is stored by the last who closes it. So is a document that was made at a close before,
// as by "echo a >&3" after "exec 3>FILE": not every line of it is worth an iteration.
void StoreAndReply(fuse_req_t request, const fuse_file_info* file) {
  Mount& mount = MountOf(request);
  const Handle handle = HandleOf(file);
  const bool isDue = handle->writes() && handle->local()->isDirty() && handle->local()->isDue();
  if (!isDue || handle->local()->isScratch()) {
    fuse_reply_err(request, 0);
    return;
  }
  if (handle->local()->isCreated() || ProcessOf(fuse_req_ctx(request)->pid) != handle->writer()) {
    mount.log().Write(handle->local()->address() +
                      " is stored when the last program that has it open closes it");
    fuse_reply_err(request, 0);
    return;
  }
  mount.writing()->Post([&mount, handle, pending = PendingRequest::Of(request)] {
    pending->Fail(mount.writing()->Store(handle->local()));
  });
}

// The kernel appends where the file ended when it last heard of it, which may be long ago.
[[nodiscard]] off_t PlaceOfWrite(const LocalFile& local, int flags, off_t offset) {
  return (flags & O_APPEND) != 0 ? static_cast<off_t>(local.size()) : offset;
}

// EEXIST for a name that is there; another error number when that can't be told.
[[nodiscard]] int ErrorOfTakenName(Mount& mount, const Node& folder, const std::string& name) {
  const Answer<LookedUp> found = LookUp(mount, folder, name, Effort::Ask);
  if (found.value != nullptr) return EEXIST;
  return found.error == ENOENT ? 0 : found.error;
}

}  // namespace

void OnCreate(fuse_req_t request, fuse_ino_t parent, const char* name, mode_t /*mode*/,
              fuse_file_info* /*file*/) {
  Mount& mount = MountOf(request);
  const auto folder = mount.nodes().Find(parent);
  if (folder == nullptr || folder->kind != NodeKind::Folder || name == versionsFolder) {
    fuse_reply_err(request, folder == nullptr ? ESTALE : EPERM);
    return;
  }
  Node wanted;
  wanted.parent = parent;
  wanted.name = name;
  wanted.kind = NodeKind::Document;
  wanted.address = AddressIn(mount, *folder, name);
  ReplyCreated(request, mount, wanted,
               mount.writing()->Create(wanted.address, ProgramOf(ProcessOf(fuse_req_ctx(request)->pid))));
}

void OnWrite(fuse_req_t request, fuse_ino_t number, const char* bytes, std::size_t size, off_t offset,
             fuse_file_info* file) {
  Mount& mount = MountOf(request);
  const Handle handle = HandleOf(file);
  const auto node = mount.nodes().Find(number);
  if (!handle->writes() || node == nullptr) {
    fuse_reply_err(request, node == nullptr ? ESTALE : EBADF);
    return;
  }
  LocalFile& local = *handle->local();
  int error = mount.writing()->NoteChange(local, Due::AtNextClose);
  const off_t place = PlaceOfWrite(local, file->flags, offset);
  const ssize_t count = error == 0 ? pwrite(local.file().descriptor(), bytes, size, place) : -1;
  if (count < 0) {
    if (error == 0) error = errno;
    local.NoteFailedWrite(error);
    fuse_reply_err(request, error);
  } else {
    fuse_reply_write(request, static_cast<std::size_t>(count));
    if (place != offset) mount.LetKernelForgetLater(number);
  }
}

void OnFlush(fuse_req_t request, fuse_ino_t /*node*/, fuse_file_info* file) {
  StoreAndReply(request, file);
}

// The bytes are safe on this machine then; they are stored when the file is closed. A program that closed a duplicate
// learns here what came of that. The kernel tells of bytes that it could not write once, and not when the file is
// stored.
void OnSync(fuse_req_t request, fuse_ino_t /*number*/, int /*dataOnly*/, fuse_file_info* file) {
  const auto local = HandleOf(file)->local();
  const int error = local == nullptr || fsync(local->file().descriptor()) == 0 ? 0 : errno;
  if (error != 0) local->NoteFailedWrite(error);
  const bool couldNotBeStored = local != nullptr && local->couldNotBeStored();
  fuse_reply_err(request, error == 0 && couldNotBeStored ? EIO : error);
}

void OnRename(fuse_req_t request, fuse_ino_t parent, const char* name, fuse_ino_t newParent,
              const char* newName, unsigned flags) {
  Mount& mount = MountOf(request);
  const auto folder = mount.nodes().Find(parent);
  const auto newFolder = mount.nodes().Find(newParent);
  if (folder == nullptr || newFolder == nullptr || folder->kind != NodeKind::Folder ||
      newFolder->kind != NodeKind::Folder) {
    fuse_reply_err(request, EPERM);
    return;
  }
  if ((flags & ~static_cast<unsigned>(RENAME_NOREPLACE)) != 0) {
    fuse_reply_err(request, EINVAL);
    return;
  }
  Node wanted;
  wanted.parent = newParent;
  wanted.name = newName;
  wanted.address = AddressIn(mount, *newFolder, newName);
  mount.writing()->Post([&mount, parent, name = std::string(name), from = AddressIn(mount, *folder, name),
                         wanted, isToBeFree = flags != 0, newFolder, pending = PendingRequest::Of(request)] {
    if (pending->IsAnswered()) return;  // the program was told that nothing was done
    const int taken = isToBeFree ? ErrorOfTakenName(mount, *newFolder, wanted.name) : 0;
    const int error = taken != 0 ? taken : mount.writing()->Rename(from, wanted.address);
    if (error == 0) mount.nodes().Move(parent, name, wanted);
    pending->Fail(error);
  });
}

void OnUnlink(fuse_req_t request, fuse_ino_t parent, const char* name) {
  Mount& mount = MountOf(request);
  const auto folder = mount.nodes().Find(parent);
  if (folder == nullptr || folder->kind != NodeKind::Folder) {
    fuse_reply_err(request, EPERM);
    return;
  }
  mount.writing()->Post(
      [&mount, address = AddressIn(mount, *folder, name), pending = PendingRequest::Of(request)] {
        if (!pending->IsAnswered()) pending->Fail(mount.writing()->Remove(address));
      });
}

void OnMakeDirectory(fuse_req_t request, fuse_ino_t /*parent*/, const char* /*name*/, mode_t /*mode*/) {
  fuse_reply_err(request, EPERM);
}

void OnRemoveDirectory(fuse_req_t request, fuse_ino_t /*parent*/, const char* /*name*/) {
  fuse_reply_err(request, EPERM);
}

void OnSymbolicLink(fuse_req_t request, const char* /*target*/, fuse_ino_t /*parent*/, const char* /*name*/) {
  fuse_reply_err(request, EPERM);
}

void OnLink(fuse_req_t request, fuse_ino_t /*node*/, fuse_ino_t /*newParent*/, const char* /*newName*/) {
  fuse_reply_err(request, EPERM);
}

void OnMakeNode(fuse_req_t request, fuse_ino_t /*parent*/, const char* /*name*/, mode_t /*mode*/,
                dev_t /*device*/) {
  fuse_reply_err(request, EPERM);
}

}  // namespace vtdirect_mount
