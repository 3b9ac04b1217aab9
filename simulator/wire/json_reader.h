#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/wire/json_value.h"

namespace vantry_sim {

/// A JSON text that was read.
class JsonDocument {
 public:
  explicit JsonDocument(std::unique_ptr<JsonStore> store) : store_(std::move(store)) {}
  /// The value that is the text. Lives as long as the document does.
  [[nodiscard]] JsonValue Root() const { return {store_.get(), 0}; }

 private:
  std::unique_ptr<JsonStore> store_;
};

/// Why a text is no JSON.
struct JsonProblem {
  std::uint32_t line = 0;  ///< counted from 1
  std::string reason;
};

/// The most values of one text; beyond it the memory for a hostile body would be a multiple of the body.
inline constexpr std::size_t mostJsonValues = 4'000'000;

/// Reads a JSON text (RFC 8259) in UTF-8, up to 2 GiB of it. Depth costs no stack. A number is kept as it
/// was written, so none is too large. A half of a surrogate pair and a byte that is no UTF-8 are problems.
/// @param deepest most containers inside one another
std::optional<JsonDocument> ReadJson(std::string_view text, JsonProblem* problem = nullptr,
                                     std::size_t deepest = mostJsonValues);

}  // namespace vantry_sim
