#pragma once

#include <optional>
#include <string>

#include "connection/server_context.h"

/// The context that a source XLIFF is stored in. Requests on this thread; nothing is traced.
namespace lxservices::cms_interface::vantry {

/// The context that holds a cabinet. One GET a page. A cabinet in one context decides by itself; of several
/// the one of that name does.
/// @return empty when it cannot be told
[[nodiscard]] std::string FindContextByCabinet(ServerContext& server, const std::string& contextName,
                                               const std::string& cabinetId, const std::string& contextType);

/// The first context of a name and a type, types compared without regard to case. One GET.
/// @return its id, empty when none fits; nothing when the list could not be read
[[nodiscard]] std::optional<std::string> FindContextByName(ServerContext& server,
                                                           const std::string& contextName,
                                                           const std::string& contextType);

}  // namespace lxservices::cms_interface::vantry
