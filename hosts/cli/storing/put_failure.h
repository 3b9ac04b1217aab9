#pragma once

#include "hosts/cli/failure.h"
#include "hosts/cli/storing/put_upload.h"

namespace vtdirect_cli {

/// Why an upload failed: the step, what now stands on the server, and what to do next. The library's status
/// tells the step; what stands is asked of the server afterwards. Makes requests.
[[nodiscard]] Failure PutFailure(Host& host, const PutRequest& request, const PutTarget& target,
                                 const PutOutcome& outcome);

/// Why the check-in behind a store failed. Makes requests.
/// @param uid  the working copy's
[[nodiscard]] Failure PutCheckInFailure(Host& host, const std::string& uid);

}  // namespace vtdirect_cli
