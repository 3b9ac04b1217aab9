#pragma once

#include <optional>

#include "hosts/cli/failures/result.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/put_target.h"

namespace vtdirect_cli {

/// The links that the document is to have: for an existing one those that it has, with the changes that the
/// request asks for. The library leaves out what isn't handed over, and drops without a failure what it can't
/// resolve, so both are looked at before anything is sent. Makes requests.
/// @return a failure for a link that would be lost, or that leads nowhere or to another server
[[nodiscard]] Result<SourceLinks> SettleLinks(Host& host, const PutRequest& request, const PutTarget& target);

/// Looks whether what was stored has the links that it was told of: the library leaves one out whose document the
/// server does not tell of while the store goes on. To be asked before a check-in, which makes that last. Makes
/// requests, unless there are no links.
/// @param uid           of what was stored
/// @param isCheckedOut  whether that is a working copy
/// @return what is true now and the command to type, when a link is missing, or when the request asks for a check-in
///         and whether one is missing could not be found out; without a check-in the latter is a warning
[[nodiscard]] std::optional<Failure> FailureOfLinks(Host& host, const PutRequest& request,
                                                    const std::string& uid, const SourceLinks& links,
                                                    bool isCheckedOut);

}  // namespace vtdirect_cli
