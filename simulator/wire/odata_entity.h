#pragma once

#include <span>
#include <string_view>

namespace vantry_sim {

/// One property of an entity, and how the database gives it.
struct ODataProperty {
  std::string_view name;
  std::string_view
      column;  ///< SQL expression; empty: worked out from the row's key, neither filtered nor sorted by
  std::string_view sortColumn = {};  ///< what it is sorted by; empty: `column`
};

/// What rows of one kind look like on the wire.
struct ODataEntity {
  std::span<const ODataProperty> properties;
  std::string_view keyColumn;     ///< the row's number; a unique integer
  std::string_view defaultOrder;  ///< name of the property that rows are sorted by when nothing is asked
  bool defaultDescending = false;

  /// The property of this name; null for an unknown one.
  [[nodiscard]] const ODataProperty* Find(std::string_view name) const {
    for (const ODataProperty& property : properties) {
      if (property.name == name) return &property;
    }
    return nullptr;
  }
};

}  // namespace vantry_sim
