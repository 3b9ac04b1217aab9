#include "connection/url_split.h"

#include "platform/uri.h"

namespace lxservices::cms_interface::vantry {

std::pair<std::string, std::string> SplitUrlAtPath(const std::string& url) {
  const auto [position, count] = du::GetURIPartPosCount(url, du::URIPart::Path);
  if (position == std::string::npos || count == 0) return {url, {}};
  return {url.substr(0, position), url.substr(position)};
}

std::pair<std::string, std::string> SplitContentUrl(const std::string& url) {
  const std::string asked = url.substr(0, url.find('#'));
  const std::size_t query = asked.find('?');
  auto pieces = SplitUrlAtPath(asked);
  if (!pieces.second.empty() || query == std::string::npos) return pieces;
  return {asked.substr(0, query), asked.substr(query)};
}

}  // namespace lxservices::cms_interface::vantry
