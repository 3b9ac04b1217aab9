#include "connection/url_split.h"

#include "platform/uri.h"

namespace lxservices::cms_interface::vantry {

std::pair<std::string, std::string> SplitUrlAtPath(const std::string& url) {
  const auto [position, count] = du::GetURIPartPosCount(url, du::URIPart::Path);
  if (position == std::string::npos || count == 0) return {url, {}};
  return {url.substr(0, position), url.substr(position)};
}

}  // namespace lxservices::cms_interface::vantry
