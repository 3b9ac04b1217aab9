#pragma once

#include <string>
#include <string_view>

namespace vtdirect::platform {

/// Makes a request's path and query fit for the request line.
///
/// Bytes that cannot be there are escaped as "%" and two upper-case hexadecimal digits: control bytes,
/// blanks, bytes above 126, any of `"<>\^`{|}`, a "%" without two hexadecimal digits after it, and "#",
/// since a fragment is never sent. A missing leading "/" is added. Everything else, escapes included, stays
/// as it is. Pure function.
[[nodiscard]] std::string RequestTarget(std::string_view uri);
/// The same at the end of a text.
void AppendRequestTarget(std::string_view uri, std::string* text);

}  // namespace vtdirect::platform
