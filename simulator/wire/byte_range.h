#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantry_sim {

/// A part of a content.
struct ByteRange {
  std::uint64_t first = 0;
  std::uint64_t size = 0;
};

/// What a Range header asks of a content.
struct RangeWish {
  enum class Kind {
    Whole,          ///< the whole of it: no Range, one that cannot be read, or several parts
    Part,           ///< `part` of it
    Unsatisfiable,  ///< a part that it doesn't have
  };
  Kind kind = Kind::Whole;
  ByteRange part;
};

/// Reads the value of a Range header: `bytes=A-B`, `bytes=A-` or `bytes=-N`. @param size of the content
RangeWish ReadRange(std::string_view value, std::uint64_t size);

}  // namespace vantry_sim
