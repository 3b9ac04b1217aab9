#pragma once

#include <cstddef>
#include <string_view>

namespace vtdirect_cli {

/// Every option, as it is written after the two dashes, and every operand, in capital letters; a blank before
/// and after each.
inline constexpr std::string_view argumentNames =
    " ADDRESS DIR FILE NICK PATH URL all anywhere auto-checkout base ca-file cache cache-size cad checkin "
    "checkouts client-cert client-key config connect-timeout depth discard dry-run expect folder force "
    "foreground forget from full-paths help if-changed json kind language latest link log log-http long "
    "max-time metadata mine name netrc newer no-clobber no-preview no-prompt no-usual-scratch null number "
    "on output parallel proxy quiet recursive refresh renew retries scratch server sort stall-timeout "
    "stop-on-error token trace user verbose version versioned versions viewable write ";

/// Whether an option or an operand is called so.
[[nodiscard]] constexpr bool IsArgumentName(std::string_view text) {
  if (text.empty() || text.find(' ') != std::string_view::npos) return false;
  for (std::size_t at = argumentNames.find(text); at != std::string_view::npos;
       at = argumentNames.find(text, at + 1)) {
    if (argumentNames[at - 1] == ' ' && argumentNames[at + text.size()] == ' ') return true;
  }
  return false;
}

/// The name of an option or an operand. A text in the source becomes one if it is in the list above; any other
/// does not compile. The tables of the commands and the code that reads what was given both use it, so that
/// an option is never asked for by a name that nobody can type.
class ArgumentName {
 public:
  consteval ArgumentName(const char* text) : text_(text) {
    if (!IsArgumentName(text)) throw "no option and no operand is called so";
  }

  /// Lives as long as the process.
  [[nodiscard]] constexpr const char* text() const { return text_; }
  friend constexpr bool operator==(ArgumentName one, ArgumentName other) {
    return std::string_view(one.text_) == other.text_;
  }
  friend constexpr bool operator<(ArgumentName one, ArgumentName other) {
    return std::string_view(one.text_) < other.text_;
  }

 private:
  const char* text_;
};

}  // namespace vtdirect_cli
