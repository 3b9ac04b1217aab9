#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vtdirect::platform {

/// The header lines of one answer that say where its body ends and how it is coded. When they can be read in
/// two ways, a server and a proxy on the way may mean different bodies, and nobody can tell whether the whole
/// of it came: such an answer is refused.
class AnswerFraming {
 public:
  /// Takes a header line. Those of other names count for nothing.
  /// @return false when the answer is to be refused: for a length that is no decimal number of 63 bits or is
  ///         a list, for a second, different length, for any other transfer coding than one "chunked", and for
  ///         one of these lines with a blank in its name or with a continuation, which curl passes over
  [[nodiscard]] bool Take(std::string_view line);

  /// Whether nothing but the end of the connection tells where the body ends.
  [[nodiscard]] bool EndsWithConnection() const { return !length_ && !chunked_; }
  /// Whether the body is coded (gzip and the like): what comes is not the content itself.
  [[nodiscard]] bool IsCoded() const { return coded_; }

 private:
  [[nodiscard]] bool TakeLength(std::string_view value);

  bool mayContinue_ = true;  ///< whether the line so far may go on in the next one
  std::optional<std::uint64_t> length_;
  bool chunked_ = false;
  bool coded_ = false;
};

}  // namespace vtdirect::platform
