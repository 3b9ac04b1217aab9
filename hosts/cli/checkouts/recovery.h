#pragma once

#include <string>
#include <vector>

#include "hosts/cli/checkouts/journal.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {

/// What the server says of an entry of the journal.
struct Finding {
  bool isKnown = false;       ///< whether the change was done or not is certain now
  bool hasEnded = false;      ///< the checkout of a check-in or an undo is over
  bool isSame = false;        ///< the server has the very bytes that a store has sent
  std::string workingCopy{};  ///< of a checkout that was done: its UID
  std::string words{};        ///< the state on the server, and what to do next
};

/// The SHA-256 of the content that the server has; empty when it could not be fetched. Makes requests.
[[nodiscard]] std::string SumOnServer(Host& host, const std::string& uid);

/// What is certain now.
[[nodiscard]] Finding Known(const std::string& words);

/// What is said of a change whose outcome could not be found out.
[[nodiscard]] Finding NotKnown(const std::string& address);

/// Asks the server for the state, by reads alone. What it doesn't say is not assumed. Makes requests; a
/// store is compared with the bytes that the server has, which transfers them.
[[nodiscard]] Finding FindOutState(Host& host, const JournalEntry& entry);

/// Brings what is kept here up to date, clears away the temporary workspace of a checkout that is over, and
/// strikes the entry out. Makes requests.
void SettleEntry(Host& host, const JournalEntry& entry, const Finding& finding);

/// Strikes out the open entries of a change that can be made again without harm, and was now made.
/// @param uid  of the object that was changed
void SettleRepeated(Host& host, const std::string& step, const std::string& uid);

/// Warns of the open entries on these servers, with the state on the server. Makes requests if there are any.
/// @param urls  of the servers that a command works with
void WarnOfOpenEntries(Host& host, const std::vector<std::string>& urls);

}  // namespace vtdirect_cli
