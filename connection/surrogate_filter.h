#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lxservices::cms_interface::vantry {

/// Puts the bytes of a low surrogate in the place of its escape where no high surrogate goes before it.
///
/// Servers cut texts between the two halves of a character, and the second half ("\uDC00" alone) then begins
/// a text. Such names were always read, as three bytes, while the parser below refuses them. A high surrogate
/// that is alone is refused by it and always was. Pure.
class SurrogateFilter {
 public:
  /// Takes the next piece of a JSON text.
  /// @return what the parser is to have: mostly the very bytes of the piece. An escape that the piece cuts
  /// off is
  ///         held back until the next one. Valid until the next call, and no longer than the piece.
  [[nodiscard]] std::string_view Pass(std::string_view piece);

  /// What is held back, at most five bytes; for the end of the text, where nothing completes it any more.
  [[nodiscard]] std::string_view heldBack() const { return heldBack_; }

 private:
  std::string heldBack_;
  std::string joined_;      ///< a piece together with what was held back before it
  std::string rewritten_;   ///< a piece with other bytes for some of its escapes
  std::size_t judged_ = 0;  ///< bytes at the head of the next piece that need no look
};

}  // namespace lxservices::cms_interface::vantry
