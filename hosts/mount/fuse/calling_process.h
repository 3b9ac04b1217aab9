#pragma once

#include <sys/types.h>

#include <string>

namespace vtdirect_mount {

/// The name of the program that makes a call, as the kernel keeps it; empty when it is gone.
/// @param thread  as the kernel tells it of a request
[[nodiscard]] std::string ProgramOf(pid_t thread);

/// The process that a thread belongs to; the number itself when it is gone.
[[nodiscard]] pid_t ProcessOf(pid_t thread);

}  // namespace vtdirect_mount
