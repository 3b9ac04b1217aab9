#pragma once

#include <optional>
#include <string>

#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/failures/failure.h"
#include "hosts/cli/failures/result.h"
#include "hosts/cli/program/host.h"

/// What a checkout, a check-in and an undo say when they don't happen: the step, what is now on the
/// server, and what to do next. Each asks the server, and changes nothing on it.
namespace vtdirect_cli {

/// What can end a checkout.
enum class CheckoutEnd { Checkin, Undo };

/// What is there after a failure, as the server was asked for it.
struct StateOnServer {
  std::string text;
  std::string next = "the same command can be given again";  ///< what a user may do about it
  bool isUnchanged = false;  ///< the server has said that nothing of the change was carried out
};

/// What is said of a change of which nothing is to be seen, though a request of it may have been carried out: the
/// server, or a proxy, may have it still, so that it comes after the question. Its entry is in the journal.
/// @param now   what the server has answered: "it is not checked out"
/// @param noun  of the change: "the checkout"
[[nodiscard]] StateOnServer NotSeenYet(const std::string& now, const std::string& noun);

/// The failure with the state on the server and what to do about it.
[[nodiscard]] Failure WithState(Failure failure, const StateOnServer& state);

/// A command line of this program in quotes, the address as a shell takes it.
[[nodiscard]] std::string CommandToType(const std::string& command, const std::string& address);

/// What to do when it is not known whether a checkout has ended.
[[nodiscard]] std::string AdviceAfterEnd(CheckoutEnd end, const std::string& uid);

/// Why a document can't be checked out as it is; nothing when it can.
/// @param address  as it was given
/// @param uid      its UID; empty for one that wasn't found
[[nodiscard]] std::optional<Failure> RefusalOfCheckout(Host& host, const std::string& address,
                                                       const std::string& uid);

/// Why a checkout has failed although nothing seemed to prevent it.
[[nodiscard]] Failure CheckoutFailure(Host& host, const std::string& address, const std::string& uid);

/// The state of a checkout that is to end; a failure if there is no working copy whose checkout could end. A
/// temporary workspace whose document has gone on without it can still be undone, which clears it away.
[[nodiscard]] Result<CheckoutState> RequireCheckout(Host& host, CheckoutEnd end, const std::string& address,
                                                    const std::string& uid);

/// Why a check-in or an undo of a working copy has failed.
[[nodiscard]] Failure EndFailure(Host& host, CheckoutEnd end, const std::string& address,
                                 const std::string& uid);

}  // namespace vtdirect_cli
