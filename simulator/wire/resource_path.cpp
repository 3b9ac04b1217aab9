#include "simulator/wire/resource_path.h"

#include <string_view>

namespace vantry_sim {
namespace {

/// The id in `Name('id')`; nothing for another name, or none in parentheses.
std::optional<std::string> KeyOf(std::string_view segment, std::string_view name) {
  if (!segment.starts_with(name)) return std::nullopt;
  segment.remove_prefix(name.size());
  if (segment.size() < 5 || !segment.starts_with("('") || !segment.ends_with("')")) return std::nullopt;
  segment.remove_prefix(2);
  segment.remove_suffix(2);
  std::string id;
  for (std::size_t i = 0; i < segment.size(); ++i) {
    id += segment[i];
    if (segment[i] != '\'') continue;
    if (++i == segment.size() || segment[i] != '\'') return std::nullopt;
  }
  return id;
}

}  // namespace

std::optional<ResourcePath> ParseResourcePath(const std::vector<std::string>& segments) {
  constexpr std::string_view type = "ZVK.";
  ResourcePath path;
  std::size_t at = 0;
  const auto more = [&] { return at < segments.size(); };
  if (!more()) return std::nullopt;
  if (auto id = KeyOf(segments[at], "Containers")) {
    path.container = std::move(*id);
  } else if (segments[at] != "Containers") {
    return std::nullopt;
  }
  ++at;
  if (more() && segments[at].starts_with(type)) path.cast = segments[at++];
  if (path.container.empty()) return more() ? std::nullopt : std::optional(std::move(path));

  while (more()) {
    auto id = KeyOf(segments[at], "Folders");
    if (!id) break;
    path.folders.push_back(std::move(*id));
    ++at;
  }
  if (!more()) return std::nullopt;
  const std::string& target = segments[at++];
  path.target = target == "Folders" ? ResourcePath::Target::Folders : ResourcePath::Target::Contents;
  if (target == "Folders") return more() ? std::nullopt : std::optional(std::move(path));
  if (target != "FolderContents" || path.folders.empty()) return std::nullopt;
  if (more() && segments[at].starts_with(type)) path.contentType = segments[at++];
  return more() ? std::nullopt : std::optional(std::move(path));
}

}  // namespace vantry_sim
