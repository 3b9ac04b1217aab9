#pragma once

#include <string>
#include <vector>

#include "tests/wire/requests/routing_transport.h"

namespace vtdirect_test {

enum class Generation { Gateway, Schema1, Schema4, Schema5 };

/// The repository that docs/requests.md tells of, on a server of one generation.
class SampleServer {
 public:
  explicit SampleServer(Generation generation) : generation_(generation) {}

  [[nodiscard]] RoutedAnswer Answer(const std::string& line);
  /// Requests that this server has no answer for: either the library asks for something new, or a path is
  /// spelled in a new way.
  [[nodiscard]] const std::vector<std::string>& unknown() const { return unknown_; }

 private:
  [[nodiscard]] RoutedAnswer AnswerOData(const std::string& line);
  [[nodiscard]] RoutedAnswer Metadata(const std::string& line) const;
  [[nodiscard]] RoutedAnswer Unknown(const std::string& line);

  Generation generation_;
  std::vector<std::string> unknown_;
};

}  // namespace vtdirect_test
