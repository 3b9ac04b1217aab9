#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "export.h"

/// URI helpers. The split is lenient: UIDs hold bytes ("|") that strict parsers refuse. Pure functions.
namespace du {

/// Parts of a URI, by the numbers that hosts know them under.
enum class URIPart : int {
  Scheme = 0,
  User = 1,
  Password = 2,
  Host = 3,
  Port = 4,
  Path = 6,
  Query = 7,
  Fragment = 8,
};

/// Escapes every byte but the unreserved ones of RFC 3986 (letters, digits, "-", ".", "_", "~") as "%" and
/// two upper-case hexadecimal digits.
/// @param out       replaced by the result; may be the same object as `in`
/// @param position  first byte of `in` to take; beyond the end gives an empty result
/// @param count     number of bytes; -1 means all
VTDIRECT_API void URI_Escape(std::string* out, const std::string& in, std::size_t position,
                             std::size_t count);

/// Decodes every "%" with two hexadecimal digits after it, of either case; any other "%" stays.
/// @param position  first byte of `in` to take
VTDIRECT_API void URI_Unescape(std::string* out, std::size_t position, const std::string& in);

/// One part of a URI, without its delimiters; empty when it is absent. The path keeps its leading "/" and has
/// no query.
[[nodiscard]] VTDIRECT_API std::string GetURIPart(const std::string& uri, URIPart part);

/// Position and length of a part within `uri`. An absent part has the position `npos` and the length 0; a
/// part that is there and empty (the query of "a?") has its position and the length 0.
[[nodiscard]] VTDIRECT_API std::pair<std::size_t, std::size_t> GetURIPartPosCount(const std::string& uri,
                                                                                  URIPart part);

}  // namespace du
