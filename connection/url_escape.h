#pragma once

#include <string>

#include "platform/uri.h"

namespace lxservices::cms_interface::vantry {

/// A value made fit for a URL's path or query. Literal parts of a URL are never passed through this. Pure.
[[nodiscard]] inline std::string EscapeForUrl(const std::string& value) {
  std::string escaped;
  du::URI_Escape(&escaped, value, 0, static_cast<std::size_t>(-1));
  return escaped;
}

}  // namespace lxservices::cms_interface::vantry
