#include "simulator/service_context.h"

namespace vantry_sim {
namespace {

bool IsHostAndPort(const std::string& text) {
  if (text.empty() || text.size() > 255) return false;
  for (const char c : text) {
    const bool fits = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      c == '.' || c == '-' || c == '_' || c == ':' || c == '[' || c == ']';
    if (!fits) return false;
  }
  return true;
}

}  // namespace

std::string BaseUrl(const ServiceContext& context, const Request& request) {
  if (!context.options.codebase_url.empty()) return context.options.codebase_url;
  const std::string& host = IsHostAndPort(request.host) ? request.host : context.own_address;
  return "http://" + host + context.options.prefix;
}

}  // namespace vantry_sim
