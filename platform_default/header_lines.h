#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/http.h"

namespace vtdirect::platform {

/// Splits the header text of a request at CR LF and puts its lines, which are parts of it, at the end of others;
/// empty lines don't count.
///
/// Parts of the text come from servers (the name and the value of a nonce), so a line that is no header line
/// must not reach the wire: one without a ":", with a name that is no token, or with a control byte in it.
/// The same holds for the lines that frame a message or steer the connection ("Content-Length",
/// "Transfer-Encoding", "Host" ...), which are the transport's own.
/// @return false when any of them is refused: a request with a part missing is not what the caller meant
[[nodiscard]] bool AppendHeaderLines(std::string_view text, std::vector<std::string_view>* lines);

/// Reads a header source to its end. A null source is an empty text.
/// @return `Done`, the source's own failure, or `ProtocolFailure` for more than 256 KiB
[[nodiscard]] du::http::ErrorCode ReadHeaderText(du::http::FileSource* source, std::string* text);

/// True when the text begins with `name`, of whatever case; the text is no shorter.
[[nodiscard]] bool BeginsWithName(std::string_view text, std::string_view name);

/// True when the line's name is `name`, of whatever case. Most lines are told apart by the place of their colon.
[[nodiscard]] inline bool HasHeaderName(std::string_view line, std::string_view name) {
  return line.size() > name.size() && line[name.size()] == ':' && BeginsWithName(line, name);
}

/// True when one of the lines has the name.
[[nodiscard]] bool ContainsHeader(std::span<const std::string_view> lines, std::string_view name);

/// True when an "Accept" line among them names JSON or XML, alone or in a type of its own ("...+json").
[[nodiscard]] bool AcceptsJsonOrXml(std::span<const std::string_view> lines);

}  // namespace vtdirect::platform
