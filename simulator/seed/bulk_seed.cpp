#include <array>
#include <cstdio>
#include <string>

#include "simulator/seed/seeds.h"

namespace vantry_sim {
namespace {

constexpr std::int64_t kFirstDocument = 1'000'001;
constexpr std::int64_t kSharedStream = 1;

std::string Numbered(const char* format, unsigned number) {
  std::array<char, 48> text{};
  const int length = std::snprintf(text.data(), text.size(), format, number);
  return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace

void SeedBulk(SeedWriter& writer, std::uint32_t documents) {
  const auto product = writer.AddContext(101, "Product", "Bulk", "Kettenblitz");
  const auto root = writer.AddFolder(201, product, 0, "Default");
  const auto folder = writer.AddFolder(211, product, root, "Parts");
  const auto stream = writer.AddStream(kSharedStream, "One small part, like all the others.\n");

  for (std::uint32_t i = 1; i <= documents; ++i) {
    const std::string name = Numbered("Part %07u", i);
    const std::string number = Numbered("BULK-%07u", i);
    const std::string cad_name = Numbered("part %07u.lxz", i);
    const std::int64_t id = kFirstDocument - 1 + i;
    const auto master = writer.AddMaster(id, {.name = name, .number = number, .cad_name = cad_name});
    const auto iteration =
        writer.AddIteration(master, {.number = id, .context = product, .folder = folder, .is_latest = true});
    writer.AddContent({.iteration = iteration, .stream = stream});
  }
}

}  // namespace vantry_sim
