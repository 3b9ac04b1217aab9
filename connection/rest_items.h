#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/result.h"
#include "connection/http_connection.h"

namespace lxservices::cms_interface::vantry {

/// One row of a REST list.
struct RestItem {
  std::string id;
  std::string typeId;
  std::map<std::string, std::string> attributes;
};

/// Where the list is in the answer.
enum class RestListForm {
  Bare,    ///< the answer is the list
  Wrapped  ///< in the member "items" of an object; a bare list is taken too
};

/// The one reader of the server's REST lists: one GET, on this thread.
///
/// A success with a broken body gives no rows; callers treat it as an empty list.
/// @return with Ok, for an HTTP status in 200 to 299, a row for each element of the list, an empty one for
///         what is no object; Unauthorized for 401; ConnectionFailed for any other failure
Result<std::vector<RestItem>> ReadRestItems(const std::shared_ptr<HttpConnection>& connection,
                                            const std::string& path, RestListForm form);

}  // namespace lxservices::cms_interface::vantry
