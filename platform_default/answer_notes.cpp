#include "platform_default/answer_notes.h"

#include <algorithm>
#include <array>

#include "platform_default/characters.h"
#include "platform_default/header_lines.h"

namespace vtdirect::platform {
namespace {

constexpr std::size_t longestStart = 1024;
constexpr std::size_t longestName = 32;
constexpr std::size_t mostSchemes = 4;

// Others are no packing at all ("identity", "utf-8"), and an answer that is marked so is taken as it comes.
constexpr std::array<std::string_view, 5> unknownCodings{"br", "zstd", "compress", "x-compress", "exi"};

bool IsNameByte(char byte) {
  return IsAsciiLetter(byte) || IsAsciiDigit(byte) || byte == '-';
}

/// The name that a text begins with, after blanks; empty when it begins with none that could be shown.
std::string_view LeadingName(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  const auto* end = std::find_if_not(text.begin(), text.end(), IsNameByte);
  const auto length = static_cast<std::size_t>(end - text.begin());
  return length <= longestName ? text.substr(0, length) : std::string_view();
}

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), ToAsciiLower);
  return lower;
}

}  // namespace

void AnswerNotes::NewAnswer() {
  loginSchemes_.clear();
  unknownCoding_.clear();
  start_.clear();
}

void AnswerNotes::HeaderLine(std::string_view line) {
  const std::string_view value = line.substr(std::min(line.find(':') + 1, line.size()));
  if (HasHeaderName(line, "WWW-Authenticate")) {
    const std::string_view scheme = LeadingName(value);
    if (!scheme.empty() && loginSchemes_.size() < mostSchemes) loginSchemes_.emplace_back(scheme);
  } else if (HasHeaderName(line, "Content-Encoding")) {
    const std::string coding = LowerCase(LeadingName(value));
    const bool isUnknown =
        std::find(unknownCodings.begin(), unknownCodings.end(), coding) != unknownCodings.end();
    if (isUnknown) unknownCoding_ = coding;
  }
}

void AnswerNotes::Body(std::string_view bytes) {
  start_ += bytes.substr(0, longestStart - start_.size());
}

std::optional<bool> TellsNonce(std::string_view line) {
  if (!HasHeaderName(line, "WWW-Authenticate")) return std::nullopt;
  const std::string lower = LowerCase(line);
  const std::size_t challenge = lower.find("digest ");
  if (challenge == std::string::npos) return std::nullopt;
  return lower.find("nonce=", challenge) != std::string::npos;
}

}  // namespace vtdirect::platform
