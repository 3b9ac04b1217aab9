#pragma once

#include <vtdirect/outcome.h>

#include <string>

#include "hosts/cli/failures/failure.h"

namespace vtdirect_cli {

/// The failure of calls whose reasons were collected on the stack of their own thread: the class by the kind
/// of the cause, and its words after `what`, with the cause itself. Makes no request; any thread.
[[nodiscard]] Failure WhyFailed(const VtDirectManager::Outcome& outcome, const std::string& what);

}  // namespace vtdirect_cli
