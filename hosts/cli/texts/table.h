#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vtdirect_cli {

/// What standard output is.
struct Screen {
  bool isTerminal = false;
  bool hasColours = false;  ///< only of a terminal
};

/// That of this process. There are no colours with NO_COLOR, and on a terminal that says that it is dumb.
[[nodiscard]] Screen StandardScreen();

/// One row of a listing.
struct TableRow {
  std::vector<std::string> keys;   ///< names of the columns
  std::vector<std::string> cells;  ///< one for each, fit for a terminal
  std::string line;                ///< the row as a pipe gets it, with its line feed
  std::string sortKey;             ///< what it is sorted by
};

/// Whether one text comes before another where people look for it: "B.2" before "B.10", and without regard to the
/// case of ASCII letters.
[[nodiscard]] bool ComesBefore(std::string_view one, std::string_view other);

/// How many columns of a terminal a text takes.
[[nodiscard]] std::size_t WidthOnScreen(std::string_view text);

/// A listing as people want it: sorted, and on a terminal with headings and columns, which fit the rows that came
/// first. A row of one cell has no heading, and goes on at once.
class Table {
 public:
  using Clock = std::chrono::steady_clock;

  /// @param sorted  whether all rows are kept until the end, and come in the order of their keys then
  Table(Screen screen, bool sorted) : screen_(screen), sorted_(sorted) {}

  /// @param now  rows are held so that the columns fit them, but for a second at most
  /// @return what is to be written now; often nothing
  [[nodiscard]] std::string Add(TableRow row, Clock::time_point now);
  /// What is held, since something else is to be written. Nothing while rows wait to be sorted.
  [[nodiscard]] std::string ShowHeld();
  /// What is left at the end.
  [[nodiscard]] std::string End();

 private:
  [[nodiscard]] std::string Draw();
  void FitColumns();
  [[nodiscard]] std::string Heading() const;
  [[nodiscard]] std::string Line(const TableRow& row) const;

  Screen screen_;
  bool sorted_;
  std::vector<TableRow> held_;
  Clock::time_point firstHeld_ = {};
  std::vector<std::string> headings_;  ///< empty for a list of one column
  std::vector<std::size_t> widths_;    ///< of the columns; empty until the first rows are drawn
};

}  // namespace vtdirect_cli
