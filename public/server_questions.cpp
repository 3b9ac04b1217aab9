#include <string>

#include "base/failure_step.h"
#include "base/step_words.h"
#include "connection/server_check.h"
#include "public/host_callbacks.h"
#include "public/vt_direct_manager.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

namespace {

StatusCode CodeOf(Status status) {
  switch (status) {
    case ConnectionFailed:
      return StatusConnectFailed;
    case Unauthorized:
      return StatusServerRefused;
    case Unsupported:
      return StatusServerUnsupported;
    default:
      return StatusOk;
  }
}

}  // namespace

bool ServerSupported(const char* url, StatusCode* code, std::string* message) {
  const FailureStep step(stepCheckServer);
  if (url == nullptr) {
    ReportReason({FailureKind::NotFound});
    return false;
  }
  // A copy: a host may hand in the very text that receives the answer, and the check empties that first.
  const std::string address = url;
  const Status status = vantry::CheckServer(address.c_str(), ForwardAuth, message);
  if (code != nullptr) *code = CodeOf(status);
  return status == Ok;
}

}  // namespace VtDirectManager
