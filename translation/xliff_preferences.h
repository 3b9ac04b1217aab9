#pragma once

#include <map>
#include <string>

#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// Where and how a document's source XLIFF is to be stored; name to value in the server's own words.
using XliffPreferences = std::map<std::string, std::string>;

/// Asks the server for the preferences of a document. One GET a page, on this thread. A later value of a name
/// overrides an earlier one; after a failed page, what was read before it stays.
[[nodiscard]] XliffPreferences GetXliffPreferences(ServerContext& server, const std::string& documentId,
                                                   const std::string& sourceLanguage);

}  // namespace lxservices::cms_interface::vantry
