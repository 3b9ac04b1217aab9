#pragma once

#include "hosts/cli/failures/result.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/put_request.h"
#include "hosts/cli/storing/put_target.h"

namespace vtdirect_cli {

/// The options of `put` that say when nothing is sent: "expect", "if-changed" and "dry-run".
[[nodiscard]] std::vector<OptionRow> PutConditionOptions();

/// Whether the options fit together. Makes no request.
[[nodiscard]] std::optional<Failure> RefusalOfConditions(const Arguments& arguments);

/// Why a file is not to be stored over a document of which somebody else has stored a version since: the newest
/// one is not the one that is expected. Makes a request.
/// @param expected  the version; of one that is not known nothing is sent
[[nodiscard]] std::optional<Failure> RefusalOfVersion(Host& host, const PutTarget& target,
                                                      const std::string& expected);

/// Whether the document has the bytes of the file already. Compares the sizes first, and fetches the content only
/// when they agree. Makes requests.
/// @return a failure when that could not be found out
[[nodiscard]] Result<bool> HasBytesAlready(Host& host, const PutRequest& request, const PutTarget& target);

}  // namespace vtdirect_cli
