#pragma once

#include <string>
#include <vector>

#include "connection/rest_items.h"
#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// The objects of a type that pass a filter: one GET on this thread, nothing traced.
///
/// The answer must be a bare array; a wrapped one, as the context lists have, gives no rows.
/// @param typeId  is escaped
/// @param select  attribute names; goes into the query as it is; may be empty
/// @param filter  goes into the query as it is, so its values are escaped by the caller; may be empty
/// @return with the status of ReadRestItems
Result<std::vector<RestItem>> QueryObjects(ServerContext& server, const std::string& typeId,
                                           const std::string& select, const std::string& filter);

}  // namespace lxservices::cms_interface::vantry
