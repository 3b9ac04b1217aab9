#pragma once

#include <vtdirect/outcome.h>

#include <string>

namespace vtdirect_mount {

/// The error number by which a program learns why a request failed: EIO for a server that is away or answers
/// nonsense, ETIMEDOUT for one that is silent, EACCES for what it refuses, ENOENT for what is not there.
/// @param outcome  what was collected around the call that failed
[[nodiscard]] int ErrorOf(const VtDirectManager::Outcome& outcome);

/// Whether the error says that nothing was learned, so that what was known before still counts.
[[nodiscard]] bool IsOfTheServersAbsence(int error);

/// The reason for the log: "download: timed out, //plm/...".
[[nodiscard]] std::string WordsOf(const VtDirectManager::Outcome& outcome);

}  // namespace vtdirect_mount
