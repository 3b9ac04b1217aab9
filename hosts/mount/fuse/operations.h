#pragma once

#include <cstddef>
#include <cstdint>

#include "hosts/mount/fuse/fuse_api.h"

namespace vtdirect_mount {

class Mount;

/// The table by which libfuse calls this program. The session's user data is the Mount.
[[nodiscard]] const fuse_lowlevel_ops& Operations();

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

// attribute_operations.cpp
void OnGetExtended(fuse_req_t request, fuse_ino_t node, const char* name, std::size_t size);
void OnListExtended(fuse_req_t request, fuse_ino_t node, std::size_t size);

}  // namespace vtdirect_mount
