#include "connection/bounded_xml.h"

#include <cstdlib>
#include <cstring>

namespace lxservices::cms_interface::vantry {
namespace {

// expat's functions for memory get no argument of ours, and a thread parses one document at a time.
thread_local std::size_t taken = 0;

// In front of each piece, its size; as large as the strictest alignment.
constexpr std::size_t headSize = alignof(std::max_align_t);
static_assert(headSize >= sizeof(std::size_t));

bool IsTooMuch(std::size_t size) {
  return size > mostXmlMemory || taken > mostXmlMemory - size;
}

std::size_t SizeOf(const void* head) {
  std::size_t size = 0;
  std::memcpy(&size, head, sizeof size);
  return size;
}

void* Headed(void* head, std::size_t size) {
  std::memcpy(head, &size, sizeof size);
  taken += size;
  return static_cast<char*>(head) + headSize;
}

void* Take(std::size_t size) {
  if (IsTooMuch(size)) return nullptr;
  void* const head = std::malloc(headSize + size);
  return head == nullptr ? nullptr : Headed(head, size);
}

void GiveBack(void* piece) {
  if (piece == nullptr) return;
  void* const head = static_cast<char*>(piece) - headSize;
  taken -= SizeOf(head);
  std::free(head);
}

void* Resize(void* piece, std::size_t size) {
  if (piece == nullptr) return Take(size);
  void* const head = static_cast<char*>(piece) - headSize;
  const std::size_t before = SizeOf(head);
  // While it moves, both are there.
  if (size > before && IsTooMuch(size)) return nullptr;
  void* const moved = std::realloc(head, headSize + size);
  if (moved == nullptr) return nullptr;
  taken -= before;
  return Headed(moved, size);
}

constexpr XML_Memory_Handling_Suite bounded{Take, Resize, GiveBack};

}  // namespace

XML_Parser MakeBoundedXmlParser() {
  return XML_ParserCreate_MM(nullptr, &bounded, nullptr);
}

}  // namespace lxservices::cms_interface::vantry
