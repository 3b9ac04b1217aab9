#pragma once

#include "hosts/cli/commands/command.h"
#include "hosts/cli/files/content_download.h"

namespace vtdirect_cli {

/// Settles what is fetched for an address, and from where, as `get` of one document does it.
using SettleSource = Result<Download> (*)(Host& host, const Arguments& arguments, const std::string& address,
                                          const std::string& place);

/// The options of `get` for many documents.
[[nodiscard]] std::vector<OptionRow> GetManyOptions();

/// Fetches all documents that the addresses mean, several at a time, each to a file of its own, and tells at the
/// end how many. What one of them fails with keeps no other. A file that `get` did not write is replaced by none
/// of them, unless --force says so. Makes requests.
/// @param settle  for a document that no listing has told of, or that is checked out by vtdirect
[[nodiscard]] ExitCode GetMany(Host& host, const Arguments& arguments, SettleSource settle);

}  // namespace vtdirect_cli
