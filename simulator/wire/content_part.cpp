#include "simulator/wire/content_part.h"

#include <string>

#include "simulator/wire/byte_range.h"

namespace vantry_sim {

void ApplyRange(const Request& request, Response& response) {
  if (!response.file || response.status != 200 || request.range.empty()) return;
  const std::uint64_t size = response.file->size;
  const RangeWish wish = ReadRange(request.range, size);
  if (wish.kind == RangeWish::Kind::Unsatisfiable) {
    response = ErrorResponse(416, "no-such-range", "the content has no such bytes");
    response.headers.emplace_back("Content-Range", "bytes */" + std::to_string(size));
  } else if (wish.kind == RangeWish::Kind::Part) {
    response.status = 206;
    response.file->first = wish.part.first;
    response.file->size = wish.part.size;
    response.headers.emplace_back("Content-Range", "bytes " + std::to_string(wish.part.first) + "-" +
                                                       std::to_string(wish.part.first + wish.part.size - 1) +
                                                       "/" + std::to_string(size));
  }
}

}  // namespace vantry_sim
