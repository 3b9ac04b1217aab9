#include "connection/server_context.h"

#include <utility>

namespace lxservices::cms_interface::vantry {

ServerContext::ServerContext(std::shared_ptr<VtConnection> connection)
    : connection_(std::move(connection)), settings_(CurrentSettings()) {}

ServerContext::ServerContext(std::shared_ptr<VtConnection> connection, const ServiceFlags& services)
    : ServerContext(std::move(connection)) {
  services_ = services;
}

const ServiceFlags& ServerContext::Services() {
  if (!services_) {
    ServiceFlags flags = connection_->knowledge().Services();
    EnsureServiceFlags(flags, *connection_);
    services_ = connection_->knowledge().LearnServices(flags);
  }
  return *services_;
}

ServerContext ServerContext::NextOperation() const {
  ServerContext next(connection_);
  next.services_ = services_;
  return next;
}

}  // namespace lxservices::cms_interface::vantry
