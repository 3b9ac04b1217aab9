#include "simulator/wire/messages.h"

#include "simulator/wire/json.h"

namespace vantry_sim {

std::optional<std::string> Request::Query(std::string_view name) const {
  for (const auto& [key, value] : query) {
    if (key == name) return value;
  }
  return std::nullopt;
}

const std::string& Request::Path(std::string_view name) const {
  static const std::string None;
  const auto found = pathParameters.find(name);
  return found == pathParameters.end() ? None : found->second;
}

Response ErrorResponse(int status, std::string_view code, std::string_view message) {
  JsonText json;
  json.StartObject().Key("error").StartObject();
  json.Member("code", code).Member("message", message);
  json.EndObject().EndObject();
  Response response;
  response.status = status;
  response.body = json.Take();
  return response;
}

}  // namespace vantry_sim
