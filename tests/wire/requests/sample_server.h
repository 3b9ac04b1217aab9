#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "tests/support/scripted_transport.h"

namespace vtdirect_test {

enum class Generation { Gateway, Schema1, Schema4, Schema5 };

/// The repository that docs/requests.md tells of, on a server of one generation. Answers any number of
/// threads.
class SampleServer {
 public:
  explicit SampleServer(Generation generation) : generation_(generation) {}

  [[nodiscard]] Answer AnswerTo(const std::string& line);
  /// Requests that this server has no answer for: either the library asks for something new, or a path is
  /// spelled in a new way.
  [[nodiscard]] const std::vector<std::string>& unknown() const { return unknown_; }

 private:
  [[nodiscard]] Answer AnswerOData(const std::string& line);
  [[nodiscard]] Answer Metadata(const std::string& line) const;
  [[nodiscard]] Answer Unknown(const std::string& line);

  Generation generation_;
  std::mutex mutex_;
  std::vector<std::string> unknown_;
};

}  // namespace vtdirect_test
