#include "translation/xliff_publishing.h"

#include "base/failure_step.h"
#include "connection/url_escape.h"
#include "documents/storing/text_file.h"
#include "translation/xliff_link.h"

namespace lxservices::cms_interface::vantry {

bool MarkPublished(ServerContext& server, const std::string& documentId) {
  const FailureStep step("mark the document as published");
  const ScopedTempPath body(
      WriteTextFile(MakeTempFile("upload", "json"), "{ \"ZVKDDEXTENDEDDOCTYPE\":\"x-raomPublished\" }"));
  if (body.path().empty()) return false;
  const std::string path =
      "servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('" + EscapeForUrl(documentId) + "')";
  const std::string headers = server.ODataWriteHeaders();
  RestStream response(MakeRestRequest(server.http(), du::http::Method::Patch, path.c_str(),
                                      body.path().c_str(), nullptr, headers.c_str()),
                      {});
  return response.status() == 204 || ToldSuccess(response, "Failed to set document as published");
}

}  // namespace lxservices::cms_interface::vantry
