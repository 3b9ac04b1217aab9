#include "simulator/wire/request_head.h"

#include <algorithm>

namespace vantry_sim {
namespace {

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r'))
    text.remove_suffix(1);
  return text;
}

/// The text up to a line feed, which is cut off with it.
std::string_view TakeLine(std::string_view& text) {
  const auto end = text.find('\n');
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return line;
}

}  // namespace

bool SameHeaderName(std::string_view left, std::string_view right) {
  return left.size() == right.size() && std::equal(left.begin(), left.end(), right.begin(),
                                                   [](char a, char b) { return Lower(a) == Lower(b); });
}

std::string_view RequestHead::Header(std::string_view name) const {
  for (const auto& [key, value] : headers) {
    if (SameHeaderName(key, name)) return value;
  }
  return {};
}

RequestHead ReadRequestHead(std::string_view bytes) {
  RequestHead head;
  const std::string_view first = Trimmed(TakeLine(bytes));
  const auto blank = first.find(' ');
  const auto last = first.rfind(' ');
  head.method = first.substr(0, blank);
  if (blank != std::string_view::npos && last > blank)
    head.target = Trimmed(first.substr(blank, last - blank));
  while (!bytes.empty()) {
    const std::string_view line = TakeLine(bytes);
    const auto colon = line.find(':');
    if (Trimmed(line).empty()) break;
    if (colon == std::string_view::npos) continue;
    head.headers.emplace_back(Trimmed(line.substr(0, colon)), Trimmed(line.substr(colon + 1)));
  }
  return head;
}

HeadEnd FindHeadEnd(std::string_view bytes, std::size_t from) {
  const auto lineEnd = bytes.find('\n');
  if (lineEnd == std::string_view::npos) return {};
  const std::string_view first = bytes.substr(0, lineEnd + 1);
  if (!first.ends_with(" HTTP/1.1\r\n") && !first.ends_with(" HTTP/1.0\r\n")) return {true, first.size()};
  // The HTTP library passes over lines that end without a carriage return, so that none of them is the end.
  const auto emptyLine = bytes.find("\n\r\n", from < 2 ? 0 : from - 2);
  return emptyLine == std::string_view::npos ? HeadEnd{} : HeadEnd{true, emptyLine + 3};
}

}  // namespace vantry_sim
