#include "documents/checkout/working_copy.h"

#include <algorithm>

#include "documents/reading/document_reads.h"
#include "documents/reading/folder_path.h"

namespace lxservices::cms_interface::vantry {
namespace {

// A failed list is no failure here, unlike in the search below: a document that nobody shows to be new
// is one that was checked in long ago.
bool HasNeverLeftWorkspace(ServerContext& server, const DocumentRecord& record) {
  const auto versions = ReadDocumentVersions(server, record.id, record.contextId);
  return versions && versions->size() == 1 && !GetFolderPathInContext(record);
}

}  // namespace

std::optional<bool> IsWorkingCopy(ServerContext& server, const DocumentRecord& record) {
  if (!record.isCheckoutByYou) return HasNeverLeftWorkspace(server, record);
  const auto documents = SearchDocuments(server, record.master.number, record.contextId);
  if (!documents) return std::nullopt;
  // This document has its version twice, so it is the copy, and the other is what it was taken from: the
  // search finds originals and no copies.
  return std::any_of(documents->begin(), documents->end(), [&](const DocumentRecord& other) {
    return other.revision == record.revision && other.iteration == record.iteration && other.id != record.id;
  });
}

}  // namespace lxservices::cms_interface::vantry
