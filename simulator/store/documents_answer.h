#pragma once

#include <string>
#include <vector>

#include "simulator/routes/service_context.h"
#include "simulator/wire/messages.h"

namespace vantry_sim {

/// An answer that is an array of whole documents, as the asking user sees them. An id without a document is
/// left out.
Response DocumentsResponse(const ServiceContext& context, const Request& request,
                           const std::vector<std::string>& oids);

}  // namespace vantry_sim
