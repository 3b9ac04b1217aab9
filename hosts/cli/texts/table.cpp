#include "hosts/cli/texts/table.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

#include "hosts/cli/program/environment.h"

namespace vtdirect_cli {
namespace {

constexpr std::size_t mostHeld = 500;
constexpr std::chrono::seconds longestHeld(1);
constexpr const char* between = "  ";

constexpr std::string_view plain = "\x1B[0m";
constexpr std::string_view bold = "\x1B[1m";
constexpr std::string_view red = "\x1B[31m";
constexpr std::string_view green = "\x1B[32m";
constexpr std::string_view yellow = "\x1B[33m";
constexpr std::string_view blue = "\x1B[34m";
constexpr std::string_view cyan = "\x1B[36m";

/// The colour of a word that tells a state.
struct Tone {
  std::string_view word;
  std::string_view colour;
};

constexpr std::array<Tone, 12> tones{{{"both", red},
                                      {"failed", red},
                                      {"gone", red},
                                      {"in-the-way", red},
                                      {"here", green},
                                      {"latest", green},
                                      {"new", green},
                                      {"up-to-date", green},
                                      {"missing", yellow},
                                      {"modified", yellow},
                                      {"outdated", yellow},
                                      {"newer", cyan}}};

[[nodiscard]] std::string_view ColourOf(const std::string& key, const std::string& cell) {
  if (key == "name" && cell.ends_with('/')) return blue;
  if (key != "state" && key != "status" && key != "latest" && key != "mark") return {};
  for (const Tone& tone : tones) {
    if (cell.substr(0, cell.find(' ')) == tone.word) return tone.colour;
  }
  return {};
}

[[nodiscard]] std::string Coloured(std::string_view colour, const std::string& text) {
  if (colour.empty() || text.empty()) return text;
  return std::string(colour) + text + std::string(plain);
}

[[nodiscard]] std::string HeadingOf(const std::string& key) {
  std::string heading = key;
  for (char& c : heading) {
    if (c == '_') c = ' ';
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return heading;
}

[[nodiscard]] bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

[[nodiscard]] char Folded(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The digits at the beginning, without zeros in front, which are taken off the text.
[[nodiscard]] std::string_view TakeNumber(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_not_of("0123456789"), text.size());
  std::string_view number = text.substr(0, end);
  text.remove_prefix(end);
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
  return number;
}

struct Range {
  char32_t first;
  char32_t last;
};

// Marks that stand over the letter before them.
constexpr std::array<Range, 4> noColumn{
    {{0x0300, 0x036F}, {0x200B, 0x200D}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}}};
// Characters of East Asia, and pictures.
constexpr std::array<Range, 8> twoColumns{{{0x1100, 0x115F},
                                           {0x2E80, 0x303E},
                                           {0x3041, 0xA4CF},
                                           {0xAC00, 0xD7A3},
                                           {0xF900, 0xFAFF},
                                           {0xFF00, 0xFF60},
                                           {0x1F300, 0x1FAFF},
                                           {0x20000, 0x3FFFD}}};

template <std::size_t Count>
[[nodiscard]] bool IsIn(const std::array<Range, Count>& ranges, char32_t character) {
  return std::any_of(ranges.begin(), ranges.end(), [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

[[nodiscard]] std::size_t ColumnsOf(char32_t character) {
  if (IsIn(noColumn, character)) return 0;
  return IsIn(twoColumns, character) ? 2 : 1;
}

// The character whose first byte this is, of a text that is whole UTF-8.
[[nodiscard]] char32_t TakeCharacter(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  char32_t character = length == 1 ? first : first & (0x7FU >> length);
  for (std::size_t at = 1; at < std::min(length, text.size()); ++at) {
    character = (character << 6U) | (static_cast<unsigned char>(text[at]) & 0x3FU);
  }
  text.remove_prefix(std::min(length, text.size()));
  return character;
}

}  // namespace

Screen StandardScreen() {
  Screen screen;
  screen.isTerminal = isatty(STDOUT_FILENO) == 1;
  const std::string terminal = Environment("TERM");
  screen.hasColours =
      screen.isTerminal && Environment("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb";
  return screen;
}

bool ComesBefore(std::string_view one, std::string_view other) {
  const std::pair wholes(one, other);
  while (!one.empty() && !other.empty()) {
    if (IsDigit(one.front()) && IsDigit(other.front())) {
      const std::string_view first = TakeNumber(one);
      const std::string_view second = TakeNumber(other);
      if (first.size() != second.size()) return first.size() < second.size();
      if (first != second) return first < second;
      continue;
    }
    const auto first = static_cast<unsigned char>(Folded(one.front()));
    const auto second = static_cast<unsigned char>(Folded(other.front()));
    if (first != second) return first < second;
    one.remove_prefix(1);
    other.remove_prefix(1);
  }
  if (one.empty() != other.empty()) return one.empty();
  return wholes.first < wholes.second;
}

std::size_t WidthOnScreen(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) width += ColumnsOf(TakeCharacter(text));
  return width;
}

std::string Table::Add(TableRow row, Clock::time_point now) {
  const bool isList = row.cells.size() < 2;
  const bool isShown = !screen_.isTerminal || (isList && held_.empty()) || !widths_.empty();
  if (!sorted_ && isShown) return Line(row);
  if (held_.empty()) firstHeld_ = now;
  held_.push_back(std::move(row));
  const bool isDue = held_.size() >= mostHeld || now - firstHeld_ >= longestHeld;
  return isDue ? ShowHeld() : "";
}

std::string Table::ShowHeld() {
  return sorted_ ? "" : Draw();
}

std::string Table::End() {
  std::stable_sort(held_.begin(), held_.end(), [this](const TableRow& one, const TableRow& other) {
    return sorted_ && ComesBefore(one.sortKey, other.sortKey);
  });
  return Draw();
}

std::string Table::Draw() {
  if (held_.empty()) return {};
  std::string text;
  if (screen_.isTerminal && widths_.empty()) {
    FitColumns();
    text = Heading();
  }
  for (const TableRow& row : held_) text += Line(row);
  held_.clear();
  return text;
}

void Table::FitColumns() {
  const auto widest = std::max_element(
      held_.begin(), held_.end(),
      [](const TableRow& one, const TableRow& other) { return one.keys.size() < other.keys.size(); });
  headings_ = widest->keys;
  if (headings_.size() < 2) headings_.clear();
  widths_.assign(std::max<std::size_t>(widest->keys.size(), 1), 0);
  for (std::size_t column = 0; column < headings_.size(); ++column) {
    widths_[column] = WidthOnScreen(HeadingOf(headings_[column]));
  }
  for (const TableRow& row : held_) {
    for (std::size_t column = 0; column < row.cells.size(); ++column) {
      widths_[column] = std::max(widths_[column], WidthOnScreen(row.cells[column]));
    }
  }
}

std::string Table::Heading() const {
  if (headings_.empty()) return {};
  std::string line;
  for (std::size_t column = 0; column < headings_.size(); ++column) {
    const std::string heading = HeadingOf(headings_[column]);
    line += (column == 0 ? "" : between) + heading;
    if (column + 1 < headings_.size()) line.append(widths_[column] - WidthOnScreen(heading), ' ');
  }
  return Coloured(screen_.hasColours ? bold : std::string_view(), line) + "\n";
}

std::string Table::Line(const TableRow& row) const {
  if (!screen_.isTerminal) return row.line;
  std::string line;
  std::size_t missing = 0;  // blanks that only what comes after them needs
  for (std::size_t column = 0; column < row.cells.size(); ++column) {
    const std::string& cell = row.cells[column];
    if (column > 0) missing += std::string_view(between).size();
    const std::size_t width = WidthOnScreen(cell);
    if (!cell.empty()) {
      line.append(missing, ' ');
      line += screen_.hasColours ? Coloured(ColourOf(row.keys[column], cell), cell) : cell;
      missing = 0;
    }
    if (column < widths_.size() && widths_[column] > width) missing += widths_[column] - width;
  }
  return line + "\n";
}

}  // namespace vtdirect_cli
