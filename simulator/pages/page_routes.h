#pragma once

#include "simulator/routes/service_context.h"
#include "simulator/wire/router.h"

namespace vantry_sim {

/// The pages that browsers are sent to, and what their script asks: the repository as a tree, documents with
/// versions, checkouts and attributes, the asking user's workspaces, and a form for attributes.
void AddPageRoutes(Router& router, const ServiceContext& context);

}  // namespace vantry_sim
