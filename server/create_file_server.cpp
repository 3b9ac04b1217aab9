#include "server/create_file_server.h"

#include <utility>

#include "base/server_key.h"
#include "server/vt_rest_legacy_file_server.h"

namespace lxservices::cms_interface {

std::shared_ptr<FileServer> CreateFileServer(const char* url, vantry::AuthFunction auth) {
  auto connection = std::make_shared<vantry::VtConnection>(url, std::move(auth));
  return std::make_shared<vantry::VtRestLegacyFileServer>(std::move(connection), NormalizeServerUri(url));
}

}  // namespace lxservices::cms_interface
