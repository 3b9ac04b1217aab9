#include "connection/memory_watch.h"

#include <cstdlib>

namespace lxservices::cms_interface::vantry {
namespace {

constexpr std::size_t betweenLooks = std::size_t{4} << 20;
/// Far more than is taken between two looks, in large pieces and in small ones.
constexpr std::size_t reserve = 4 * betweenLooks;

bool CanBeHad(std::size_t bytes) {
  void* const memory = std::malloc(bytes);
  if (memory == nullptr) return false;
  // Without a use of it, a compiler may leave out both calls.
  *static_cast<volatile char*>(memory) = 0;
  std::free(memory);
  return true;
}

}  // namespace

bool MemoryWatch::Look() {
  nextLook_ = taken_ + betweenLooks;
  // A stack or a list that grows takes its new size beside the old one, and some of that before it is needed.
  return CanBeHad(taken_ + taken_ / 4 + reserve);
}

}  // namespace lxservices::cms_interface::vantry
