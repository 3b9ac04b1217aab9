#include "simulator/routes/routes.h"

namespace vantry_sim {
namespace {

std::string InformationDocument(const Options& options) {
  std::string text = "ServerName:vantry-sim\n";
  const auto add = [&](const char* key, const std::string& value) {
    text.append(key).append(":" + value + "\n");
  };
  add("ServerMajorVersion", std::to_string(options.version.major));
  add("ServerMinorVersion", std::to_string(options.version.minor));
  add("ServerServicepackVersion", std::to_string(options.version.servicePack));
  add("ServerCPSVersion", std::to_string(options.version.cps));
  add("ServerGeneration", std::string(WordOf(options.generation)));
  // A server tells an address of its own only when it was given one: clients move over to what they read
  // here.
  if (!options.codebaseUrl.empty()) add("CodebaseURL", options.codebaseUrl);
  return text;
}

}  // namespace

void AddIdentificationRoutes(Router& router, const ServiceContext& context) {
  router.Add(
      "GET", "servlet/OrvetGW",
      [&context](const Request&) {
        Response response;
        response.contentType = "text/plain;charset=UTF-8";
        response.body = InformationDocument(context.options);
        return response;
      },
      "who the server is, as lines of `key:value`");
}

}  // namespace vantry_sim
