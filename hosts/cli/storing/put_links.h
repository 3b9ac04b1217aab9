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

/// Those of the links that the document at this UID doesn't have. Warns, and gives none, if that could not be found
/// out. Makes requests.
[[nodiscard]] SourceLinks MissingLinks(Host& host, const std::string& uid, SourceLinks links);

}  // namespace vtdirect_cli
