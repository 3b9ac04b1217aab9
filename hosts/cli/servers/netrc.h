#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vtdirect_cli {

/// One "machine" or "default" of a netrc file.
struct NetrcEntry {
  bool isDefault = false;
  std::string machine;  ///< empty for "default"
  std::string login;
  std::string password;
};

/// Reads the text of a netrc file: "machine NAME", "default", "login NAME", "password TEXT", "account TEXT",
/// "macdef" up to the next empty line. A word in double quotes may hold blanks, and a backslash in it takes
/// the next byte as it is. "#" at the start of a line makes a comment. Unknown words are passed over.
[[nodiscard]] std::vector<NetrcEntry> ReadNetrc(std::string_view text);

/// The first entry for the host that has a password and, when `user` is not empty, that login; else the
/// "default" entry under the same condition.
[[nodiscard]] std::optional<NetrcEntry> FindInNetrc(const std::vector<NetrcEntry>& entries,
                                                    std::string_view host, std::string_view user);

}  // namespace vtdirect_cli
