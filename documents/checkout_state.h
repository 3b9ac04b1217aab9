#pragma once

#include <string>

namespace lxservices::cms_interface {

/// Where a document stands, as the server tells it.
struct VtCheckoutState {
  bool inWorkspace = false;
  bool inUserWorkspace = false;
  bool checkedOut = false;
  bool checkedOutByYou = false;
  bool isLatest = false;
  std::string checkedOutBy;
};

}  // namespace lxservices::cms_interface
