#pragma once

#include <string>

#include "simulator/messages.h"

namespace vantry_sim {

/// An OData answer with a JSON body.
inline Response ODataResponse(std::string body) {
  Response response;
  response.content_type = "application/json;odata.metadata=minimal";
  response.headers.emplace_back("OData-Version", "4.0");
  response.body = std::move(body);
  return response;
}

}  // namespace vantry_sim
