#include "simulator/routes/service_context.h"

namespace vantry_sim {
namespace {

std::string SchemeOf(const Options& options) {
  return SpeaksTls(options) ? "https://" : "http://";
}

bool IsHostAndPort(const std::string& text) {
  if (text.empty() || text.size() > 255) return false;
  for (const char c : text) {
    const bool fits = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      c == '.' || c == '-' || c == '_' || c == ':' || c == '[' || c == ']';
    if (!fits) return false;
  }
  return true;
}

/// The host of a Host header without its port; an IPv6 address keeps its brackets.
std::string HostOf(const std::string& host_and_port) {
  const auto colon = host_and_port.rfind(':');
  const auto bracket = host_and_port.rfind(']');
  const bool has_port = colon != std::string::npos && (bracket == std::string::npos || colon > bracket);
  return has_port ? host_and_port.substr(0, colon) : host_and_port;
}

std::string HostAndPort(const ServiceContext& context, const Request& request) {
  return IsHostAndPort(request.host) ? request.host : context.own_address;
}

std::string OtherDoor(const ServiceContext& context, const Request& request, int port) {
  return SchemeOf(context.options) + HostOf(HostAndPort(context, request)) + ":" + std::to_string(port) +
         context.options.prefix;
}

}  // namespace

std::string BaseUrl(const ServiceContext& context, const Request& request) {
  if (!context.options.codebase_url.empty()) return context.options.codebase_url;
  return SchemeOf(context.options) + HostAndPort(context, request) + context.options.prefix;
}

std::string PageBaseUrl(const ServiceContext& context, const Request& request) {
  return context.page_port == 0 ? BaseUrl(context, request) : OtherDoor(context, request, context.page_port);
}

std::string UploadBaseUrl(const ServiceContext& context, const Request& request) {
  return OtherDoor(context, request, context.upload_port);
}

}  // namespace vantry_sim
