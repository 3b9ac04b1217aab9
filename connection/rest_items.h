#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/status.h"
#include "connection/http_connection.h"

namespace lxservices::cms_interface::vantry {

/// One row of a REST list.
struct RestItem {
  std::string id;
  std::string typeId;
  std::map<std::string, std::string> attributes;
};

/// The one reader of the server's REST lists: one GET, on this thread.
///
/// A success with a broken body gives true and no rows; callers treat it as an empty list.
/// @param rows          one is appended for each element of the list, an empty one for what is no object
/// @param itemsWrapped  the list is in the member "items" of an object
/// @param status        may be null; Ok, Unauthorized for 401, ConnectionFailed for any other failure
/// @return whether the HTTP status was in 200 to 299
[[nodiscard]] bool ReadRestItems(const std::shared_ptr<HttpConnection>& connection, const std::string& path,
                                 std::vector<RestItem>& rows, bool itemsWrapped, Status* status);

}  // namespace lxservices::cms_interface::vantry
