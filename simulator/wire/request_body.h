#pragma once

#include <httplib.h>

#include <cstdint>
#include <functional>
#include <string_view>

namespace vantry_sim {

/// What came of reading a body.
struct BodyOutcome {
  bool complete = false;  ///< it was read to its end
  bool tooLarge = false;  ///< it has more bytes than it may
  bool noRoom = false;    ///< what takes it had no room for it
  bool atItsEnd = false;  ///< the connection is after the body, and a next request can be read
};

/// Reads the body of a request piece by piece.
/// @param limit most bytes that it may have
/// @param status of the answer so far; the HTTP library sets it to 413 for an announced length that
/// is too much
/// @param take is given every piece up to the limit, until it has no room and gives false
BodyOutcome ReadBody(const httplib::ContentReader& reader, std::uint64_t limit, const int& status,
                     const std::function<bool(std::string_view)>& take);

}  // namespace vantry_sim
