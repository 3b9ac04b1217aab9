#include "hosts/cli/translation/bounded_xml.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace vtdirect_cli {
namespace {

// The parser's functions for memory are plain functions without an argument of ours.
thread_local std::size_t taken = 0;

// In front of each piece, its size; as large as the strictest alignment.
constexpr std::size_t headSize = alignof(std::max_align_t);
static_assert(headSize >= sizeof(std::size_t));

[[nodiscard]] std::size_t SizeOf(void* head) {
  std::size_t size = 0;
  std::memcpy(&size, head, sizeof size);
  return size;
}

[[nodiscard]] void* Headed(void* head, std::size_t size) {
  std::memcpy(head, &size, sizeof size);
  taken += size;
  return static_cast<char*>(head) + headSize;
}

[[nodiscard]] bool IsTooMuch(std::size_t size) {
  return size > mostXmlMemory || taken > mostXmlMemory - size;
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

constexpr XML_Memory_Handling_Suite boundedMemory{Take, Resize, GiveBack};

}  // namespace

XmlParser MakeBoundedXmlParser() {
  return {XML_ParserCreate_MM(nullptr, &boundedMemory, &namespaceEnd), &XML_ParserFree};
}

}  // namespace vtdirect_cli
