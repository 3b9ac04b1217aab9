#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/support/trace_recorder.h"

/// The small words that a test of the wire is written in: pieces of JSON, request lines, traces, and lists of them.
namespace vtdirect_test {

using Lines = std::vector<std::string>;
using Traces = std::vector<TraceLine>;

/// A text as JSON. It holds nothing that JSON would escape.
inline std::string Quoted(const std::string& text) {
  return "\"" + text + "\"";
}

/// A JSON list of elements that are JSON already.
inline std::string List(const std::vector<std::string>& elements) {
  std::string text;
  for (const std::string& element : elements) text += (text.empty() ? "" : ",") + element;
  return "[" + text + "]";
}

/// A page of OData. The link to the next page follows the rows.
inline std::string Rows(const std::vector<std::string>& rows, const std::string& nextLink = {}) {
  const std::string link = nextLink.empty() ? "" : ",\"@odata.nextLink\":" + Quoted(nextLink);
  return "{\"value\":" + List(rows) + link + "}";
}

/// A page of OData whose link to the next page comes first, as some servers write it.
inline std::string RowsAfterLink(const std::string& nextLink, const std::vector<std::string>& rows) {
  return "{\"@odata.nextLink\":" + Quoted(nextLink) + ",\"value\":" + List(rows) + "}";
}

/// The request line for a path below the tests' server URL, which ends in "/vt".
inline std::string Get(const std::string& path) {
  return "GET /vt/" + path;
}
inline std::string Post(const std::string& path) {
  return "POST /vt/" + path;
}

/// Traced lines of the library, by their type.
inline TraceLine Information(const std::string& text) {
  return {0, "VtDirect", text};
}
inline TraceLine Miss(const std::string& text) {
  return {1, "VtDirect", text};
}
inline TraceLine Warning(const std::string& text) {
  return {2, "VtDirect", text};
}
inline TraceLine Error(const std::string& text) {
  return {3, "VtDirect", text};
}

/// One list after the other.
template <typename Element>
std::vector<Element> Appended(std::vector<Element> first, const std::vector<Element>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

/// The same for lists that a call may write in braces; other lists have a Join beside their type.
inline Lines Join(Lines first, const Lines& second) {
  return Appended(std::move(first), second);
}
inline Traces Join(Traces first, const Traces& second) {
  return Appended(std::move(first), second);
}

}  // namespace vtdirect_test
