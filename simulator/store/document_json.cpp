#include "simulator/store/document_json.h"

#include <string>

#include "simulator/wire/uri.h"

namespace vantry_sim {
namespace {

constexpr std::string_view cadNamePlaceholder = "{$CAD_NAME}";

void WriteMaster(JsonText& json, const DocumentRow& document) {
  json.Key("epmMaster").StartObject();
  json.Member("id", document.masterOid);
  json.Member("name", document.masterName);
  json.Member("number", document.number);
  json.Member("category", document.category);
  json.Member("subCategory", document.subCategory);
  json.Member("cadName", document.cadName);
  json.Member("authoringApplication", document.authoringApplication);
  json.EndObject();
}

void WriteState(JsonText& json, const DocumentRow& document, std::string_view user) {
  json.Key("pdmIterationState").StartObject();
  json.Member("isCheckout", !document.checkoutUser.empty());
  json.Member("isCheckoutByYou", document.checkoutUser == user);
  json.Member("isLatest", document.isLatest);
  json.Member("checkoutByUser", document.checkoutUser);
  json.Member("checkoutToFolderName", document.checkoutWorkspace);
  json.EndObject();
}

void WriteSummaryMembers(JsonText& json, const DocumentRow& document, std::string_view user) {
  json.Member("id", document.oid);
  json.Key("context").StartObject();
  json.Member("id", document.contextOid).Member("name", document.contextName);
  json.Member("type", document.contextKind).EndObject();
  json.Member("revision", document.revision);
  json.Member("iteration", std::to_string(document.iteration));
  json.Member("authAppVersion", document.authAppVersion);
  json.Member("ndVersion", document.ndVersion);
  WriteState(json, document, user);
  json.Member("isDerived", document.isDerived);
  WriteMaster(json, document);
}

void WriteLocation(JsonText& json, Database& database, const DocumentRow& document) {
  // A document that has never been checked in is in no folder, and the member is missing.
  if (!document.folderKey) return;
  json.Key("locationFolder").StartObject();
  json.Member("id", document.folderOid).Member("name", document.folderName);
  json.Member("path", FolderPath(database, *document.folderKey)).EndObject();
}

void WriteDependencies(JsonText& json, Database& database, const DocumentRow& document) {
  auto statement = database.Prepare(
      "SELECT d.as_stored_child_name, d.is_direct, i.oid, m.oid, m.name, m.number, m.category, "
      "m.sub_category, "
      "m.cad_name, m.authoring_application, i.revision, i.iteration, i.auth_app_version, i.nd_version, "
      "d.revision_number, d.is_place_holder, EXISTS(SELECT 1 FROM dependencies x WHERE x.iteration = i.id), "
      "d.has_complete_dependencies "
      "FROM dependencies d JOIN iterations i ON i.id = d.source JOIN masters m ON m.id = i.master "
      "WHERE d.iteration = ?1 ORDER BY d.position");
  statement.Bind(document.key);
  json.Key("derivedSourceDependencies").StartArray();
  while (statement.Step()) {
    json.StartObject();
    json.Member("asStoredChildName", statement.Text(0)).Member("isDirect", statement.Integer(1) != 0);
    json.Key("source").StartObject().Member("id", statement.Text(2));
    json.Key("epmMaster").StartObject();
    json.Member("id", statement.Text(3))
        .Member("name", statement.Text(4))
        .Member("number", statement.Text(5));
    json.Member("category", statement.Text(6)).Member("subCategory", statement.Text(7));
    json.Member("cadName", statement.Text(8)).Member("authoringApplication", statement.Text(9)).EndObject();
    json.Member("revision", statement.Text(10)).Member("iteration", statement.Text(11));
    json.Member("authAppVersion", statement.Text(12)).Member("ndVersion", statement.Text(13));
    json.Member("revNum", statement.Integer(14)).Member("isPlaceHolder", statement.Integer(15) != 0);
    json.Member("isDerived", statement.Integer(16) != 0);
    json.Member("hasCompleteDependencies", statement.Integer(17) != 0).EndObject();
    json.EndObject();
  }
  json.EndArray();
}

/// The name at the end of a content URL, for whoever reads it; the stream's number is what
/// counts.
std::string UrlFileName(const ContentRow& content, const DocumentRow& document) {
  std::string name = content.fileName;
  if (const auto at = name.find(cadNamePlaceholder); at != std::string::npos) {
    name.replace(at, cadNamePlaceholder.size(), document.cadName);
  }
  return PercentEncode(name.empty() ? "content" : name);
}

void WriteContent(JsonText& json, const ContentRow& content, const DocumentRow& document,
                  std::string_view baseUrl) {
  json.StartObject();
  json.Member("id", content.oid).Member("category", content.category).Member("fileName", content.fileName);
  json.Member("isForwardable", content.isForwardable).Member("isStale", content.isStale);
  json.Member("isHidden", content.isHidden);
  if (content.stream) json.Member("streamId", *content.stream);
  json.Key("contentUrl").StartArray();
  if (content.stream) {
    json.String(std::string(baseUrl) + "/servlet/rest/v1/content/streams/" + std::to_string(*content.stream) +
                "/" + UrlFileName(content, document));
  }
  json.EndArray();
  json.Member("fileSize", content.size).EndObject();
}

void WriteContents(JsonText& json, Database& database, const DocumentRow& document,
                   std::string_view baseUrl) {
  const auto primary = ContentsOf(database, document.key, ContentRole::Primary);
  json.Key("cadContent").StartObject().Member("isSectioned", primary.size() > 1);
  json.Key("contentSections").StartArray();
  for (const ContentRow& content : primary) WriteContent(json, content, document, baseUrl);
  json.EndArray().EndObject();

  json.Key("secondaryContents").StartArray();
  for (const ContentRow& content : ContentsOf(database, document.key, ContentRole::Secondary)) {
    WriteContent(json, content, document, baseUrl);
  }
  json.EndArray();
}

void WriteAttributes(JsonText& json, Database& database, const DocumentRow& document) {
  auto statement = database.Prepare(
      "SELECT parameter_name, attribute_name, value_type, value FROM attributes WHERE iteration = ?1 "
      "ORDER BY position");
  statement.Bind(document.key);
  json.Key("fileBasedAttributes").StartArray();
  while (statement.Step()) {
    json.StartObject().Key("parameterDefinition").StartObject();
    json.Member("parameterName", statement.Text(0)).Member("attributeName", statement.Text(1));
    json.Member("valueType", statement.Text(2)).EndObject();
    json.Key("parameterValue").StartObject().Member("value", statement.Text(3)).EndObject();
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace

void WriteDocumentSummary(JsonText& json, const DocumentRow& document, std::string_view user) {
  json.StartObject();
  WriteSummaryMembers(json, document, user);
  json.EndObject();
}

void WriteDocument(JsonText& json, Database& database, const DocumentRow& document, std::string_view user,
                   std::string_view baseUrl) {
  json.StartObject();
  WriteSummaryMembers(json, document, user);
  WriteLocation(json, database, document);
  WriteDependencies(json, database, document);
  WriteContents(json, database, document, baseUrl);
  WriteAttributes(json, database, document);
  json.EndObject();
}

}  // namespace vantry_sim
