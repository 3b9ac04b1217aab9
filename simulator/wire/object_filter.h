#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "simulator/store/document_store.h"

namespace vantry_sim {

/// A filter of the object query: one property and the value that it must have.
struct ObjectFilter {
  DocumentProperty property = DocumentProperty::CadName;
  std::string value;
};

/// Reads `PROPERTY eq 'VALUE'` with PROPERTY one of CADName, number, name. The value goes from the first
/// apostrophe to the last one of the text, with doubled apostrophes as one: clients are known to leave an
/// apostrophe in a name undoubled, and the server takes both. Nothing for any other text.
std::optional<ObjectFilter> ParseObjectFilter(std::string_view text);

}  // namespace vantry_sim
