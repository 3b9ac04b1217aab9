#pragma once

#include <string>

#include "hosts/cli/checkouts/checkout_words.h"

/// The state on the server, asked by reads alone. An answer that did not come is never taken for a
/// no: what is not known is not assumed.
namespace vtdirect_cli {

/// Whether an object is there.
enum class Presence {
  There,    ///< the server shows it
  Gone,     ///< the server says that there is none
  NotKnown  ///< the question failed
};

/// Asks for an object by its UID. Makes a request.
[[nodiscard]] Presence PresenceOf(const std::string& uid);

/// The state of the checkout of a working copy in a temporary workspace. Makes requests.
///
/// The status is CheckoutInTempWorkspace only if the server shows the working copy itself; CheckoutNone,
/// CheckoutNotPossible and CheckoutByOther only if it says that the user doesn't hold the document;
/// CheckoutByUserUnrecorded if it says that they do, and that this working copy is not there. All else is
/// CheckoutStatusFailed.
/// @param uid  the working copy's, with its workspace
[[nodiscard]] CheckoutState StateOfTemporaryCopy(const std::string& uid);

/// Whether a working copy is there, in whatever workspace. One in a temporary workspace is there only if its checkout
/// has not ended. Makes requests.
[[nodiscard]] Presence PresenceOfWorkingCopy(const std::string& workingCopy);

/// Checks a document out into a temporary workspace whose name no other run of the program tries, and tries
/// again with the next name while another workspace has it. Makes requests.
/// @return the working copy's UID; empty when the checkout failed, with the reasons of the last try
[[nodiscard]] std::string CheckOutDocument(const std::string& document);

}  // namespace vtdirect_cli
