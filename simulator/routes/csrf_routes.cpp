#include "simulator/routes/routes.h"
#include "simulator/wire/json.h"
#include "simulator/wire/odata_answers.h"

namespace vantry_sim {
namespace {

constexpr const char* nonceKey = "X-Zvk-Nonce";

Response RestNonce(const std::string& nonce) {
  JsonText json;
  json.StartObject().Key("items").StartArray().StartObject();
  json.Member("id", "csrf").Member("typeId", "csrf").Key("attributes").StartObject();
  json.Member("nonce_key", nonceKey).Member("nonce", nonce);
  json.EndObject().EndObject().EndArray().EndObject();
  Response response;
  response.once = true;
  response.body = json.Take();
  return response;
}

Response ODataNonce(const std::string& nonce) {
  JsonText json;
  json.StartObject();
  json.Member("@odata.context", "$metadata#ZVK.CSRFToken");
  json.Member("NonceKey", nonceKey).Member("NonceValue", nonce).EndObject();
  Response response = ODataResponse(json.Take());
  response.once = true;
  return response;
}

}  // namespace

void AddCsrfRoutes(Router& router, const ServiceContext& context) {
  router.Add(
      "GET", "servlet/rest/security/csrf",
      [&context](const Request& request) { return RestNonce(context.nonces.For(request)); }, "the nonce");
  if (!HasOData(context.options.generation)) return;
  router.Add(
      "GET", "servlet/odata/v1/ZVK/GetCSRFToken()",
      [&context](const Request& request) { return ODataNonce(context.nonces.For(request)); },
      "the same nonce");
}

}  // namespace vantry_sim
