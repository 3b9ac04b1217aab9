#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulator/wire/json_value.h"
#include "simulator/wire/messages.h"

namespace vantry_sim {

/// One file that an instruction names: bytes that were uploaded, or, without a stream, a secondary content
/// that the version before had.
struct ContentInstruction {
  std::string category;
  std::string file_name;  ///< kept as it came, placeholders and all
  bool is_hidden = false;
  std::optional<std::int64_t> stream;
  std::string receipt;
};

struct AttributeInstruction {
  std::string parameter_name;
  std::string attribute_name;
  std::string value_type;
  std::string value;
};

struct DependencyInstruction {
  std::string as_stored_child_name;
  bool is_direct = false;
  std::string source;  ///< id of a document
};

/// What a client wants a document to be. Members that it may leave out have no value then.
struct DocumentInstruction {
  std::string id;  ///< empty: a new document
  std::string cad_name;
  std::string category;
  std::string sub_category;
  std::string application;
  std::string auth_app_version;
  std::string nd_version;
  std::string type_id;
  std::string target_folder;  ///< id; empty: none was named
  std::vector<ContentInstruction> primary;
  std::vector<ContentInstruction> secondary;
  std::optional<std::vector<AttributeInstruction>> attributes;
  std::optional<std::vector<DependencyInstruction>> dependencies;
};

/// The most instructions of one request.
inline constexpr std::size_t kMostInstructions = 1000;

/// Reads an array of instructions.
/// @param member such as "createInstructions"; must be there and hold something
/// @return a refusal with 400 that says which member is wrong
Refusal ReadInstructions(JsonValue body, const char* member, std::vector<DocumentInstruction>& out);

}  // namespace vantry_sim
