#include "server/create_file_server.h"

#include <utility>

#include "base/server_key.h"
#include "server/vt_rest_legacy_file_server.h"

namespace lxservices::cms_interface {

std::shared_ptr<FileServer> CreateFileServer(const char* url, vantry::AuthFunction auth) {
  return CreateFileServer(url, NormalizeServerUri(url), std::move(auth));
}

std::shared_ptr<FileServer> CreateFileServer(const char* url, const std::string& key,
                                             vantry::AuthFunction auth) {
  // Without a key no UID could name what such a server answers.
  const auto reach = key.empty() ? vantry::Reach::Nowhere : vantry::Reach::Server;
  auto connection = std::make_shared<vantry::VtConnection>(url, std::move(auth), reach);
  return std::make_shared<vantry::VtRestLegacyFileServer>(std::move(connection), key);
}

}  // namespace lxservices::cms_interface
