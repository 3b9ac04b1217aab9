#pragma once

#include <string>
#include <utility>

namespace lxservices::cms_interface::vantry {

/// Cuts an absolute URL at its path: what comes before the path, and the rest. Without a path the whole text
/// is the first and the second is empty. Pure.
[[nodiscard]] std::pair<std::string, std::string> SplitUrlAtPath(const std::string& url);

/// The same for the address of a content, as it is asked for: without its fragment, which is no server's
/// affair, and cut at its query when it has no path. Pure.
[[nodiscard]] std::pair<std::string, std::string> SplitContentUrl(const std::string& url);

}  // namespace lxservices::cms_interface::vantry
