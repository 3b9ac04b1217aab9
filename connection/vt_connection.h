#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "connection/http_connection.h"
#include "connection/server_knowledge.h"

namespace lxservices::cms_interface::vantry {

/// What is particular to a Vantry server, above its HttpConnection: the nonce against cross-site request
/// forgery, the OData header lines, and what has been learned of the server. Held shared by all that work
/// with one server, on any number of threads.
class VtConnection {
 public:
  /// Makes the HttpConnection; sends nothing.
  VtConnection(const std::string& url, AuthFunction auth, Reach reach = Reach::Server);

  [[nodiscard]] const std::shared_ptr<HttpConnection>& http() const { return http_; }

  /// The nonce's header line for REST requests that change something. The first call fetches it by the REST
  /// route; a failed fetch gives the empty text, and the next call tries again.
  [[nodiscard]] std::string CsrfHeader();

  /// The header lines of every OData read.
  [[nodiscard]] static const char* ODataHeaders();

  /// The header lines of every OData write, the nonce's last. The first call fetches it by the OData route;
  /// after a failed fetch the text ends in CR LF, and the next call tries again.
  [[nodiscard]] std::string ODataWriteHeaders();

  /// A connection of its own for another URL, with the same authentication: pages, contents and uploads may
  /// lie on another host. Sends nothing. An empty URL gives an empty pointer, and so does an "http" URL for a
  /// server by "https" unless the settings allow it, which is traced and reported.
  [[nodiscard]] std::shared_ptr<HttpConnection> MakeSideConnection(const std::string& url) const;

  /// What has been learned of the server. Two threads may learn the same at once.
  [[nodiscard]] ServerKnowledge& knowledge() { return knowledge_; }

 private:
  const std::shared_ptr<HttpConnection> http_;
  const AuthFunction auth_;
  ServerKnowledge knowledge_;
};

}  // namespace lxservices::cms_interface::vantry
