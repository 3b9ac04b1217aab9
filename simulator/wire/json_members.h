#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "simulator/wire/json_value.h"

namespace vantry_sim {

/// Whether a member may be missing.
enum class Presence { Optional, Required };

/// Reads members of one JSON object and remembers the first that is wrong. A member that is missing leaves
/// what it is read into as it was, unless it is required.
class JsonMembers {
 public:
  /// @param value if it is no object, that is the first problem. @param problem where problems are told
  JsonMembers(JsonValue value, std::string& problem);

  JsonMembers& Text(const char* name, std::string& out, Presence presence = Presence::Optional);
  JsonMembers& Flag(const char* name, bool& out);
  JsonMembers& Number(const char* name, std::int64_t& out, Presence presence = Presence::Optional);

  /// The member, if it is there and an object or an array; missing otherwise.
  JsonValue Object(const char* name, Presence presence = Presence::Optional);
  JsonValue Array(const char* name, Presence presence = Presence::Optional);

  /// Whether the member is there at all.
  [[nodiscard]] bool Has(const char* name) const;

 private:
  JsonValue Find(const char* name, Presence presence);
  void Wrong(const char* name, const char* what);

  JsonValue object_;
  std::string& problem_;
};

}  // namespace vantry_sim
