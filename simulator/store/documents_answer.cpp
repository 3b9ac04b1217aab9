#include "simulator/store/documents_answer.h"

#include "simulator/store/document_json.h"
#include "simulator/store/document_store.h"
#include "simulator/wire/json.h"

namespace vantry_sim {

Response DocumentsResponse(const ServiceContext& context, const Request& request,
                           const std::vector<std::string>& oids) {
  const std::string baseUrl = BaseUrl(context, request);
  JsonText json;
  json.StartArray();
  for (const std::string& oid : oids) {
    const auto document = FindDocument(context.database, oid, request.user);
    if (document) WriteDocument(json, context.database, *document, request.user, baseUrl);
  }
  json.EndArray();
  Response response;
  response.body = json.Take();
  return response;
}

}  // namespace vantry_sim
