#pragma once

#include <rapidjson/document.h>

#include <string>

#include "connection/rest_stream.h"
#include "connection/server_context.h"

namespace lxservices::cms_interface::vantry {

/// A JSON POST with the nonce: fetches the nonce if there is none, sends the body from a temporary file and
/// holds that file until the response has been read. Constructing it performs the exchange, on this thread.
/// It is neither copied nor moved.
class JsonPost {
 public:
  /// @param body  its compact JSON text is sent; when the file for it cannot be made, the request goes
  ///              without a body
  JsonPost(ServerContext& server, const std::string& path, const rapidjson::Value& body);

  [[nodiscard]] RestStream& response() { return response_; }

 private:
  std::string csrfHeader_;
  ScopedTempPath bodyFile_;
  RestStream response_;
};

}  // namespace lxservices::cms_interface::vantry
