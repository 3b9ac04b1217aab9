#include "documents/storing/conflict_resolution.h"

namespace lxservices::cms_interface::vantry {

rapidjson::Value MakeResolution(JsonAllocator& allocator, const ConflictResolution& resolution,
                                const std::string& id) {
  rapidjson::Value entity(rapidjson::kObjectType);
  entity.AddMember("type", MakeText(resolution.type, allocator), allocator);
  entity.AddMember("field", "id", allocator);
  entity.AddMember("value", MakeText(id, allocator), allocator);
  rapidjson::Value entities(rapidjson::kArrayType);
  entities.PushBack(entity, allocator);
  rapidjson::Value value(rapidjson::kObjectType);
  value.AddMember("code", MakeText(resolution.code, allocator), allocator);
  value.AddMember("resolutionOption", MakeText(resolution.resolutionOption, allocator), allocator);
  value.AddMember("appliedEntities", entities, allocator);
  return value;
}

}  // namespace lxservices::cms_interface::vantry
