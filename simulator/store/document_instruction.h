#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulator/wire/json_value.h"
#include "simulator/wire/or_refusal.h"

namespace vantry_sim {

/// One file that an instruction names: bytes that were uploaded, or, without a stream, a secondary content
/// that the version before had.
struct ContentInstruction {
  std::string category;
  std::string fileName;  ///< kept as it came, placeholders and all
  bool isHidden = false;
  std::optional<std::int64_t> stream;
  std::string receipt;
};

struct AttributeInstruction {
  std::string parameterName;
  std::string attributeName;
  std::string valueType;
  std::string value;
};

struct DependencyInstruction {
  std::string asStoredChildName;
  bool isDirect = false;
  std::string source;  ///< id of a document
};

/// What a client wants a document to be. Members that it may leave out have no value then.
struct DocumentInstruction {
  std::string id;  ///< empty: a new document
  std::string cadName;
  std::string category;
  std::string subCategory;
  std::string application;
  std::string authAppVersion;
  std::string ndVersion;
  std::string typeId;
  std::string targetFolder;  ///< id; empty: none was named
  std::vector<ContentInstruction> primary;
  std::vector<ContentInstruction> secondary;
  std::optional<std::vector<AttributeInstruction>> attributes;
  std::optional<std::vector<DependencyInstruction>> dependencies;
};

/// The most instructions of one request.
inline constexpr std::size_t mostInstructions = 1000;

/// Reads an array of instructions.
/// @param member such as "createInstructions"; must be there and hold something
/// @return a refusal with 400 that says which member is wrong
OrRefusal<std::vector<DocumentInstruction>> ReadInstructions(JsonValue body, const char* member);

}  // namespace vantry_sim
