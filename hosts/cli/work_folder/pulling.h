#pragma once

#include "hosts/cli/failures/result.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/work_folder/comparison.h"

namespace vtdirect_cli {

/// How many requests go at a time unless --parallel says otherwise, and at most.
inline constexpr unsigned usualThreads = 4;
inline constexpr unsigned mostThreads = 16;

/// The value of --parallel.
/// @return a usage failure for one that can't be meant
[[nodiscard]] Result<unsigned> ReadThreads(const Arguments& arguments);
[[nodiscard]] OptionRow ParallelOption();

/// The values of --parallel and --retries.
/// @return a usage failure for one that can't be meant
[[nodiscard]] Result<Effort> ReadEffort(const Arguments& arguments);

/// Fetches the newest version of all that was not changed here, and tells of each file and, at the end, of all
/// failures. What was fetched stays when others fail. Makes requests.
/// @param folder  locked
[[nodiscard]] ExitCode PullAll(Host& host, WorkFolder& folder, const RemoteTree& tree, Effort effort);

/// Tells what PullAll would do with each file, and does nothing. Makes no request.
/// @param folder  null for one that is not there yet
[[nodiscard]] ExitCode TellPull(Host& host, WorkFolder* folder, const RemoteTree& tree);

/// The members of what a pull prints with --json.
[[nodiscard]] std::vector<MemberRow> PullMembers();

}  // namespace vtdirect_cli
