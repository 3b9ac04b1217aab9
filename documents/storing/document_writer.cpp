#include "documents/storing/document_writer.h"

#include <rapidjson/filewritestream.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "base/failure_step.h"
#include "connection/json_members.h"
#include "connection/scoped_temp_path.h"
#include "platform/files.h"

namespace lxservices::cms_interface::vantry {
namespace {

bool IsAttributeNamed(const rapidjson::Value& element, std::string_view name) {
  const rapidjson::Value* definition = FindMember(element, "parameterDefinition");
  const rapidjson::Value* parameter =
      definition != nullptr ? FindString(*definition, "parameterName") : nullptr;
  return parameter != nullptr && TextView(*parameter) == name;
}

// Writes and closes; false when a byte did not reach the file.
bool WriteCompact(const rapidjson::Value& value, std::FILE* file) {
  std::array<char, 0x10000> buffer;
  rapidjson::FileWriteStream stream(file, buffer.data(), buffer.size());
  rapidjson::Writer<rapidjson::FileWriteStream> writer(stream);
  value.Accept(writer);
  stream.Flush();
  const bool written = std::ferror(file) == 0;
  return std::fclose(file) == 0 && written;
}

}  // namespace

rapidjson::Value MakeText(std::string_view text, JsonAllocator& allocator) {
  // A view of nothing has no address, and rapidjson wants one.
  if (text.empty()) return {"", 0, allocator};
  return {text.data(), static_cast<rapidjson::SizeType>(text.size()), allocator};
}

rapidjson::Value WriteContentSection(const ContentRecord& record, JsonAllocator& allocator) {
  rapidjson::Value section(rapidjson::kObjectType);
  section.AddMember("category", MakeText(record.category, allocator), allocator);
  section.AddMember("fileName", MakeText(record.fileName, allocator), allocator);
  if (record.isHidden) section.AddMember("isHidden", true, allocator);
  section.AddMember("streamId", record.streamId, allocator);
  rapidjson::Value receipt(rapidjson::kObjectType);
  receipt.AddMember("encodedCCD", MakeText(record.encodedCCD, allocator), allocator);
  section.AddMember("uploadInfo", receipt, allocator);
  return section;
}

rapidjson::Value WriteAttribute(const FileBasedAttribute& record, JsonAllocator& allocator) {
  rapidjson::Value definition(rapidjson::kObjectType);
  definition.AddMember("parameterName", MakeText(record.parameterName, allocator), allocator);
  if (!record.attributeName.empty()) {
    definition.AddMember("attributeName", MakeText(record.attributeName, allocator), allocator);
  }
  definition.AddMember("valueType", MakeText(record.valueType, allocator), allocator);
  rapidjson::Value value(rapidjson::kObjectType);
  value.AddMember("value", MakeText(record.value, allocator), allocator);
  rapidjson::Value attribute(rapidjson::kObjectType);
  attribute.AddMember("parameterDefinition", definition, allocator);
  attribute.AddMember("parameterValue", value, allocator);
  return attribute;
}

FileBasedAttribute MakeStringAttribute(std::string_view name, std::string_view value) {
  return {std::string(name), std::string(name), "String", std::string(value)};
}

rapidjson::Value::ConstValueIterator FindAttribute(const rapidjson::Value& array, std::string_view name) {
  return std::find_if(array.Begin(), array.End(),
                      [name](const rapidjson::Value& element) { return IsAttributeNamed(element, name); });
}

void ReplaceAttribute(rapidjson::Value& array, JsonAllocator& allocator, std::string_view name,
                      std::string_view value) {
  auto element = array.Begin();
  while (element != array.End()) {
    element = IsAttributeNamed(*element, name) ? array.Erase(element) : element + 1;
  }
  array.PushBack(WriteAttribute(MakeStringAttribute(name, value), allocator), allocator);
}

std::string WriteJsonBodyFile(const rapidjson::Value& value) {
  const std::string path = MakeTempFile("upload", "json");
  std::FILE* file = du::FileSystem::lxfopen(path.c_str(), "wb");
  if (file != nullptr && WriteCompact(value, file)) return path;
  ReportReason({FailureKind::LocalFile});
  if (!path.empty()) du::FileSystem::Unlink(path.c_str(), false);
  return {};
}

}  // namespace lxservices::cms_interface::vantry
