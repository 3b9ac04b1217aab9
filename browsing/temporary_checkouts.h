#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/checkout_id.h"
#include "connection/server_context.h"

namespace lxservices::cms_interface {

/// A working copy of the connected user in a temporary workspace.
struct TemporaryCheckoutEntry {
  std::string id;  ///< a temporary CheckoutId; empty when the document that it was taken from is not told
  std::string workspaceName;
  std::string number;
  std::string cadName;
  std::string version;
};

/// In the server's order.
using TemporaryCheckouts = std::vector<TemporaryCheckoutEntry>;

namespace vantry {

/// The copies of one document. One GET for the document, one for its context's workspaces, one for each
/// temporary workspace that may hold it, one for each copy.
/// @return nothing when a request failed
[[nodiscard]] std::optional<TemporaryCheckouts> ListTemporaryCheckoutsOf(ServerContext& server,
                                                                         const CheckoutId& id);

/// The copies of all documents below a directory above the sections: the root, a kind, or a context. Makes
/// the requests above for each context, and one or more to find the contexts.
/// @return nothing when a request failed, and for a path that leads elsewhere
[[nodiscard]] std::optional<TemporaryCheckouts> ListTemporaryCheckoutsBelow(ServerContext& server,
                                                                            std::string_view path);

}  // namespace vantry
}  // namespace lxservices::cms_interface
