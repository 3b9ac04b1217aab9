#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/wire/messages.h"

namespace vantry_sim {

using Handler = std::function<Response(const Request&)>;

/// Finds the handler of a request.
///
/// A pattern is a path without "/" in front, e.g. `servlet/rest/v1/dkm/documents/{id}/versions`. A segment
/// may hold one parameter with literal text on either side, as in
/// `IsAssemblyInstalled(assemblyName='{name}')`; it takes at least one character. Segments are separated before
/// they are decoded, so that an escaped "/" stays inside a parameter. A last segment of `{...}` is an open
/// end: it takes one or more segments, which the handler finds in the request's `tail`. Of two patterns that
/// fit, the one with the literal segment further in front wins.
class Router {
 public:
  /// @param about what the route answers, in a few words of Markdown, for the table of routes
  void Add(std::string_view method, std::string_view pattern, Handler handler, std::string_view about = {});

  /// A route as it was added.
  struct Listed {
    std::string method;
    std::string pattern;
    std::string about;
  };
  /// All routes, in the order in which they were added.
  [[nodiscard]] std::vector<Listed> List() const;

  /// Runs the handler of the request. @param path after the prefix, undecoded, with "/" in front.
  /// @return 400 for a broken escape, 404 where no pattern fits, 405 with Allow where one fits for other
  /// methods.
  Response Dispatch(Request& request, std::string_view path) const;

 private:
  struct Segment {
    std::string before;
    std::string parameter;  ///< empty: the whole segment is `before`
    std::string after;
  };
  struct Route {
    Listed listed;
    std::string method;
    std::vector<Segment> segments;
    bool openEnd = false;
    Handler handler;
  };
  struct Found {
    const Route* route = nullptr;
    std::string allowed;  ///< the methods of the routes that fit, for a 405
  };

  static std::vector<Segment> ParsePattern(std::string_view pattern);
  static bool Fits(const Segment& segment, std::string_view text);
  static bool Fits(const Route& route, const std::vector<std::string>& segments);
  static bool IsMoreLiteral(const Route& left, const Route& right);
  [[nodiscard]] Found Find(std::string_view method, const std::vector<std::string>& segments) const;

  std::vector<Route> routes_;
};

}  // namespace vantry_sim
