#include "platform/environment.h"

#include <cstdlib>

namespace dp::Environment {

bool Test(const char* name) {
  return !Get(name).empty();
}

std::string Get(const char* name) {
  const char* value = name == nullptr ? nullptr : std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

}  // namespace dp::Environment
