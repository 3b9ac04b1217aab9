#pragma once

#include <optional>
#include <string>

#include "base/checkout_id.h"
#include "connection/server_context.h"

namespace lxservices::cms_interface {

/// The state of a document, as the server tells it.
struct VtCheckoutState {
  bool inWorkspace = false;
  bool inUserWorkspace = false;
  bool checkedOut = false;
  bool checkedOutByYou = false;
  bool isLatest = false;
  std::string checkedOutBy;
};

namespace vantry {

/// Reads the state of a document: one GET on this thread, and a second one unless the id is that of a
/// temporary checkout.
/// @param id  its document is read
/// @return nothing, traced, when the document could not be read. Whether it is a working copy may have been
///         left open by the server; it counts as none then.
[[nodiscard]] std::optional<VtCheckoutState> GetCheckoutState(ServerContext& server, const CheckoutId& id);

}  // namespace vantry
}  // namespace lxservices::cms_interface
