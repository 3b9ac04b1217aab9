#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vtdirect_test {

/// What a server answers to one request.
struct RoutedAnswer {
  int status = 200;
  std::string body;
};

/// Takes the place of the platform's HTTP part: answers each request by what it asks for, and counts.
class RoutingTransport {
 public:
  /// Gets "GET /path?query".
  using Router = std::function<RoutedAnswer(const std::string& line)>;

  explicit RoutingTransport(Router router);
  ~RoutingTransport();
  RoutingTransport(const RoutingTransport&) = delete;
  RoutingTransport& operator=(const RoutingTransport&) = delete;

  /// The requests since the last Clear.
  [[nodiscard]] const std::vector<std::string>& lines() const { return lines_; }
  void Clear() { lines_.clear(); }

  // For the entry point.
  [[nodiscard]] RoutedAnswer Exchange(const std::string& line);

 private:
  Router router_;
  std::vector<std::string> lines_;
};

}  // namespace vtdirect_test
