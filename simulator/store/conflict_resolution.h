#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "simulator/wire/json_value.h"
#include "simulator/wire/messages.h"

namespace vantry_sim {

/// The conflicts that a client must say how to resolve.
enum class Conflict {
  AlreadyInWorkspace,  ///< checkout: the workspace holds another version of the document
  StaleContent,        ///< check-in: a secondary content is older than the primary one
  OtherVersionUsed,    ///< iterate and store: another document was made of an earlier version
};

/// The resolutions that came with a request.
class Resolutions {
 public:
  /// Reads the member `conflictResolutions` of a body, which may be missing.
  /// @return a refusal for a form that cannot be read, and for words that this server doesn't know
  Refusal Read(JsonValue body);

  /// Resolutions of every conflict of every object, for a change that nobody is to be asked about.
  [[nodiscard]] static Resolutions OfAll();

  /// Whether the conflict was resolved for the object with this id.
  [[nodiscard]] bool Resolve(Conflict conflict, std::string_view id) const;

  /// The refusal of a conflict that nothing resolves: 409, with its code among the words.
  [[nodiscard]] static Response Unresolved(Conflict conflict, std::string_view id);

 private:
  struct Entry {
    Conflict conflict;
    std::string id;
  };
  Refusal ReadOne(JsonValue value);
  std::vector<Entry> entries_;
  bool all_ = false;
};

}  // namespace vantry_sim
