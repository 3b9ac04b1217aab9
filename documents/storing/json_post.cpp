#include "documents/storing/json_post.h"

#include "documents/storing/document_writer.h"

namespace lxservices::cms_interface::vantry {

JsonPost::JsonPost(VtConnection& connection, const std::string& path, const rapidjson::Value& body)
    : csrfHeader_(connection.CsrfHeader()),
      bodyFile_(WriteJsonBodyFile(body)),
      response_(MakeRestRequest(connection.http(), du::http::Method::Post, path.c_str(),
                                bodyFile_.path().c_str(), nullptr, csrfHeader_.c_str()),
                {}) {}

}  // namespace lxservices::cms_interface::vantry
