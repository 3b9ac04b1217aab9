#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace lxservices::cms_interface::vantry {

/// Looks for the line of a multipart boundary in a part's content that comes in pieces: "--" and the boundary
/// at the beginning of a line or of the content. There a server would end the part. Takes a fraction of the
/// time that copying the pieces takes.
class BoundarySearch {
 public:
  explicit BoundarySearch(std::string_view boundary);

  /// Begins with the next content.
  void Restart();
  /// Takes the next piece of it.
  void Take(std::string_view piece);
  /// Whether one of the contents so far holds the line.
  [[nodiscard]] bool Found() const { return found_; }

 private:
  [[nodiscard]] bool IsIn(std::string_view text) const;

  const std::string line_;
  const std::boyer_moore_horspool_searcher<std::string::const_iterator> searcher_;
  std::string end_;  ///< of the pieces so far: as much as a line that goes on in the next one may begin in
  bool found_ = false;
};

}  // namespace lxservices::cms_interface::vantry
