#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantry_sim {

/// The head of a request, in the order and the spelling in which it came.
struct RequestHead {
  std::string method;
  std::string target;  ///< as it is on the request line
  std::vector<std::pair<std::string, std::string>> headers;

  /// The value of the first header of this name, whatever its case; empty for none.
  [[nodiscard]] std::string_view Header(std::string_view name) const;
};

/// Whether two names of headers are the same but for the case of their letters.
bool SameHeaderName(std::string_view left, std::string_view right);

/// Reads a head up to its empty line. What cannot be read is left out: the HTTP library judges it.
RequestHead ReadRequestHead(std::string_view bytes);

/// Where a head ends.
struct HeadEnd {
  bool known = false;
  std::size_t size = 0;  ///< with the empty line; of a line that cannot begin a head, that line alone
};

/// Looks for the end of a head. A first line that is no request line ends it at once, since who sends one
/// waits for its refusal. @param from how much of the bytes was looked at before and had no end
HeadEnd FindHeadEnd(std::string_view bytes, std::size_t from = 0);

}  // namespace vantry_sim
