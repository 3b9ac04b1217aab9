#include "browsing/odata_rows.h"

#include "connection/json_members.h"
#include "connection/odata_page_reader.h"

namespace lxservices::cms_interface::vantry {

bool VisitODataPages(ServerContext& server, const std::string& path, const RowsVisitor& visit) {
  ODataPageReader reader(server, path);
  while (reader.Next()) {
    if (!reader.page().IsObject()) break;
    const rapidjson::Value* rows = FindArray(reader.page(), "value");
    if (rows != nullptr && !visit(*rows)) break;
  }
  return !reader.failed();
}

}  // namespace lxservices::cms_interface::vantry
