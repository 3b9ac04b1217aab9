#pragma once

#include <string_view>

/// The kinds of context that a server has, and the words by which its services know them. Pure functions.
namespace lxservices::cms_interface::vantry {

/// The REST services say context, the OData service says container; both mean the same thing.
enum class ContextKind : int {
  None = 0,
  Product = 1,
  Library = 2,
  Project = 3,
  Site = 4,
  Organization = 5,  ///< no root directory leads here
};

/// The word of the REST services, which document records carry too; empty for a kind without one.
[[nodiscard]] std::string_view RestWordOf(ContextKind kind);

/// The type that is used in OData paths; empty for a kind without one.
[[nodiscard]] std::string_view ODataTypeOf(ContextKind kind);

/// The kind of a REST word, compared exactly; None for any other text.
[[nodiscard]] ContextKind KindOfRestWord(std::string_view word);

}  // namespace lxservices::cms_interface::vantry
