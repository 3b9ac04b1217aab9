#include "tests/wire/requests/page_of_requests.h"

#include <fstream>
#include <iterator>
#include <regex>

namespace vtdirect_test {
namespace {

std::string ReadWhole(const char* path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// What a cell shows: without the blanks around it and the marks of code.
std::string Cell(const std::string& text) {
  static const std::regex marks("^ +| +$|`");
  return std::regex_replace(text, marks, "");
}

Cost ReadCost(const std::string& cell) {
  static const std::regex pair("([0-9]+) / ([0-9]+)");
  std::smatch numbers;
  if (!std::regex_match(cell, numbers, pair)) return {};
  return {std::stoi(numbers[1]), std::stoi(numbers[2])};
}

std::vector<std::string> SplitLine(const std::string& line) {
  std::vector<std::string> cells;
  for (std::size_t start = 1; start < line.size();) {
    const std::size_t bar = line.find('|', start);
    if (bar == std::string::npos) break;
    cells.push_back(Cell(line.substr(start, bar - start)));
    start = bar + 1;
  }
  return cells;
}

}  // namespace

std::vector<RequestRow> ReadRequestRows() {
  std::ifstream page(REQUESTS_PAGE);
  std::vector<RequestRow> rows;
  for (std::string line; std::getline(page, line);) {
    if (!line.starts_with("| `")) continue;
    const auto cells = SplitLine(line);
    RequestRow row;
    if (cells.size() > 1) row.function = cells[0], row.calledWith = cells[1];
    for (std::size_t column = 0; column < row.costs.size() && column + 2 < cells.size(); ++column) {
      row.costs[column] = ReadCost(cells[column + 2]);
    }
    rows.push_back(row);
  }
  return rows;
}

std::set<std::string> ReadNamesInSection(const std::string& heading) {
  const std::string page = ReadWhole(REQUESTS_PAGE);
  const std::size_t start = page.find("\n## " + heading + "\n");
  std::set<std::string> names;
  if (start == std::string::npos) return names;
  const std::string section = page.substr(start, page.find("\n## ", start + 1) - start);
  static const std::regex name("`([A-Za-z]+)`");
  for (std::sregex_iterator hit(section.begin(), section.end(), name), end; hit != end; ++hit) {
    names.insert((*hit)[1]);
  }
  return names;
}

std::set<std::string> ReadPublicFunctions() {
  static const std::regex declaration(R"(VTDIRECT_API [A-Za-z0-9_:*<> ]*[ *]([A-Z][A-Za-z]+)\()");
  std::set<std::string> names;
  for (const char* header : {MANAGER_HEADER, UTILS_HEADER}) {
    const std::string text = ReadWhole(header);
    for (std::sregex_iterator hit(text.begin(), text.end(), declaration), end; hit != end; ++hit) {
      names.insert((*hit)[1]);
    }
  }
  return names;
}

}  // namespace vtdirect_test
