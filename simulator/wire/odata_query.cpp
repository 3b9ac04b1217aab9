#include "simulator/wire/odata_query.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <set>

namespace vantry_sim {
namespace {

constexpr std::size_t mostNames = 32;
constexpr std::array<std::string_view, 6> optionsNotOffered{"$skip",    "$count", "$search",
                                                            "$compute", "$apply", "$format"};

std::string_view Trimmed(std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  return text;
}

template <typename Number>
std::optional<Number> WholeNumber(std::string_view text) {
  Number value{};
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || code != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

/// The parts between separators, trimmed. Empty parts are kept.
std::vector<std::string_view> Parts(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (;;) {
    const auto end = text.find(separator);
    parts.push_back(Trimmed(text.substr(0, end)));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

class QueryReader {
 public:
  explicit QueryReader(ODataProblem& problem) : problem_(problem) {}

  std::optional<ODataQuery> Read(const QueryParameters& parameters) {
    for (const auto& [name, value] : parameters) {
      if (!seen_.insert(name).second) return Refuse(400, "the query option " + name + " comes twice");
      if (!ReadOption(name, value)) return std::nullopt;
    }
    return std::move(query_);
  }

 private:
  std::optional<ODataQuery> Refuse(int status, std::string reason) {
    Fail(status, std::move(reason));
    return std::nullopt;
  }

  bool Fail(int status, std::string reason) {
    problem_ = {status, std::move(reason)};
    return false;
  }

  bool ReadOption(const std::string& name, const std::string& value) {
    if (name == "$filter") return ReadFilter(value);
    if (name == "$select") return ReadNames(value, query_.select);
    if (name == "$orderby") return ReadOrder(value);
    if (name == "$top") return ReadTop(value);
    if (name == "$expand") return ReadExpand(value);
    if (name == "$skiptoken") {
      query_.skipToken = value;
      return true;
    }
    if (name == "zvk.search.latestversion") return ReadLatestVersion(value);
    const bool known =
        std::find(optionsNotOffered.begin(), optionsNotOffered.end(), name) != optionsNotOffered.end();
    return Fail(known ? 501 : 400, "this server doesn't know the query option " + name);
  }

  bool ReadFilter(const std::string& value) {
    if (Trimmed(value).empty()) return Fail(400, "the $filter is empty");
    query_.filter = value;
    return true;
  }

  bool ReadNames(std::string_view value, std::vector<std::string>& names) {
    for (const std::string_view part : Parts(value, ',')) {
      if (part.empty()) return Fail(400, "a name is missing in a $select");
      if (part == "*") return Fail(501, "* is not read in a $select");
      names.emplace_back(part);
    }
    return names.size() <= mostNames || Fail(400, "a $select has too many names");
  }

  bool ReadOrder(std::string_view value) {
    for (const std::string_view part : Parts(value, ',')) {
      const auto blank = part.find(' ');
      const std::string_view direction =
          blank == std::string_view::npos ? std::string_view("asc") : Trimmed(part.substr(blank + 1));
      if (part.empty() || (direction != "asc" && direction != "desc")) {
        return Fail(400, "an $orderby is a list of properties, each with asc or desc after it or nothing");
      }
      query_.order.push_back({std::string(part.substr(0, blank)), direction == "desc"});
    }
    return query_.order.size() <= mostNames || Fail(400, "an $orderby has too many names");
  }

  bool ReadTop(const std::string& value) {
    query_.top = WholeNumber<std::uint64_t>(value);
    return query_.top || Fail(400, "$top is a number");
  }

  bool ReadLatestVersion(const std::string& value) {
    if (value != "true" && value != "false") return Fail(400, "zvk.search.latestversion is true or false");
    query_.latestVersionOnly = value == "true";
    return true;
  }

  /// `Navigation`, or `Navigation(option;option)`. No option of ours holds parentheses, so one closing one
  /// ends it.
  bool ReadExpand(std::string_view value) {
    value = Trimmed(value);
    ODataExpand expand;
    const auto open = value.find('(');
    expand.navigation = Trimmed(value.substr(0, open));
    if (expand.navigation.find(',') != std::string::npos) return Fail(501, "an $expand takes one navigation");
    if (open != std::string_view::npos) {
      if (!value.ends_with(')')) return Fail(400, "a ) is missing in the $expand");
      const std::string_view options = value.substr(open + 1, value.size() - open - 2);
      for (const std::string_view option : Parts(options, ';')) {
        if (!ReadExpandOption(option, expand)) return false;
      }
    }
    query_.expand = std::move(expand);
    return true;
  }

  bool ReadExpandOption(std::string_view option, ODataExpand& expand) {
    const auto equals = option.find('=');
    const std::string_view name = option.substr(0, equals);
    const std::string_view value =
        equals == std::string_view::npos ? std::string_view() : option.substr(equals + 1);
    if (name == "$select") return ReadNames(value, expand.select);
    if (name != "$levels") return Fail(501, "an $expand takes $levels and $select");
    if (value == "max") {
      expand.levels = std::numeric_limits<std::uint32_t>::max();
      return true;
    }
    const auto levels = WholeNumber<std::uint32_t>(value);
    if (!levels || *levels == 0) return Fail(400, "$levels is a number from 1, or max");
    expand.levels = *levels;
    return true;
  }

  ODataProblem& problem_;
  ODataQuery query_;
  std::set<std::string> seen_;
};

}  // namespace

std::optional<ODataQuery> ParseODataQuery(const QueryParameters& parameters, ODataProblem& problem) {
  return QueryReader(problem).Read(parameters);
}

std::optional<std::uint64_t> PreferredPageSize(std::string_view prefer) {
  constexpr std::string_view preference = "maxpagesize=";
  const auto at = prefer.find(preference);
  if (at == std::string_view::npos) return std::nullopt;
  std::string_view digits = prefer.substr(at + preference.size());
  digits = digits.substr(0, digits.find_first_not_of("0123456789"));
  const auto size = WholeNumber<std::uint64_t>(digits);
  if (!size || *size == 0) return std::nullopt;
  return size;
}

}  // namespace vantry_sim
