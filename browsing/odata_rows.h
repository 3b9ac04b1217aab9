#pragma once

#include <rapidjson/document.h>

#include <functional>
#include <string>

#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// Gets the array "value" of one page; false ends the reading.
using RowsVisitor = std::function<bool(const rapidjson::Value& rows)>;

/// Reads an OData answer page by page and shows the rows of each page to a visitor: one GET a page, on this
/// thread. A page whose root is no object ends the reading; one without an array "value" is passed over.
/// @return false when the page that was read last failed
bool VisitODataPages(ServerContext& server, const std::string& path, const RowsVisitor& visit);

}  // namespace lxservices::cms_interface::vantry
