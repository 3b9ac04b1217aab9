#pragma once

#include <vtdirect/vt_direct_manager.h>

#include <string>

#include "hosts/cli/failures/result.h"
#include "hosts/cli/program/host.h"

/// Working copies that are not kept here: they were made on another machine, or by a program that was killed.
/// Only the server can tell them.
namespace vtdirect_cli {

/// What a search for the user's working copy of a document found.
struct FoundCopy {
  std::string uid;            ///< to go on with; empty when there is no working copy to be found
  std::string workspaceName;  ///< of the temporary workspace that it is in
};

/// Looks for the user's working copy of a document in the temporary workspaces of its server. Makes requests,
/// that only read.
///
/// A question that failed, several copies, and a copy of which the server does not tell the document are
/// failures, which name what was found: none of them is taken for an answer.
/// @param address  as it was given, for a reader
/// @param uid      of the document, or of the copy by its own id
[[nodiscard]] Result<FoundCopy> SearchForCopy(Host& host, const std::string& address, const std::string& uid);

/// SearchForCopy for an object that the user holds and of which no checkout is kept, and what its result means
/// for a command that works on the copy. Tells the user which copy it takes. No request is made when the
/// status says that the user doesn't hold the object.
/// @param status  of the object, as GetCheckoutStatus gave it
/// @param uid     of the object
/// @return the UID to go on with, which is the one that was given when nothing else was found; a failure also
///         for a document that is only shown in a workspace while its working copy is in another one
[[nodiscard]] Result<FoundCopy> CopyToGoOnWith(Host& host, const std::string& address,
                                               VtDirectManager::VtCheckoutStatus status,
                                               const std::string& uid);

}  // namespace vtdirect_cli
