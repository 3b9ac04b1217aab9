#include "simulator/wire/request_body.h"

namespace vantry_sim {

BodyOutcome ReadBody(const httplib::ContentReader& reader, std::uint64_t limit, const int& status,
                     const std::function<bool(std::string_view)>& take) {
  std::uint64_t size = 0;
  BodyOutcome outcome;
  outcome.complete = reader([&](const char* data, std::size_t count) {
    size += count;
    if (size > limit) return false;
    outcome.noRoom = !take({data, count});
    return !outcome.noRoom;
  });
  outcome.tooLarge = size > limit || status == 413;
  // The HTTP library reads away a body whose announced length is too much; any other one stops halfway.
  outcome.atItsEnd = outcome.complete || (status == 413 && size == 0);
  return outcome;
}

}  // namespace vantry_sim
