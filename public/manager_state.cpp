#include "public/manager_state.h"

#include <utility>

namespace lxservices::cms_interface {

std::shared_ptr<const ServerTable> ManagerState::table() const {
  const std::lock_guard lock(tableMutex_);
  return table_;
}

bool ManagerState::ReplaceTable(const std::shared_ptr<const ServerTable>& seen, ServerTable next) {
  // The table that goes may hold the last share of a server; it is released after the lock.
  std::shared_ptr<const ServerTable> table = std::make_shared<const ServerTable>(std::move(next));
  const std::lock_guard lock(tableMutex_);
  if (table_ != seen) return false;
  table_.swap(table);
  return true;
}

ManagerState& TheManagerState() {
  static ManagerState state;
  return state;
}

}  // namespace lxservices::cms_interface
