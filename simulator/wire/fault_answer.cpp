#include "simulator/wire/fault_answer.h"

#include <string>

namespace vantry_sim {

Response FaultAnswer(const FaultAction& fault) {
  using Kind = FaultAction::Kind;
  if (fault.kind == Kind::Redirect) {
    Response response = ErrorResponse(fault.status, "fault", "this answer was asked for by a fault");
    response.headers.emplace_back("Location", fault.text);
    return response;
  }
  if (fault.kind == Kind::Busy) {
    Response response = ErrorResponse(fault.status, "fault", "this server was made busy by a fault");
    response.headers.emplace_back("Retry-After", std::to_string(fault.amount.value_or(0)));
    return response;
  }
  Response response = ErrorResponse(fault.status, "fault", "this answer was asked for by a fault");
  if (!fault.text.empty()) {
    const bool json = fault.text.starts_with('{') || fault.text.starts_with('[');
    response.contentType = json ? "application/json;charset=UTF-8" : "text/plain;charset=UTF-8";
    response.body = fault.text;
  }
  if (fault.status == 401) response.headers.emplace_back("WWW-Authenticate", "Basic realm=\"vantry-sim\"");
  return response;
}

}  // namespace vantry_sim
