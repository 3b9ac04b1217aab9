#include "documents/checkout/working_copy.h"

#include <algorithm>
#include <string>
#include <vector>

#include "documents/reading/document_reads.h"
#include "documents/reading/folder_path.h"

namespace lxservices::cms_interface::vantry {
namespace {

// A failed list is no failure here, unlike in the search below: a document that nobody shows to be new
// is one that was checked in long ago.
bool HasNeverLeftWorkspace(ServerContext& server, const DocumentRecord& record) {
  std::vector<DocumentSummary> versions;
  if (!ReadDocumentVersions(server, record.id, record.contextId, versions)) return false;
  std::string path;
  return versions.size() == 1 && !GetFolderPathInContext(record, path);
}

}  // namespace

bool IsWorkingCopy(ServerContext& server, const DocumentRecord& record, bool& answer) {
  answer = false;
  if (!record.isCheckoutByYou) {
    answer = HasNeverLeftWorkspace(server, record);
    return true;
  }
  std::vector<DocumentRecord> documents;
  if (!SearchDocuments(server, record.master.number, documents, record.contextId.c_str())) return false;
  // This document has its version twice, so it is the copy, and the other is what it was taken from: the
  // search finds originals and no copies.
  answer = std::any_of(documents.begin(), documents.end(), [&](const DocumentRecord& other) {
    return other.revision == record.revision && other.iteration == record.iteration && other.id != record.id;
  });
  return true;
}

}  // namespace lxservices::cms_interface::vantry
