#include "documents/storing/json_post.h"

#include "documents/storing/document_writer.h"

namespace lxservices::cms_interface::vantry {

JsonPost::JsonPost(ServerContext& server, const std::string& path, const rapidjson::Value& body)
    : csrfHeader_(server.CsrfHeader()),
      bodyFile_(WriteJsonBodyFile(body)),
      response_(MakeRestRequest(server.http(), du::http::Method::Post, path.c_str(), bodyFile_.path().c_str(),
                                nullptr, csrfHeader_.c_str()),
                {}) {}

}  // namespace lxservices::cms_interface::vantry
