#pragma once

#include <span>
#include <string_view>

namespace vantry_sim {

/// One property of an entity, and how the database gives it.
struct ODataProperty {
  std::string_view name;
  std::string_view
      column;  ///< SQL expression; empty: worked out from the row's key, neither filtered nor sorted by
  std::string_view sort_column = {};  ///< what it is sorted by; empty: `column`
};

/// What rows of one kind look like on the wire.
struct ODataEntity {
  std::span<const ODataProperty> properties;
  std::string_view key_column;     ///< the row's number; a unique integer
  std::string_view default_order;  ///< name of the property that rows are sorted by when nothing is asked
  bool default_descending = false;

  /// The property of this name; null for an unknown one.
  [[nodiscard]] const ODataProperty* Find(std::string_view name) const {
    for (const ODataProperty& property : properties) {
      if (property.name == name) return &property;
    }
    return nullptr;
  }
};

}  // namespace vantry_sim
