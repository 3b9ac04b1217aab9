#include "hosts/mount/fuse/parallel_lookups.h"

#include <fcntl.h>
#include <linux/fuse.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cstring>

#include "hosts/mount/fuse/mount.h"
#include "hosts/mount/fuse/operations.h"

namespace vtdirect_mount {
namespace {

// The flags of the answer to the kernel's first request, which is a head and what follows it.
void AddFlag(const iovec* parts, int count) {
  fuse_init_out answer = {};
  if (count != 2 || parts[0].iov_len != sizeof(fuse_out_header) || parts[1].iov_len != sizeof answer) return;
  std::memcpy(&answer, parts[1].iov_base, sizeof answer);
  answer.flags |= FUSE_PARALLEL_DIROPS;
  std::memcpy(parts[1].iov_base, &answer, sizeof answer);
}

ssize_t Write(int device, iovec* parts, int count, void* mount) {
  if (static_cast<Mount*>(mount)->IsFirstAnswer()) AddFlag(parts, count);
  return writev(device, parts, count);
}

ssize_t Read(int device, void* buffer, std::size_t size, void* /*mount*/) {
  return read(device, buffer, size);
}

ssize_t Splice(int from, off_t* fromOffset, int to, off_t* toOffset, std::size_t size, unsigned flags,
               void* /*mount*/) {
  return splice(from, fromOffset, to, toOffset, size, flags);
}

}  // namespace

bool AskForParallelLookups(fuse_session* session) {
  const fuse_custom_io ways{Write, Read, Splice, Splice};
  return fuse_session_custom_io(session, &ways, fuse_session_fd(session)) == 0;
}

}  // namespace vtdirect_mount
