#include "hosts/cli/environment.h"

#include <cstdlib>

namespace vtdirect_cli {

std::string Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace vtdirect_cli
