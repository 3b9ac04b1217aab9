#include "documents/storing/boundary_search.h"

#include <algorithm>

namespace lxservices::cms_interface::vantry {

BoundarySearch::BoundarySearch(std::string_view boundary)
    : line_("--" + std::string(boundary)), searcher_(line_.begin(), line_.end()) {
  Restart();
}

// The line end before a content belongs to the part's header, and a server may still take it for the one
// before a boundary.
void BoundarySearch::Restart() {
  end_ = "\n";
}

void BoundarySearch::Take(std::string_view piece) {
  // The byte before the line counts, too.
  const std::size_t overlap = line_.size();
  found_ = found_ || IsIn(end_ + std::string(piece.substr(0, overlap))) || IsIn(piece);
  if (piece.size() < overlap) {
    end_ += piece;
    end_.erase(0, end_.size() - std::min(end_.size(), overlap));
  } else {
    end_ = piece.substr(piece.size() - overlap);
  }
}

bool BoundarySearch::IsIn(std::string_view text) const {
  auto from = text.begin();
  while (true) {
    const auto [begin, end] = searcher_(from, text.end());
    if (begin == text.end()) return false;
    // Some servers take the end of a line of either kind.
    if (begin != text.begin() && (*(begin - 1) == '\n' || *(begin - 1) == '\r')) return true;
    from = begin + 1;
  }
}

}  // namespace lxservices::cms_interface::vantry
