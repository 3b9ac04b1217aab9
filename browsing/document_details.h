#pragma once

#include <memory>

#include "base/status.h"
#include "browsing/document_query.h"
#include "connection/service_flags.h"
#include "connection/vt_connection.h"

namespace lxservices::cms_interface::vantry {

/// Reads a document and fills what the query asks for, on this thread: one GET; for `latest` also the
/// searches of FindLatestCandidates; and one GET of the versions when they are asked for, or when the
/// searches did not settle the newest one.
/// @param services  has been refreshed
/// @param id        a CheckoutId or a plain id; ids that come back stand in its workspace
/// @param query     `versions` and `contents` are appended to. Where neither the searches nor the versions
/// name
///                  the newest version, `latest->version` is left as it was.
/// @return Ok, or the status of a failed read of the document, traced; no other failure counts
Status GetDocumentDetails(const std::shared_ptr<VtConnection>& connection, const ServiceFlags& services,
                          const char* id, DocumentQuery& query);

}  // namespace lxservices::cms_interface::vantry
