#include "browsing/object_query.h"

#include "connection/url_escape.h"

namespace lxservices::cms_interface::vantry {

Result<std::vector<RestItem>> QueryObjects(ServerContext& server, const std::string& typeId,
                                           const std::string& select, const std::string& filter) {
  std::string path = "servlet/rest/objects?typeId=" + EscapeForUrl(typeId);
  if (!select.empty()) path += "&$select=" + select;
  if (!filter.empty()) path += "&$filter=" + filter;
  return ReadRestItems(server.http(), path, RestListForm::Bare);
}

}  // namespace lxservices::cms_interface::vantry
