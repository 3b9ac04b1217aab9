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
std::string HostOf(const std::string& hostAndPort) {
  const auto colon = hostAndPort.rfind(':');
  const auto bracket = hostAndPort.rfind(']');
  const bool hasPort = colon != std::string::npos && (bracket == std::string::npos || colon > bracket);
  return hasPort ? hostAndPort.substr(0, colon) : hostAndPort;
}

std::string HostAndPort(const ServiceContext& context, const Request& request) {
  return IsHostAndPort(request.host) ? request.host : context.ownAddress;
}

std::string OtherDoor(const ServiceContext& context, const Request& request, int port) {
  return SchemeOf(context.options) + HostOf(HostAndPort(context, request)) + ":" + std::to_string(port) +
         context.options.prefix;
}

}  // namespace

std::string BaseUrl(const ServiceContext& context, const Request& request) {
  if (!context.options.codebaseUrl.empty()) return context.options.codebaseUrl;
  return SchemeOf(context.options) + HostAndPort(context, request) + context.options.prefix;
}

std::string PageBaseUrl(const ServiceContext& context, const Request& request) {
  return context.pagePort == 0 ? BaseUrl(context, request) : OtherDoor(context, request, context.pagePort);
}

std::string UploadBaseUrl(const ServiceContext& context, const Request& request) {
  return OtherDoor(context, request, context.uploadPort);
}

}  // namespace vantry_sim
