#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vtdirect_cli {

/// A text that came from a server, fit for a terminal.
///
/// Control bytes, the control characters U+0080 to U+009F, the characters that turn the direction of writing,
/// the line and paragraph separators, and bytes that are no UTF-8 become "\xHH", one for each byte. All else
/// stays, so an ordinary name with umlauts reads as it is.
[[nodiscard]] std::string Printable(std::string_view text);

/// The character at the beginning of a text.
struct FirstCharacter {
  std::size_t length = 0;    ///< in bytes; a byte that is no UTF-8 is one by itself
  bool isPrintable = false;  ///< whether Printable leaves it as it is
};

/// The first character of a text that is not empty.
[[nodiscard]] FirstCharacter FirstCharacterOf(std::string_view text);

/// The text with every byte that is no UTF-8 replaced by U+FFFD, so that it can be in JSON.
[[nodiscard]] std::string ValidUtf8(std::string_view text);

/// JSON with the byte 7F escaped. Writers of JSON take it for a character like the others of ASCII, and a terminal
/// does not.
[[nodiscard]] std::string JsonWithoutDelete(std::string_view json);

/// The text in single quotes, as a shell takes it for one word.
[[nodiscard]] std::string QuotedForShell(std::string_view text);

/// A command line of this program in quotes, the address as a shell takes it.
[[nodiscard]] std::string CommandToType(const std::string& command, const std::string& address);

/// "1 byte", "2 bytes".
[[nodiscard]] std::string ByteCount(std::uint64_t count);

}  // namespace vtdirect_cli
