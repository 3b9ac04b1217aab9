#include "simulator/wire/object_filter.h"

namespace vantry_sim {
namespace {

std::optional<DocumentProperty> PropertyOf(std::string_view word) {
  if (word == "CADName") return DocumentProperty::CadName;
  if (word == "number") return DocumentProperty::Number;
  if (word == "name") return DocumentProperty::Name;
  return std::nullopt;
}

}  // namespace

std::optional<ObjectFilter> ParseObjectFilter(std::string_view text) {
  constexpr std::string_view equalsOperator = " eq '";
  const auto at = text.find(equalsOperator);
  if (at == std::string_view::npos || !text.ends_with('\'')) return std::nullopt;
  const auto property = PropertyOf(text.substr(0, at));
  text.remove_prefix(at + equalsOperator.size());
  if (!property || text.empty()) return std::nullopt;
  text.remove_suffix(1);

  ObjectFilter filter{*property, {}};
  for (std::size_t i = 0; i < text.size(); ++i) {
    filter.value += text[i];
    if (text[i] == '\'' && i + 1 < text.size() && text[i + 1] == '\'') ++i;
  }
  return filter;
}

}  // namespace vantry_sim
