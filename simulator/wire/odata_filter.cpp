#include "simulator/wire/odata_filter.h"

#include <string>

namespace vantry_sim {
namespace {

constexpr std::size_t longestFilter = 64 * 1024;
constexpr int deepest = 32;
constexpr int mostComparisons = 64;

bool IsWordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.' ||
         c == '/' || c == '@';
}

/// One pass over the filter by recursive descent; `or` binds weaker than `and`.
class FilterReader {
 public:
  FilterReader(std::string_view text, const ODataEntity& entity, ODataProblem& problem)
      : rest_(text), entity_(entity), problem_(problem) {}

  bool Read(SqlText& sql) {
    if (!ReadOr(sql, 0)) return false;
    SkipBlanks();
    return rest_.empty() || FailAtText("the $filter goes on after its end");
  }

  /// Whether it failed where an apostrophe had ended a text too early, or too late.
  [[nodiscard]] bool failedAtText() const { return failedAtText_; }

 private:
  bool ReadOr(SqlText& sql, int depth) {
    return ReadJoined(sql, depth, "or", " OR ", &FilterReader::ReadAnd);
  }
  bool ReadAnd(SqlText& sql, int depth) {
    return ReadJoined(sql, depth, "and", " AND ", &FilterReader::ReadTerm);
  }

  bool ReadJoined(SqlText& sql, int depth, std::string_view word, std::string_view ownWord,
                  bool (FilterReader::*read)(SqlText&, int)) {
    sql.Add("(");
    if (!(this->*read)(sql, depth)) return false;
    while (TakeWord(word)) {
      sql.Add(ownWord);
      if (!(this->*read)(sql, depth)) return false;
    }
    sql.Add(")");
    return true;
  }

  bool ReadTerm(SqlText& sql, int depth) {
    SkipBlanks();
    if (!rest_.starts_with('(')) return ReadComparison(sql);
    if (depth >= deepest) return Fail(400, "the $filter is nested too deeply");
    rest_.remove_prefix(1);
    if (!ReadOr(sql, depth + 1)) return false;
    SkipBlanks();
    if (!rest_.starts_with(')')) return Fail(400, "a ) is missing in the $filter");
    rest_.remove_prefix(1);
    return true;
  }

  bool ReadComparison(SqlText& sql) {
    if (++comparisons_ > mostComparisons) return Fail(400, "the $filter has too many comparisons");
    const std::string_view name = Word();
    if (name.empty()) return Fail(400, "a property is missing in the $filter");
    SkipBlanks();
    if (rest_.starts_with('(') || name == "not")
      return Fail(501, "functions and not are not evaluated in a $filter");
    const ODataProperty* property = entity_.Find(name);
    if (property == nullptr) return Fail(400, "the $filter names a property that these rows don't have");
    if (property->column.empty()) return Fail(501, "rows are not filtered by this property");
    const std::string_view comparison = Word();
    if (comparison.empty()) return Fail(400, "an operator is missing in the $filter");
    if (comparison != "eq") return Fail(501, "eq is the only comparison in a $filter");
    std::string value;
    if (!ReadText(value)) return false;
    sql.Add(property->column).Add(" = ").Value(std::move(value));
    return true;
  }

  bool ReadText(std::string& value) {
    SkipBlanks();
    if (!rest_.starts_with('\'')) return Fail(400, "a text in apostrophes is missing in the $filter");
    for (std::size_t i = 1; i < rest_.size(); ++i) {
      if (rest_[i] != '\'') {
        value += rest_[i];
      } else if (i + 1 < rest_.size() && rest_[i + 1] == '\'') {
        value += rest_[i++];
      } else {
        rest_.remove_prefix(i + 1);
        return true;
      }
    }
    return FailAtText("a text in the $filter has no end");
  }

  bool TakeWord(std::string_view word) {
    const std::string_view before = rest_;
    if (Word() == word) return true;
    rest_ = before;
    return false;
  }

  std::string_view Word() {
    SkipBlanks();
    std::size_t length = 0;
    while (length < rest_.size() && IsWordCharacter(rest_[length])) ++length;
    const std::string_view word = rest_.substr(0, length);
    rest_.remove_prefix(length);
    return word;
  }

  void SkipBlanks() {
    while (rest_.starts_with(' ') || rest_.starts_with('\t')) rest_.remove_prefix(1);
  }

  bool Fail(int status, const char* reason) {
    problem_ = {status, reason};
    return false;
  }

  bool FailAtText(const char* reason) {
    failedAtText_ = true;
    return Fail(400, reason);
  }

  std::string_view rest_;
  const ODataEntity& entity_;
  ODataProblem& problem_;
  int comparisons_ = 0;
  bool failedAtText_ = false;
};

/// One comparison whose text holds single apostrophes, from the first of the filter to the last.
std::optional<SqlText> ReadUndoubled(std::string_view text, const ODataEntity& entity) {
  const auto first = text.find('\'');
  const auto last = text.rfind('\'');
  if (first == last || last + 1 != text.size()) return std::nullopt;
  std::string doubled(text.substr(0, first + 1));
  const std::string_view inner = text.substr(first + 1, last - first - 1);
  for (const char c : inner) doubled.append(c == '\'' ? 2 : 1, c);
  doubled += '\'';
  ODataProblem ignored;
  SqlText sql;
  if (!FilterReader(doubled, entity, ignored).Read(sql)) return std::nullopt;
  return sql;
}

}  // namespace

std::optional<SqlText> ParseODataFilter(std::string_view text, const ODataEntity& entity,
                                        ODataProblem& problem) {
  if (text.size() > longestFilter) {
    problem = {400, "the $filter is too long"};
    return std::nullopt;
  }
  SqlText sql;
  FilterReader reader(text, entity, problem);
  if (reader.Read(sql)) return sql;
  if (!reader.failedAtText()) return std::nullopt;
  return ReadUndoubled(text, entity);
}

}  // namespace vantry_sim
