#pragma once

#include "hosts/cli/failures/failure.h"
#include "hosts/cli/storing/put_upload.h"

namespace vtdirect_cli {

/// Why an upload failed: the step, what is on the server now, and what to do next. The library's status
/// tells the step; that is asked of the server afterwards. Makes requests.
[[nodiscard]] Failure PutFailure(Host& host, const PutRequest& request, const PutTarget& target,
                                 const PutOutcome& outcome);

/// Why the check-in after a store failed. Makes requests.
/// @param uid  the working copy's
[[nodiscard]] Failure PutCheckInFailure(Host& host, const std::string& uid);

}  // namespace vtdirect_cli
