#include "hosts/mount/tree/document_times.h"

#include <utility>

namespace vtdirect_mount {

void DocumentTimes::NoteStored(const std::string& path, const Facts& stored) {
  const std::lock_guard lock(mutex_);
  known_[path] = {"", stored};
}

std::optional<Facts> DocumentTimes::JustStored(const std::string& path) {
  const std::lock_guard lock(mutex_);
  const auto place = known_.find(path);
  if (place == known_.end() || !place->second.key.empty()) return std::nullopt;
  return place->second.facts;
}

Iteration DocumentTimes::WithTime(const std::string& path, Iteration found) {
  const std::lock_guard lock(mutex_);
  const auto place = known_.find(path);
  if (place != known_.end()) {
    Known& known = place->second;
    const bool isThat = known.key.empty() || known.key == found.key;
    if (isThat && known.facts.size == found.facts.size) {
      known.key = found.key;
      found.facts.since = known.facts.since;
      return found;
    }
    known_.erase(place);
  }
  if (CanChange(found.uid)) known_[path] = {found.key, found.facts};
  return found;
}

void DocumentTimes::Forget() {
  const std::lock_guard lock(mutex_);
  known_.clear();
}

}  // namespace vtdirect_mount
