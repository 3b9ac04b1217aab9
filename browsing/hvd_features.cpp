#include "browsing/hvd_features.h"

#include "base/failure_step.h"
#include "connection/json_members.h"
#include "connection/odata_page_reader.h"

namespace lxservices::cms_interface::vantry {
namespace {

// Only the texts "true" and "false" change anything.
void ReadSwitch(const rapidjson::Value& values, bool& feature) {
  for (const auto& value : values.GetArray()) {
    if (!value.IsString()) continue;
    if (TextView(value) == "true") feature = true;
    if (TextView(value) == "false") feature = false;
  }
}

}  // namespace

bool ReadHvdFeatures(ServerContext& server, bool& separatedSources, bool& vcsInfo) {
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
      if (TextView(*name) == "SeparatedsourceQ7zk") ReadSwitch(*values, separatedSources);
      if (TextView(*name) == "uploadvcsinfo") ReadSwitch(*values, vcsInfo);
    }
  }
  return !reader.failed();
}

}  // namespace lxservices::cms_interface::vantry
