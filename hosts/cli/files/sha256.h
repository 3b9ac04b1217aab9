#pragma once

#include <string>

namespace vtdirect_cli {

/// The SHA-256 of a file's bytes, in small hexadecimal digits; empty when it can't be read to its end.
[[nodiscard]] std::string Sha256OfFile(const std::string& path);

/// The SHA-256 of a text.
[[nodiscard]] std::string Sha256OfText(const std::string& text);

}  // namespace vtdirect_cli
