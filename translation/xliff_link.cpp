#include "translation/xliff_link.h"

#include "base/failure_trace.h"
#include "base/tracers.h"
#include "connection/json_members.h"
#include "documents/storing/text_file.h"

namespace lxservices::cms_interface::vantry {

bool LinkXliffDocument(ServerContext& server, const std::string& sourceId, const std::string& xliffId) {
  const FailureStep step("link the XLIFF document");
  // The ids go in as they are, with no escaping: that is the body that servers know.
  const ScopedTempPath body(WriteTextFile(
      MakeTempFile("upload", "json"),
      "{ \"oidForQ7zkDocument\":\"" + sourceId + "\", \"oidForXliffDocument\":\"" + xliffId + "\" }"));
  if (body.path().empty()) return false;
  const std::string headers = server.ODataWriteHeaders();
  RestStream response(MakeRestRequest(server.http(), du::http::Method::Post,
                                      "servlet/odata/v1/DynamicDocMgmt/CreateXliffLink", body.path().c_str(),
                                      nullptr, headers.c_str()),
                      {});
  return ToldSuccess(response, "Failed to link documents");
}

bool ToldSuccess(RestStream& response, const std::string& failure) {
  rapidjson::Document answer;
  if (!response.succeeded() || !ParseJsonResponse(response, answer)) {
    TracerFor(Follows(), VtDirectXliffTracer())(dp::TraceType::Error, "%s with error %d : %s\n",
                                                failure.c_str(), response.status(),
                                                response.errorText().c_str());
    return false;
  }
  const rapidjson::Value* value = FindString(answer, "value");
  const bool isSuccess = value != nullptr && TextView(*value) == "Success";
  if (value == nullptr) response.ReportBroken();
  if (value != nullptr && !isSuccess) ReportReason({FailureKind::Refused});
  return isSuccess;
}

}  // namespace lxservices::cms_interface::vantry
