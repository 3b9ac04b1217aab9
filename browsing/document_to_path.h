#pragma once

#include <string>

#include "base/checkout_id.h"
#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// What the path of a document is to name.
enum class DocumentPathForm {
  ThisVersion,    ///< a document that is not the newest gets its version
  LatestVersion,  ///< without a version, so that the path always means the newest one
  Folder          ///< the folder with its closing "/", or the workspace without one
};

/// The path of a document, relative to the server. Makes requests, on this thread.
/// @param id  in a workspace of the user's it gives the path in there
/// @return empty when the document cannot be read or is neither in a folder nor in a workspace of the
///         user's
[[nodiscard]] std::string FindDocumentPath(ServerContext& server, const CheckoutId& id,
                                           DocumentPathForm form);

}  // namespace lxservices::cms_interface::vantry
