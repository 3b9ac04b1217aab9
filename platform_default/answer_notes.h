#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vtdirect::platform {

/// What an answer shows of itself that is of use only when it turns out to be none of the kind that was asked
/// for. All of it is short, whatever the server sends.
class AnswerNotes {
 public:
  /// Forgets what an answer before has shown.
  void NewAnswer();
  /// A header line of the answer.
  void HeaderLine(std::string_view line);
  /// The next bytes of a body that may tell by its words who speaks.
  void Body(std::string_view bytes);

  /// The ways to log in that are offered, by the names of their schemes.
  [[nodiscard]] const std::vector<std::string>& loginSchemes() const { return loginSchemes_; }
  /// By what the body is packed, if it is a usual way that this transport does not know.
  [[nodiscard]] const std::string& unknownCoding() const { return unknownCoding_; }
  /// The first bytes that Body was given.
  [[nodiscard]] const std::string& start() const { return start_; }

 private:
  std::vector<std::string> loginSchemes_;
  std::string unknownCoding_;
  std::string start_;
};

/// Whether a line that demands a login by Digest tells a nonce for it: one that doesn't leaves curl with none,
/// whatever it had before. Nothing for any other line.
[[nodiscard]] std::optional<bool> TellsNonce(std::string_view line);

}  // namespace vtdirect::platform
