#include "simulator/wire/router.h"

#include <algorithm>
#include <optional>

namespace vantry_sim {
namespace {

constexpr std::string_view openEndText = "/{...}";

std::vector<std::string_view> SplitPath(std::string_view path) {
  std::vector<std::string_view> parts;
  if (path.starts_with('/')) path.remove_prefix(1);
  for (;;) {
    const auto slash = path.find('/');
    parts.push_back(path.substr(0, slash));
    if (slash == std::string_view::npos) return parts;
    path.remove_prefix(slash + 1);
  }
}

/// Nothing when an escape is broken.
std::optional<std::vector<std::string>> DecodedSegments(std::string_view path) {
  std::vector<std::string> segments;
  for (const std::string_view part : SplitPath(path)) {
    auto text = PercentDecode(part);
    if (!text) return std::nullopt;
    segments.push_back(std::move(*text));
  }
  return segments;
}

}  // namespace

void Router::Add(std::string_view method, std::string_view pattern, Handler handler, std::string_view about) {
  Listed listed{std::string(method), std::string(pattern), std::string(about)};
  const bool openEnd = pattern.ends_with(openEndText);
  if (openEnd) pattern.remove_suffix(openEndText.size());
  routes_.push_back(
      {std::move(listed), std::string(method), ParsePattern(pattern), openEnd, std::move(handler)});
}

std::vector<Router::Listed> Router::List() const {
  std::vector<Listed> list;
  for (const Route& route : routes_) list.push_back(route.listed);
  return list;
}

Response Router::Dispatch(Request& request, std::string_view path) const {
  const auto segments = DecodedSegments(path);
  if (!segments)
    return ErrorResponse(400, "bad-escape", "a % in the path has no two hexadecimal digits after it");

  const Found found = Find(request.method, *segments);
  if (found.route == nullptr && found.allowed.empty()) {
    return ErrorResponse(404, "no-such-route", "this server has nothing at this path");
  }
  if (found.route == nullptr) {
    auto response = ErrorResponse(405, "method-not-allowed", "this path takes " + found.allowed);
    response.headers.emplace_back("Allow", found.allowed);
    return response;
  }
  const std::size_t known = found.route->segments.size();
  request.tail.assign(segments->begin() + static_cast<std::ptrdiff_t>(known), segments->end());
  for (std::size_t i = 0; i < known; ++i) {
    const Segment& segment = found.route->segments[i];
    if (segment.parameter.empty()) continue;
    const std::string& text = (*segments)[i];
    const std::size_t fixed = segment.before.size() + segment.after.size();
    request.pathParameters[segment.parameter] = text.substr(segment.before.size(), text.size() - fixed);
  }
  return found.route->handler(request);
}

std::vector<Router::Segment> Router::ParsePattern(std::string_view pattern) {
  std::vector<Segment> segments;
  for (const std::string_view part : SplitPath(pattern)) {
    const auto open = part.find('{');
    const auto close = part.find('}');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
      segments.push_back({std::string(part), {}, {}});
      continue;
    }
    segments.push_back({std::string(part.substr(0, open)),
                        std::string(part.substr(open + 1, close - open - 1)),
                        std::string(part.substr(close + 1))});
  }
  return segments;
}

bool Router::Fits(const Segment& segment, std::string_view text) {
  if (segment.parameter.empty()) return segment.before == text;
  return text.size() > segment.before.size() + segment.after.size() && text.starts_with(segment.before) &&
         text.ends_with(segment.after);
}

bool Router::Fits(const Route& route, const std::vector<std::string>& segments) {
  const std::size_t known = route.segments.size();
  if (route.openEnd ? segments.size() <= known : segments.size() != known) return false;
  for (std::size_t i = 0; i < known; ++i) {
    if (!Fits(route.segments[i], segments[i])) return false;
  }
  return true;
}

bool Router::IsMoreLiteral(const Route& left, const Route& right) {
  const std::size_t shared = std::min(left.segments.size(), right.segments.size());
  for (std::size_t i = 0; i < shared; ++i) {
    const bool leftLiteral = left.segments[i].parameter.empty();
    if (leftLiteral != right.segments[i].parameter.empty()) return leftLiteral;
  }
  return left.segments.size() > shared;
}

Router::Found Router::Find(std::string_view method, const std::vector<std::string>& segments) const {
  Found found;
  for (const Route& route : routes_) {
    if (!Fits(route, segments)) continue;
    if (found.allowed.find(route.method) == std::string::npos) {
      if (!found.allowed.empty()) found.allowed += ", ";
      found.allowed += route.method;
    }
    if (route.method != method) continue;
    if (found.route == nullptr || IsMoreLiteral(route, *found.route)) found.route = &route;
  }
  return found;
}

}  // namespace vantry_sim
