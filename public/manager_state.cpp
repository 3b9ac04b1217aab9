#include "public/manager_state.h"

namespace lxservices::cms_interface {

ManagerState& TheManagerState() {
  static ManagerState state;
  return state;
}

}  // namespace lxservices::cms_interface
