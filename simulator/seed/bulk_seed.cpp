#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "simulator/seed/seeds.h"

namespace vantry_sim {
namespace {

constexpr std::int64_t firstDocument = 1'000'001;
/// Ids of older versions lie so far above those of the latest ones.
constexpr std::int64_t olderVersion = 1'000'000'000'000;
/// Contents of different sizes are so many at most; documents take them in turn.
constexpr std::uint64_t mostStreams = 16;

std::string Numbered(const char* format, unsigned number) {
  std::array<char, 48> text{};
  const int length = std::snprintf(text.data(), text.size(), format, number);
  return {text.data(), static_cast<std::size_t>(length)};
}

/// The i-th of `count` numbers that are spread evenly over a range, in turn.
std::uint64_t Spread(const BulkRange& range, std::uint64_t i, std::uint64_t count) {
  return count < 2 ? range.least : range.least + (range.most - range.least) * (i % count) / (count - 1);
}

std::vector<std::int64_t> AddStreams(SeedWriter& writer, const BulkShape& shape) {
  if (!shape.size) return {writer.AddStream(1, "One small part, like all the others.\n")};
  const std::uint64_t count = std::min(mostStreams, shape.size->most - shape.size->least + 1);
  std::vector<std::int64_t> streams;
  for (std::uint64_t i = 0; i < count; ++i)
    streams.push_back(
        writer.AddGeneratedStream(static_cast<std::int64_t>(i + 1), Spread(*shape.size, i, count)));
  return streams;
}

/// The folders that documents go to, below as many others as the shape is deep.
std::vector<std::int64_t> AddFolders(SeedWriter& writer, const BulkShape& shape, std::int64_t product) {
  std::int64_t place = writer.AddFolder(201, product, 0, "Default");
  int number = 211;
  for (std::uint32_t level = 1; level < shape.depth; ++level)
    place = writer.AddFolder(number++, product, place, Numbered("Level %u", level));
  if (shape.folders == 1) return {writer.AddFolder(number, product, place, "Parts")};
  std::vector<std::int64_t> folders;
  for (std::uint32_t i = 1; i <= shape.folders; ++i)
    folders.push_back(writer.AddFolder(number++, product, place, Numbered("Parts %05u", i)));
  return folders;
}

/// A file name of the length that the shape has for this document, if it has one.
std::string CadName(const BulkShape& shape, std::uint32_t i) {
  std::string stem = Numbered("part %07u", i);
  constexpr std::string_view fileEnding = ".lxz";
  if (shape.name) {
    const std::uint64_t length = Spread(*shape.name, i, shape.name->most - shape.name->least + 1);
    if (length > stem.size() + fileEnding.size()) stem.append(length - stem.size() - fileEnding.size(), 'x');
  }
  return stem.append(fileEnding);
}

}  // namespace

void SeedBulk(SeedWriter& writer, const BulkShape& shape) {
  const auto product = writer.AddContext(101, "Product", "Bulk", "Kettenblitz");
  const auto folders = AddFolders(writer, shape, product);
  const auto streams = AddStreams(writer, shape);
  for (std::uint32_t i = 1; i <= shape.documents; ++i) {
    const std::string name = Numbered("Part %07u", i);
    const std::string number = Numbered("BULK-%07u", i);
    const std::string cadName = CadName(shape, i);
    const std::int64_t id = firstDocument - 1 + i;
    const auto master = writer.AddMaster(id, {.name = name, .number = number, .cadName = cadName});
    for (std::uint32_t version = 1; version <= shape.versions; ++version) {
      const auto iteration =
          writer.AddIteration(master, {.number = id + (shape.versions - version) * olderVersion,
                                       .context = product,
                                       .folder = folders[(i - 1) % folders.size()],
                                       .iteration = static_cast<int>(version),
                                       .isLatest = version == shape.versions});
      writer.AddContent({.iteration = iteration, .stream = streams[(i - 1) % streams.size()]});
    }
  }
}

}  // namespace vantry_sim
