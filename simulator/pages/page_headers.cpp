#include "simulator/pages/embedded_files.h"

namespace vantry_sim {

std::vector<std::pair<std::string, std::string>> PageHeaders() {
  return {{"Content-Security-Policy",
           "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self'; "
           "form-action 'self'; base-uri 'self'; frame-ancestors 'none'"},
          {"X-Content-Type-Options", "nosniff"},
          {"Referrer-Policy", "no-referrer"},
          {"Cache-Control", "no-cache"}};
}

}  // namespace vantry_sim
