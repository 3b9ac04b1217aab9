#pragma once

#include <string>
#include <vector>

#include "connection/rest_items.h"
#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// Appends the objects of a type that pass a filter: one GET on this thread, nothing traced.
///
/// The answer must be a bare array; a wrapped one, as the context lists have, gives no rows.
/// @param typeId  is escaped
/// @param select  attribute names; goes into the query as it is; may be empty
/// @param filter  goes into the query as it is, so its values are escaped by the caller; may be empty
/// @return whether the HTTP status was in 200 to 299
[[nodiscard]] bool QueryObjects(ServerContext& server, const std::string& typeId, const std::string& select,
                                const std::string& filter, std::vector<RestItem>& rows);

}  // namespace lxservices::cms_interface::vantry
