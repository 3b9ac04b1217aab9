#include "browsing/hvd_features.h"

#include "base/failure_step.h"
#include "connection/json_members.h"
#include "connection/odata_page_reader.h"

namespace lxservices::cms_interface::vantry {
namespace {

// Only the texts "true" and "false" change anything.
bool ReadSwitch(const rapidjson::Value& values, bool known) {
  for (const auto& value : values.GetArray()) {
    if (!value.IsString()) continue;
    if (TextView(value) == "true") known = true;
    if (TextView(value) == "false") known = false;
  }
  return known;
}

}  // namespace

ServerFeatures ReadHvdFeatures(ServerContext& server, ServerFeatures known) {
  const FailureStep step("ask for the features");
  ODataPageReader reader(server, "servlet/odata/v3/Visualization/GetHVDFeatures()");
  while (reader.Next()) {
    const rapidjson::Value* rows = FindArray(reader.page(), "value");
    if (rows == nullptr && !reader.page().IsObject()) break;
    if (rows == nullptr) continue;
    for (const auto& row : rows->GetArray()) {
      const rapidjson::Value* name = FindString(row, "FeatureName");
      const rapidjson::Value* values = FindArray(row, "FeatureValues");
      if (name == nullptr || values == nullptr) continue;
      if (TextView(*name) == "SeparatedsourceQ7zk") {
        known.separatedSources = ReadSwitch(*values, known.separatedSources);
      }
      if (TextView(*name) == "uploadvcsinfo") known.vcsInfo = ReadSwitch(*values, known.vcsInfo);
    }
  }
  return known;
}

}  // namespace lxservices::cms_interface::vantry
