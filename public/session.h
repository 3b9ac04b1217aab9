#pragma once

#include <set>
#include <string>

namespace VtDirectManager {

/// The servers that a host's batch of work has written off. The host holds the only lasting reference.
class Session {
 public:
  std::set<std::string> blockedKeys;
};

}  // namespace VtDirectManager
