#include "base/lasting_text.h"

#include <mutex>
#include <set>

namespace lxservices::cms_interface {
namespace {

struct KeptTexts {
  std::mutex mutex;
  std::set<std::string> texts;
};

}  // namespace

const char* LastingText(const std::string& text) {
  // Never destroyed: a host's static objects may hold such a pointer while the process ends.
  static KeptTexts& kept = *new KeptTexts;
  const std::lock_guard lock(kept.mutex);
  return kept.texts.insert(text).first->c_str();
}

}  // namespace lxservices::cms_interface
