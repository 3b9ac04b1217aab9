#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "connection/server_context.h"

namespace vtdirect_test {

/// Begins an operation on a server, as a server object does for each of its calls. The context is gone when
/// this thread begins the next one.
template <typename... Services>
lxservices::cms_interface::vantry::ServerContext& Begin(
    std::shared_ptr<lxservices::cms_interface::vantry::VtConnection> connection,
    const Services&... services) {
  static thread_local std::optional<lxservices::cms_interface::vantry::ServerContext> begun;
  return begun.emplace(std::move(connection), services...);
}

}  // namespace vtdirect_test
