#include "simulator/wire/answer_memory.h"

#include <utility>

namespace vantry_sim {

std::shared_ptr<const std::string> AnswerMemory::Hold(std::string& body, std::string_view client) {
  std::erase_if(held_, [](const Held& held) { return held.body.expired(); });
  std::uint64_t taken = 0;
  std::uint64_t ofClient = 0;
  for (const Held& held : held_) {
    taken += held.size;
    if (held.client == client) ofClient += held.size;
  }
  const std::uint64_t size = body.size();
  const bool fits = taken + size <= most_ && ofClient + size <= most_ / 4 * 3;
  if (!fits && taken > 0) return nullptr;
  // Not make_shared: the weak pointer would keep the memory of the object.
  std::shared_ptr<const std::string> kept(new std::string(std::exchange(body, {})));
  held_.push_back({kept, std::string(client), size});
  return kept;
}

}  // namespace vantry_sim
