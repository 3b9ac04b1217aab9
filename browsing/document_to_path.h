#pragma once

#include <string>

#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// The path of a document, relative to the server. Makes requests, on this thread.
/// @param id          a CheckoutId or a plain id; in a workspace of the user's it gives the path in there
/// @param folderOnly  the folder's path with its closing "/", or the workspace's without one
/// @param latestForm  without a version, so that the path always means the newest one
/// @return empty when the document cannot be read or is neither in a folder nor in a workspace of the
///         user's
[[nodiscard]] std::string FindDocumentPath(ServerContext& server, const char* id, bool folderOnly,
                                           bool latestForm);

}  // namespace lxservices::cms_interface::vantry
