#include "connection/odata_services.h"

#include <algorithm>

#include "base/failure_step.h"
#include "connection/json_members.h"
#include "connection/rest_stream.h"

namespace lxservices::cms_interface::vantry {
namespace {

// Reads a small OData answer whole; the document stays null on failure.
rapidjson::Document ReadODataDocument(VtConnection& connection, const std::string& path) {
  const FailureStep step("ask which services there are");
  rapidjson::Document document;
  RestStream response(MakeGetRequest(connection.http(), path.c_str(), VtConnection::ODataHeaders()), {});
  if (response.succeeded() && ParseJsonResponse(response, document) && !document.IsArray() &&
      !document.IsObject()) {
    response.ReportBroken();
  }
  return document;
}

ODataDomain ReadDomain(const rapidjson::Value& element) {
  ODataDomain domain;
  if (!element.IsObject()) return domain;
  for (const auto& member : element.GetObject()) {
    const std::string_view name = TextView(member.name);
    if (name == "path") CopyString(member.value, domain.path);
    if (name == "name") CopyString(member.value, domain.name);
    if (name == "description") CopyString(member.value, domain.description);
    if (name == "id") CopyString(member.value, domain.id);
  }
  return domain;
}

}  // namespace

std::vector<ODataDomain> GetODataDomains(VtConnection& connection) {
  const rapidjson::Document document = ReadODataDocument(connection, "servlet/odata/");
  std::vector<ODataDomain> domains;
  if (!document.IsArray()) return domains;
  for (const auto& element : document.GetArray()) domains.push_back(ReadDomain(element));
  return domains;
}

bool HasODataDomain(VtConnection& connection, const char* id) {
  const auto domains = GetODataDomains(connection);
  return std::any_of(domains.begin(), domains.end(),
                     [id](const ODataDomain& domain) { return domain.id == id; });
}

bool IsAssemblyInstalled(VtConnection& connection, const char* assemblyName) {
  const std::string path =
      std::string("servlet/odata/v1/ZVK/IsAssemblyInstalled(assemblyName='") + assemblyName + "')";
  const rapidjson::Document document = ReadODataDocument(connection, path);
  const rapidjson::Value* value = FindString(document, "value");
  return value != nullptr && TextView(*value) == "true";
}

}  // namespace lxservices::cms_interface::vantry
