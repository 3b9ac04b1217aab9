#pragma once

#include "hosts/mount/fuse/fuse_api.h"

namespace vtdirect_mount {

/// Lets the kernel look up several names of a directory at a time; otherwise one slow document holds up all who
/// look for another in its directory. A program has to ask for that when it answers the kernel's first request.
/// libfuse 3.14, that of Debian 12, takes the wish (FUSE_CAP_PARALLEL_DIROPS) and never passes it on, so that its
/// answer is completed on the way.
/// @param session  mounted, and not in its loop yet
/// @return whether libfuse agrees; without, everything works, and waits more
[[nodiscard]] bool AskForParallelLookups(fuse_session* session);

}  // namespace vtdirect_mount
