#include "documents/reading/folder_path.h"

#include <string_view>

namespace lxservices::cms_interface::vantry {
namespace {

// An object id names its class between its first and its last colon.
std::string_view ClassInId(std::string_view id) {
  const auto first = id.find(':');
  const auto last = id.rfind(':');
  return first < last ? id.substr(first + 1, last - first - 1) : std::string_view();
}

}  // namespace

std::optional<std::string> GetFolderPathInContext(const DocumentRecord& record) {
  const std::string_view location = record.folderPath;
  if (location.size() <= 1 || location.front() != '/') return std::nullopt;
  // The beginning is all that is compared: "/Gadget2/x" counts as in "Gadget" too. The location is
  // the document's own, so the test only has to tell a location with the context from one without; a stricter
  // one would turn documents into working copies that were none before.
  if (!location.substr(1).starts_with(record.contextName)) return std::nullopt;
  const auto second = location.find('/', 1);
  const std::string_view inContext =
      second != std::string_view::npos ? location.substr(second) : std::string_view();
  if (inContext.size() <= 1 && ClassInId(record.folderId) != "vn.folder.Cabinet") return std::nullopt;
  return std::string(inContext);
}

}  // namespace lxservices::cms_interface::vantry
