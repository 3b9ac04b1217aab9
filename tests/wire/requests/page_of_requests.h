#pragma once

#include <array>
#include <set>
#include <string>
#include <vector>

namespace vtdirect_test {

/// Requests of a call on a fresh server object, and of the same call again.
struct Cost {
  int first = -1;
  int later = -1;
  friend bool operator==(const Cost&, const Cost&) = default;
};

/// One line of the table in docs/requests.md.
struct RequestRow {
  std::string function;
  std::string calledWith;
  std::array<Cost, 4> costs;  ///< gateway, schema1, schema4, schema5
};

/// The rows of the page's table, in order. A cell that is no pair of numbers gives a cost of -1.
[[nodiscard]] std::vector<RequestRow> ReadRequestRows();
/// The functions that a section of the page names, by its heading.
[[nodiscard]] std::set<std::string> ReadNamesInSection(const std::string& heading);
/// The functions that the public headers declare.
[[nodiscard]] std::set<std::string> ReadPublicFunctions();

}  // namespace vtdirect_test
