#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "hosts/mount/fuse/entries.h"
#include "hosts/mount/fuse/open_document.h"
#include "hosts/mount/fuse/operations.h"

namespace vtdirect_mount {
namespace {

constexpr mode_t rightsOfMode = 07777U;

// A server knows no rights and owners. What is so already may be said again, as programs do that copy a file with
// all that belongs to it; anything else would not come true.
[[nodiscard]] int ErrorOfRights(const struct stat& shown, const struct stat& wanted, int what) {
  const bool changesMode =
      (what & FUSE_SET_ATTR_MODE) != 0 && ((wanted.st_mode ^ shown.st_mode) & rightsOfMode) != 0;
  const bool changesOwner = (what & FUSE_SET_ATTR_UID) != 0 && wanted.st_uid != shown.st_uid;
  const bool changesGroup = (what & FUSE_SET_ATTR_GID) != 0 && wanted.st_gid != shown.st_gid;
  return changesMode || changesOwner || changesGroup ? EPERM : 0;
}

constexpr int timeOfChange = FUSE_SET_ATTR_MTIME | FUSE_SET_ATTR_MTIME_NOW;

// What is said of a file of this machine. A scratch file has the rights that its program gives it, since it may be
// private. A time is that of what is being written; a document that nobody has changed has its own.
[[nodiscard]] int SetLocal(Mount& mount, LocalFile& local, const struct stat& wanted, int what) {
  const bool setsMode = (what & FUSE_SET_ATTR_MODE) != 0 && local.isScratch();
  const int checked = setsMode ? what & ~FUSE_SET_ATTR_MODE : what;
  if (const int error = ErrorOfRights(AttributesOfLocal(mount, local), wanted, checked); error != 0)
    return error;
  const bool setsTime = (what & timeOfChange) != 0;
  if (setsTime && !local.isScratch() && !local.isDirty()) return EPERM;
  if (setsMode) local.SetMode(wanted.st_mode & rightsOfMode);
  const int descriptor = local.file().descriptor();
  if ((what & FUSE_SET_ATTR_SIZE) != 0) {
    if (const int error = mount.writing()->NoteChange(local, Due::AtNextClose); error != 0) return error;
    if (ftruncate(descriptor, wanted.st_size) != 0) return errno;
    if (wanted.st_size == 0) local.NoteFailedWrite(0);
  }
  if (setsTime) {
    const timespec now{0, UTIME_NOW};
    const timespec times[2] = {now, (what & FUSE_SET_ATTR_MTIME_NOW) != 0 ? now : wanted.st_mtim};
    if (futimens(descriptor, times) != 0) return errno;
  }
  return 0;
}

[[nodiscard]] std::shared_ptr<LocalFile> LocalOf(Mount& mount, const Node& node, const fuse_file_info* file) {
  if (file != nullptr && HandleOf(file)->local() != nullptr) return HandleOf(file)->local();
  return mount.LocalAt(node);
}

constexpr int lengthAndTimes = FUSE_SET_ATTR_SIZE | FUSE_SET_ATTR_ATIME | FUSE_SET_ATTR_ATIME_NOW |
                               FUSE_SET_ATTR_MTIME | FUSE_SET_ATTR_MTIME_NOW;

// What is said of a document as the server has it.
[[nodiscard]] Answer<struct stat> SetDocument(Mount& mount, const Node& node, const struct stat& wanted,
                                              int what) {
  if ((what & lengthAndTimes) != 0) return {EPERM};
  const auto shown = AttributesOf(mount, node, Effort::Ask);
  if (shown.value == nullptr) return {shown.error};
  const int error = ErrorOfRights(*shown.value, wanted, what);
  return error == 0 ? shown : Answer<struct stat>{error};
}

void ReplySet(fuse_req_t request, const Mount& mount, fuse_ino_t number, const Answer<struct stat>& answer) {
  if (answer.value == nullptr) {
    fuse_reply_err(request, answer.error);
    return;
  }
  struct stat now = *answer.value;
  now.st_ino = number;
  fuse_reply_attr(request, &now, mount.seconds());
}

// A program that gives a document a length without opening it has that stored before it goes on, as at a close.
void SetLengthAndReply(const std::shared_ptr<PendingRequest>& pending, Mount& mount, const Node& node,
                       const struct stat& wanted, int what) {
  // What waits may be of another checkout than what is written now.
  const bool isWrittenAnew = wanted.st_size == 0 && mount.writing()->IsWaiting(node.address);
  const std::string base = isWrittenAnew ? mount.writing()->BaseNow(node.address) : "";
  const Writable writable = mount.writing()->Edit(node.address, wanted.st_size != 0);
  if (writable.file == nullptr) return pending->Fail(writable.error);
  const int error = pending->IsAnswered() ? EINTR : SetLocal(mount, *writable.file, wanted, what);
  if (error == 0 && !base.empty()) writable.file->SetBase(base);
  mount.writing()->Post([&mount, pending, number = node.number, local = writable.file, error] {
    const int fault = error == 0 ? mount.writing()->Store(local) : error;
    const auto now = fault == 0 ? Found(AttributesOfLocal(mount, *local)) : Answer<struct stat>{fault};
    mount.writing()->LetGo(local);
    pending->Answer([&](fuse_req_t asked) { ReplySet(asked, mount, number, now); });
  });
}

}  // namespace

void OnSetAttributes(fuse_req_t request, fuse_ino_t number, struct stat* wanted, int what,
                     fuse_file_info* file) {
  Mount& mount = MountOf(request);
  const auto node = mount.nodes().Find(number);
  if (node == nullptr) {
    fuse_reply_err(request, ESTALE);
    return;
  }
  const auto local = LocalOf(mount, *node, file);
  const bool setsLengthByName = (what & FUSE_SET_ATTR_SIZE) != 0 && file == nullptr &&
                                mount.writing() != nullptr && node->kind == NodeKind::Document &&
                                (local == nullptr || !local->isScratch());
  if (local != nullptr && !setsLengthByName) {
    const int error = SetLocal(mount, *local, *wanted, what);
    const auto now = error == 0 ? Found(AttributesOfLocal(mount, *local)) : Answer<struct stat>{error};
    ReplySet(request, mount, number, now);
    return;
  }
  mount.Ask(request, [&mount, node, wanted = *wanted, what, setsLengthByName](const auto& pending) {
    if (setsLengthByName) return SetLengthAndReply(pending, mount, *node, wanted, what);
    const auto answer = SetDocument(mount, *node, wanted, what);
    pending->Answer([&](fuse_req_t asked) { ReplySet(asked, mount, node->number, answer); });
  });
}

}  // namespace vtdirect_mount
