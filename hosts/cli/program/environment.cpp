#include "hosts/cli/program/environment.h"

#include <cstdlib>

namespace vtdirect_cli {

std::string Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::string StateDirectory() {
  const std::string stateHome = Environment("XDG_STATE_HOME");
  if (stateHome.starts_with('/')) return stateHome + "/vtdirect";
  const std::string home = Environment("HOME");
  return home.empty() ? "" : home + "/.local/state/vtdirect";
}

}  // namespace vtdirect_cli
