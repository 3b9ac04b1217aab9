#include "simulator/simulator.h"

#include <cstdio>
#include <random>
#include <utility>

#include "simulator/authentication.h"
#include "simulator/data_directory.h"
#include "simulator/routes.h"

namespace vantry_sim {
namespace {

std::string RandomHexadecimal() {
  std::random_device device;
  std::string text;
  for (int i = 0; i < 4; ++i) {
    char part[9];
    std::snprintf(part, sizeof part, "%08x", device());
    text += part;
  }
  return text;
}

/// A target in absolute form, which a client sends to a proxy and every server accepts, becomes one with a
/// path in front.
std::string_view OriginForm(std::string_view target) {
  if (!target.starts_with("http://")) return target;
  const auto slash = target.find('/', 7);
  return slash == std::string_view::npos ? std::string_view("/") : target.substr(slash);
}

}  // namespace

Simulator::Simulator(Options options)
    : options_(std::move(options)),
      faults_(options_.faults),
      data_(std::make_unique<DataDirectory>(options_)) {
  context_ = std::make_unique<ServiceContext>(ServiceContext{options_, data_->database(), data_->contents(),
                                                             options_.bind_address, RandomHexadecimal()});
  AddIdentificationRoutes(router_, *context_);
  AddMetadataRoutes(router_, *context_);
  AddCsrfRoutes(router_, *context_);
  AddContextRoutes(router_, *context_);
  AddDocumentRoutes(router_, *context_);
  AddObjectRoutes(router_, *context_);
  AddGatewayRoutes(router_, *context_);
  AddFolderRoutes(router_, *context_);
  AddDataAdminRoutes(router_, *context_);
  AddSearchRoutes(router_, *context_);
  AddWorkspaceRoutes(router_, *context_);
  AddContentRoutes(router_, *context_);
  AddFeatureRoutes(router_, *context_);
}

Simulator::~Simulator() = default;

std::string Simulator::UserOf(std::string_view authorization) const {
  return Authenticate(authorization, options_.users).value_or("");
}

Response Simulator::Handle(Request& request) {
  if (request.user.empty()) {
    auto response = ErrorResponse(401, "unauthorized", "this server wants a user name and a password");
    response.headers.emplace_back("WWW-Authenticate", "Basic realm=\"vantry-sim\", charset=\"UTF-8\"");
    return response;
  }
  try {
    const std::lock_guard lock(mutex_);
    return Route(request);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vantry-sim: %s\n", error.what());
    return ErrorResponse(500, "internal", "the server failed; its error output says why");
  }
}

Response Simulator::Route(Request& request) {
  const TargetParts parts = SplitTarget(OriginForm(request.target));
  auto query = ParseQuery(parts.query);
  if (!query)
    return ErrorResponse(400, "bad-escape", "a % in the query has no two hexadecimal digits behind it");
  request.query = std::move(*query);

  std::string_view path = parts.path;
  if (!path.starts_with('/')) return ErrorResponse(400, "bad-target", "the request target is no path");
  const std::string& prefix = options_.prefix;
  if (!path.starts_with(prefix) || (path.size() > prefix.size() && path[prefix.size()] != '/')) {
    return ErrorResponse(404, "no-such-route", "this server has nothing outside its prefix");
  }
  request.path = path.substr(prefix.size());
  return router_.Dispatch(request, request.path);
}

}  // namespace vantry_sim
