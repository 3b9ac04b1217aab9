#pragma once

#include "base/checkout_id.h"
#include "base/status.h"
#include "browsing/document_query.h"
#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// Reads a document and fills what the query asks for, on this thread: the server's services are settled; one
/// GET; for `latest` also the searches of FindLatestCandidates; and one GET of the versions when they are
/// asked for, or when the searches did not settle the newest one.
/// @param id     ids that come back are in its workspace
/// @param query  `versions` and `contents` are appended to. Where neither the searches nor the versions name
///               the newest version, `latest->version` is left as it was.
/// @return Ok, or the status of a failed read of the document, traced; no other failure counts
Status GetDocumentDetails(ServerContext& server, const CheckoutId& id, DocumentQuery& query);

}  // namespace lxservices::cms_interface::vantry
