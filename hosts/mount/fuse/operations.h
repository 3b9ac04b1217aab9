#pragma once

#include <cstddef>
#include <cstdint>

#include "hosts/mount/fuse/fuse_api.h"

namespace vtdirect_mount {

class Mount;

/// The table by which libfuse calls this program. The session's user data is the Mount.
/// @param writes  whether the tree can be written to
[[nodiscard]] fuse_lowlevel_ops Operations(bool writes);

/// The mount that a request belongs to.
[[nodiscard]] inline Mount& MountOf(fuse_req_t request) {
  return *static_cast<Mount*>(fuse_req_userdata(request));
}

// What is answered from what is known is answered by the thread that libfuse calls on; all else by the
// threads of the Mount.

// folder_operations.cpp
void OnLookup(fuse_req_t request, fuse_ino_t parent, const char* name);
void OnForget(fuse_req_t request, fuse_ino_t node, std::uint64_t times);
void OnForgetMulti(fuse_req_t request, std::size_t count, fuse_forget_data* forgets);
void OnGetAttributes(fuse_req_t request, fuse_ino_t node, fuse_file_info* file);
void OnOpenDirectory(fuse_req_t request, fuse_ino_t node, fuse_file_info* file);
void OnReadDirectory(fuse_req_t request, fuse_ino_t node, std::size_t size, off_t offset,
                     fuse_file_info* file);
void OnReleaseDirectory(fuse_req_t request, fuse_ino_t node, fuse_file_info* file);

// file_operations.cpp
void OnOpen(fuse_req_t request, fuse_ino_t node, fuse_file_info* file);
void OnRead(fuse_req_t request, fuse_ino_t node, std::size_t size, off_t offset, fuse_file_info* file);
void OnRelease(fuse_req_t request, fuse_ino_t node, fuse_file_info* file);

// write_operations.cpp, where the mount can be written to
void OnCreate(fuse_req_t request, fuse_ino_t parent, const char* name, mode_t mode, fuse_file_info* file);
void OnWrite(fuse_req_t request, fuse_ino_t node, const char* bytes, std::size_t size, off_t offset,
             fuse_file_info* file);
void OnSetAttributes(fuse_req_t request, fuse_ino_t node, struct stat* wanted, int what,
                     fuse_file_info* file);
void OnFlush(fuse_req_t request, fuse_ino_t node, fuse_file_info* file);
void OnSync(fuse_req_t request, fuse_ino_t node, int dataOnly, fuse_file_info* file);
void OnRename(fuse_req_t request, fuse_ino_t parent, const char* name, fuse_ino_t newParent,
              const char* newName, unsigned flags);
void OnUnlink(fuse_req_t request, fuse_ino_t parent, const char* name);
// What a server does not have fails with EPERM.
void OnMakeDirectory(fuse_req_t request, fuse_ino_t parent, const char* name, mode_t mode);
void OnRemoveDirectory(fuse_req_t request, fuse_ino_t parent, const char* name);
void OnSymbolicLink(fuse_req_t request, const char* target, fuse_ino_t parent, const char* name);
void OnLink(fuse_req_t request, fuse_ino_t node, fuse_ino_t newParent, const char* newName);
void OnMakeNode(fuse_req_t request, fuse_ino_t parent, const char* name, mode_t mode, dev_t device);

// attribute_operations.cpp
void OnGetExtended(fuse_req_t request, fuse_ino_t node, const char* name, std::size_t size);
void OnListExtended(fuse_req_t request, fuse_ino_t node, std::size_t size);

}  // namespace vtdirect_mount
