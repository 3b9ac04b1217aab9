#include "simulator/store/document_lists.h"

#include <algorithm>
#include <array>
#include <string>

namespace vantry_sim {
namespace {

constexpr ODataProperty id{"ID", "i.oid"};
constexpr ODataProperty name{"Name", "m.name"};
constexpr ODataProperty number{"Number", "m.number"};
constexpr ODataProperty version{"Version", "i.revision || '.' || i.iteration", "i.version_key"};
// A text for everybody who may look, and an empty one, never null, for what nobody has checked out.
constexpr ODataProperty checkOutStatus{
    "CheckOutStatus",
    "ifnull((SELECT 'Checked out by ' || u.name FROM checkouts k JOIN users u ON u.id = k.user "
    "WHERE k.base = i.id OR k.working = i.id), '')"};
constexpr ODataProperty lastModified{"LastModified", "i.modified"};

// Both are among the attributes; a document without one has an empty text.
constexpr ODataProperty authoringLanguage{"AuthoringLanguage",
                                          "ifnull((SELECT a.value FROM attributes a WHERE a.iteration = i.id "
                                          "AND a.parameter_name = 'ZVK_DD_LANGUAGE'), '')"};
constexpr ODataProperty extendedType{"ZVKDDEXTENDEDDOCTYPE",
                                     "ifnull((SELECT a.value FROM attributes a WHERE a.iteration = i.id "
                                     "AND a.parameter_name = 'ZVK_DD_EXTENDED_DOC_TYPE'), '')"};

constexpr std::array dynamicProperties{id,           ODataProperty{"CADName", "m.cad_name"},
                                       name,         number,
                                       version,      checkOutStatus,
                                       lastModified, authoringLanguage,
                                       extendedType};
constexpr std::array cadProperties{
    id, ODataProperty{"FileName", "m.cad_name"}, name, number, version, checkOutStatus, lastModified};
constexpr ODataEntity dynamicDocuments{dynamicProperties, "i.id", "Version", true};
constexpr ODataEntity cadDocuments{cadProperties, "i.id", "Version", true};

const ODataEntity& EntityOf(DocumentService service) {
  return service == DocumentService::Dynamic ? dynamicDocuments : cadDocuments;
}

std::string WordOf(DocumentService service) {
  return service == DocumentService::Dynamic ? "dynamic" : "cad";
}

/// Without a filter the iterations' own index gives the rows in their order, and must be looked at first.
/// With one the plus signs keep that index out, so that a name is looked up among the masters.
ODataCollection Documents(DocumentService service, bool filtered) {
  ODataCollection list{&EntityOf(service), {}, SqlText()};
  list.from = filtered ? "masters m JOIN iterations i ON i.master = m.id"
                       : "iterations i CROSS JOIN masters m ON m.id = i.master";
  list.where.Add(filtered ? "+i.service = " : "i.service = ").Value(WordOf(service));
  return list;
}

}  // namespace

ODataCollection FolderContents(std::int64_t folder, DocumentService service, bool filtered) {
  ODataCollection list = Documents(service, filtered);
  list.where.Add(filtered ? " AND +i.folder = " : " AND i.folder = ").Value(folder);
  list.where.Add(" AND i.is_latest = 1 AND i.workspace IS NULL");
  return list;
}

ODataCollection DocumentSearch(DocumentService service, bool latestOnly, bool filtered,
                               std::string_view user) {
  ODataCollection list = Documents(service, filtered);
  list.where.Add(
      " AND (i.workspace IN (SELECT w.id FROM workspaces w JOIN users u ON u.id = w.owner WHERE u.name = ");
  list.where.Value(std::string(user)).Add(") OR (i.workspace IS NULL");
  if (latestOnly) {
    list.where.Add(
        " AND i.is_latest = 1 AND NOT EXISTS (SELECT 1 FROM checkouts k JOIN users u ON u.id = k.user "
        "WHERE k.base = i.id AND u.name = ");
    list.where.Value(std::string(user)).Add(")");
  }
  list.where.Add("))");
  return list;
}

void WriteVersions(JsonText& json, Database& database, std::int64_t iteration, DocumentService service,
                   const ODataExpand& expand) {
  ODataCollection versions{&EntityOf(service), "iterations i JOIN masters m ON m.id = i.master", SqlText()};
  versions.where.Add("i.master = (SELECT master FROM iterations WHERE id = ").Value(iteration);
  versions.where.Add(") AND i.workspace IS NULL");
  ODataQuery query;
  query.select = expand.select;
  query.order = {{"Version", false}};
  ODataProblem problem;
  const auto plan = PlanODataQuery(query, *versions.entity, problem);
  json.Key("Versions").StartArray();
  const auto write = [&](const ODataRow& row) {
    json.StartObject();
    WriteDocumentMembers(json, row);
    json.EndObject();
  };
  constexpr std::uint64_t mostVersions = 10'000;
  if (plan) static_cast<void>(ReadODataPage(database, {versions, *plan, std::nullopt, mostVersions}, write));
  json.EndArray();
}

ODataCollection OneDocument(std::int64_t iteration) {
  ODataCollection list{&dynamicDocuments, "iterations i JOIN masters m ON m.id = i.master", SqlText()};
  list.where.Add("i.id = ").Value(iteration);
  return list;
}

ODataCollection Translations(std::int64_t xliffMaster) {
  ODataCollection list{&dynamicDocuments, "iterations i JOIN masters m ON m.id = i.master", SqlText()};
  list.where.Add("i.master IN (SELECT translated FROM translations WHERE xliff = ").Value(xliffMaster);
  list.where.Add(") AND i.is_latest = 1 AND i.workspace IS NULL");
  return list;
}

void WriteDocumentMembers(JsonText& json, const ODataRow& row) {
  for (std::size_t i = 0; i < row.select->size(); ++i) json.Member((*row.select)[i]->name, row.values[i]);
}

bool VersionsHave(DocumentService service, const ODataExpand& expand) {
  return std::all_of(expand.select.begin(), expand.select.end(), [service](const std::string& wanted) {
    return EntityOf(service).Find(wanted) != nullptr;
  });
}

}  // namespace vantry_sim
