#include "connection/service_flags.h"

#include "connection/service_schema.h"
#include "connection/vt_connection.h"
#include "platform/environment.h"

namespace lxservices::cms_interface::vantry {
namespace {

bool ForceNoDataAdmin() {
  static const bool forced = dp::Environment::Test("FENLOOM_DC_FORCE_NO_DATAADMIN");
  return forced;
}

bool ForceNoDynamicDocMgmt() {
  static const bool forced = dp::Environment::Test("FENLOOM_DC_FORCE_NO_DYNAMICDOCMGMT");
  return forced;
}

bool ForceNoCadDocMgmt() {
  static const bool forced = dp::Environment::Test("FENLOOM_DC_FORCE_NO_CADDOCMGMT");
  return forced;
}

// Whether a result settles the question: the service is there, is missing, or is broken for good.
bool Settles(Status status) {
  return status == Ok || status == NotFound || status == Refused;
}

// Each of the three gives whether its question is settled.
bool SettleDataAdmin(ServiceFlags& flags, VtConnection& connection) {
  if (ForceNoDataAdmin()) return flags.dataAdminChecked = true;
  SchemaQuery query{{"Folder", {}, {{"FolderContents"}}}};
  int version = 0;
  const Status status = FetchSchema(connection, "servlet/odata/DataAdmin/$metadata", &query, &version);
  if (status == Ok) {
    flags.dataAdminPresent = true;
    // Before version 4 the member does not count, even where a schema has it.
    const bool hasFolderContents = query.front().navigationProperties.front().found;
    flags.folderContents = version >= 5 || (version == 4 && hasFolderContents);
    flags.dataAdminV5 = version >= 5;
  }
  return flags.dataAdminChecked = Settles(status);
}

bool SettleDynamicDoc(ServiceFlags& flags, VtConnection& connection) {
  if (ForceNoDynamicDocMgmt()) return flags.dynamicDocChecked = true;
  int version = 0;
  const Status status = FetchSchema(connection, "servlet/odata/DynamicDocMgmt/$metadata", nullptr, &version);
  if (status == Ok) {
    flags.dynamicDocPresent = true;
    flags.dynamicDocV2 = version >= 2;
  }
  return flags.dynamicDocChecked = Settles(status);
}

bool SettleCadDoc(ServiceFlags& flags, VtConnection& connection) {
  if (ForceNoCadDocMgmt()) return flags.cadDocChecked = true;
  int version = 0;
  const Status status = FetchSchema(connection, "servlet/odata/CADDocumentMgmt/$metadata", nullptr, &version);
  if (status == Ok) flags.cadDocPresent = true;
  return flags.cadDocChecked = Settles(status);
}

}  // namespace

void EnsureServiceFlags(ServiceFlags& flags, VtConnection& connection) {
  if (!flags.dataAdminChecked && !SettleDataAdmin(flags, connection)) return;
  if (!flags.dynamicDocChecked && !SettleDynamicDoc(flags, connection)) return;
  if (!flags.cadDocChecked) (void)SettleCadDoc(flags, connection);
}

}  // namespace lxservices::cms_interface::vantry
