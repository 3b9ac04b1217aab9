#pragma once

#include <rapidjson/document.h>

#include <string>
#include <string_view>

#include "documents/reading/document_records.h"

/// The small pieces of a document that are written back. Values copy their texts into the allocator.
namespace lxservices::cms_interface::vantry {

using JsonAllocator = rapidjson::Document::AllocatorType;

/// A text value that owns a copy of the text.
[[nodiscard]] rapidjson::Value MakeText(std::string_view text, JsonAllocator& allocator);

/// A content section: "category", "fileName", "isHidden" (only when set), "streamId", "uploadInfo".
[[nodiscard]] rapidjson::Value WriteContentSection(const ContentRecord& record, JsonAllocator& allocator);

/// An attribute: "parameterDefinition" and "parameterValue". An empty attribute name is left out.
[[nodiscard]] rapidjson::Value WriteAttribute(const FileBasedAttribute& record, JsonAllocator& allocator);

/// An attribute of the type "String" whose parameter and attribute have one name.
[[nodiscard]] FileBasedAttribute MakeStringAttribute(std::string_view name, std::string_view value);

/// The position of the first attribute object of that parameter name, or the end of the array. The value must
/// be an array.
[[nodiscard]] rapidjson::Value::ConstValueIterator FindAttribute(const rapidjson::Value& array,
                                                                 std::string_view name);

/// Removes every attribute of that parameter name, keeping the order of the others, and appends one with the
/// value. The value must be an array.
void ReplaceAttribute(rapidjson::Value& array, JsonAllocator& allocator, std::string_view name,
                      std::string_view value);

/// Writes the compact JSON text of a value, members in the order in which they were added, to a temporary
/// file.
/// @return its path, which the caller removes; empty when the file cannot be made or written: then nothing is
///         left behind, and nothing is traced
[[nodiscard]] std::string WriteJsonBodyFile(const rapidjson::Value& value);

}  // namespace lxservices::cms_interface::vantry
