#include "simulator/wire/multipart_reader.h"

#include <algorithm>
#include <utility>

namespace vantry_sim {
namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::string_view headEnd = "\r\n\r\n";
constexpr std::size_t longestBoundary = 70;
/// Blanks that may follow a boundary.
constexpr std::size_t mostPadding = 256;

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string Lower(std::string_view text) {
  std::string out;
  for (const char c : text) out += Lower(c);
  return out;
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

/// Which quote ends a value.
enum class ClosingQuote { Next, Last };

/// The value of a parameter such as `name="x"`, which begins at the parameter's name.
std::string QuotedValue(std::string_view text, ClosingQuote closing) {
  const auto open = text.find('"');
  if (open == std::string_view::npos) return {};
  const auto close = closing == ClosingQuote::Last ? text.rfind('"') : text.find('"', open + 1);
  if (close == std::string_view::npos || close == open) return {};
  return std::string(text.substr(open + 1, close - open - 1));
}

void ReadDisposition(std::string_view value, PartHead& head) {
  const auto file = value.find("filename=");
  const std::string_view front = value.substr(0, file);
  if (const auto name = front.find("name="); name != std::string_view::npos) {
    head.name = QuotedValue(front.substr(name), ClosingQuote::Next);
  }
  // Senders are known to write a local file's name as it is, with the quotes that it may hold.
  if (file != std::string_view::npos) head.fileName = QuotedValue(value.substr(file), ClosingQuote::Last);
}

}  // namespace

MultipartReader::MultipartReader(std::string_view boundary, PartSink& sink)
    : delimiter_(std::string("\r\n--").append(boundary)), sink_(sink), pending_(lineEnd) {
  // The line end in `pending_` stands for the one that a body without a preamble doesn't begin with.
  if (boundary.empty()) Break("the boundary is empty");
}

bool MultipartReader::Feed(std::string_view bytes) {
  if (state_ == State::Broken) return false;
  if (state_ == State::Epilogue) return true;
  pending_.append(bytes);
  while (Step()) {
  }
  return state_ != State::Broken;
}

/// Reads what it can. @return false when more bytes are needed or nothing is left to do
bool MultipartReader::Step() {
  switch (state_) {
    case State::Preamble:
      return ReadToBoundary(BytesRead::Drop);
    case State::BoundaryEnd:
      return ReadBoundaryEnd();
    case State::Head:
      return ReadHead();
    case State::Bytes:
      return ReadToBoundary(BytesRead::Keep);
    case State::Epilogue:
      pending_.clear();
      return false;
    case State::Broken:
      return false;
  }
  return false;
}

bool MultipartReader::ReadToBoundary(BytesRead bytes) {
  const auto at = pending_.find(delimiter_);
  const bool found = at != std::string::npos;
  // The boundary may have begun in the last bytes.
  const std::size_t certain =
      found ? at : (pending_.size() >= delimiter_.size() ? pending_.size() - delimiter_.size() + 1 : 0);
  if (bytes == BytesRead::Keep && certain > 0 &&
      !sink_.PartBytes(std::string_view(pending_).substr(0, certain)))
    return Refused();
  pending_.erase(0, found ? certain + delimiter_.size() : certain);
  if (!found) return false;
  if (bytes == BytesRead::Keep && !sink_.EndPart()) return Refused();
  state_ = State::BoundaryEnd;
  return true;
}

bool MultipartReader::ReadBoundaryEnd() {
  if (pending_.size() < 2) return false;
  if (pending_.starts_with("--")) {
    state_ = State::Epilogue;
    return true;
  }
  const auto end = pending_.find_first_not_of(" \t");
  if (end > mostPadding && pending_.size() > mostPadding) return Break("a boundary line has no end");
  if (end == std::string::npos || pending_.size() < end + 2) return false;
  if (pending_.compare(end, 2, lineEnd) != 0) return Break("a boundary line goes on after the boundary");
  if (++parts_ > mostParts) return Break("the body has too many parts");
  // The line end stays: with the one in front of it, a part without any head ends at once.
  pending_.erase(0, end);
  state_ = State::Head;
  return true;
}

bool MultipartReader::ReadHead() {
  const auto end = pending_.find(headEnd);
  if (end == std::string::npos ? pending_.size() > mostHeadBytes : end > mostHeadBytes) {
    return Break("the head of a part is too long");
  }
  if (end == std::string::npos) return false;
  PartHead head;
  if (!ParsePartHead(std::string_view(pending_).substr(0, end + lineEnd.size()), head)) {
    return Break("the head of a part cannot be read");
  }
  pending_.erase(0, end + headEnd.size());
  if (!sink_.BeginPart(head)) return Refused();
  state_ = State::Bytes;
  return true;
}

bool MultipartReader::Break(std::string problem) {
  problem_ = std::move(problem);
  return Refused();
}

bool MultipartReader::Refused() {
  state_ = State::Broken;
  pending_.clear();
  return false;
}

std::string BoundaryOf(std::string_view contentType) {
  constexpr std::string_view formType = "multipart/form-data";
  constexpr std::string_view parameter = "boundary=";
  if (Lower(contentType.substr(0, formType.size())) != formType) return {};
  const auto at = Lower(contentType).find(parameter);
  if (at == std::string::npos) return {};
  std::string_view value = contentType.substr(at + parameter.size());
  if (value.starts_with('"')) {
    value.remove_prefix(1);
    if (value.find('"') == std::string_view::npos) return {};
    value = value.substr(0, value.find('"'));
  } else {
    value = value.substr(0, value.find_first_of("; \t"));
  }
  if (value.size() > longestBoundary || value.find_first_of("\r\n") != std::string_view::npos) return {};
  return std::string(value);
}

bool ParsePartHead(std::string_view lines, PartHead& head) {
  while (!lines.empty()) {
    const auto end = lines.find(lineEnd);
    const std::string_view line = lines.substr(0, end);
    lines.remove_prefix(end == std::string_view::npos ? lines.size() : end + lineEnd.size());
    if (line.empty()) continue;
    const auto colon = line.find(':');
    if (colon == std::string_view::npos || colon == 0) return false;
    const std::string name = Lower(line.substr(0, colon));
    const std::string_view value = Trimmed(line.substr(colon + 1));
    if (name == "content-disposition") ReadDisposition(value, head);
    if (name == "content-type") head.type = value;
  }
  return true;
}

}  // namespace vantry_sim
