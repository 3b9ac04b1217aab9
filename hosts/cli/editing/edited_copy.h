#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/program/host.h"

/// What the server has while a document is edited. An editor is open for hours, and what others store meanwhile,
/// from another terminal or a mount, must neither be thrown away nor stored over. Each function makes requests.
namespace vtdirect_cli {

/// What is in a working copy.
enum class CopyContent {
  AsKnown,
  Another,  ///< somebody has stored something else
  Gone,     ///< its checkout has ended
  NotKnown  ///< the question failed
};

/// @param known  SHA-256 of each content that loses nothing when it goes
[[nodiscard]] CopyContent LookIntoCopy(Host& host, const std::string& workingCopy,
                                       const std::vector<std::string>& known);

/// What a check-in has made whose answer named no new iteration, as a proxy's page doesn't.
/// @param document  UID of an iteration of it
/// @param sum       of what was to be checked in, SHA-256
/// @return the newest iteration, if the working copy is gone and the iteration has that content
[[nodiscard]] std::optional<std::string> IterationWith(Host& host, const std::string& document,
                                                       const std::string& workingCopy,
                                                       const std::string& sum);

}  // namespace vtdirect_cli
