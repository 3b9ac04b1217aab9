#include "simulator/routes/routes.h"
#include "simulator/wire/json.h"
#include "simulator/wire/odata_answers.h"

namespace vantry_sim {
namespace {

constexpr const char* kNonceKey = "X-Zvk-Nonce";

Response RestNonce(const ServiceContext& context) {
  JsonText json;
  json.StartObject().Key("items").StartArray().StartObject();
  json.Member("id", "csrf").Member("typeId", "csrf").Key("attributes").StartObject();
  json.Member("nonce_key", kNonceKey).Member("nonce", context.nonce);
  json.EndObject().EndObject().EndArray().EndObject();
  Response response;
  response.body = json.Take();
  return response;
}

Response ODataNonce(const ServiceContext& context) {
  JsonText json;
  json.StartObject();
  json.Member("@odata.context", "$metadata#ZVK.CSRFToken");
  json.Member("NonceKey", kNonceKey).Member("NonceValue", context.nonce).EndObject();
  return ODataResponse(json.Take());
}

}  // namespace

void AddCsrfRoutes(Router& router, const ServiceContext& context) {
  router.Add("GET", "servlet/rest/security/csrf", [&context](const Request&) { return RestNonce(context); });
  if (!HasOData(context.options.generation)) return;
  router.Add("GET", "servlet/odata/v1/ZVK/GetCSRFToken()",
             [&context](const Request&) { return ODataNonce(context); });
}

}  // namespace vantry_sim
