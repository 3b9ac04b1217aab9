#pragma once

#include <memory>

#include "base/status.h"
#include "browsing/document_query.h"
#include "connection/service_flags.h"
#include "connection/vt_connection.h"

namespace lxservices::cms_interface::vantry {

/// Reads a document and fills what the query asks for. Makes requests, on this thread.
/// @param id  a CheckoutId or a plain id
/// @return Ok, or the status of a failed read, traced
Status GetDocumentDetails(const std::shared_ptr<VtConnection>& connection, const ServiceFlags& services,
                          const char* id, DocumentQuery& query);

}  // namespace lxservices::cms_interface::vantry
