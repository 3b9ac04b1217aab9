#include "documents/reading/file_info.h"

#include "base/checkout_id.h"
#include "base/failure_trace.h"
#include "base/text.h"
#include "documents/reading/document_reads.h"

namespace lxservices::cms_interface::vantry {

std::string VersionText(const DocumentSummary& record) {
  return record.revision + "." + record.iteration;
}

FileInfo MakeFileInfo(const DocumentRecord& record) {
  FileInfo info;
  info.version = VersionText(record);
  info.cadName = record.master.cadName;
  for (const ContentRecord& section : record.contentSections) info.size += section.fileSize;
  if (!record.contentSections.empty() && record.contentSections.front().fileSizeTold) {
    info.downloadSize = record.contentSections.front().fileSize;
  }
  for (const auto& dependency : record.dependencies) {
    info.dependencies[dependency.asStoredChildName] = dependency.sourceId;
  }
  return info;
}

Status GetFileInfo(ServerContext& server, const char* id, FileInfo& info) {
  DocumentRecord record;
  const Status status = ReadDocument(server, ParseCheckoutId(id).field0, record);
  if (status != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to locate document %s on server\n", TextOrEmpty(id));
    return status;
  }
  info = MakeFileInfo(record);
  info.id = TextOrEmpty(id);
  return Ok;
}

}  // namespace lxservices::cms_interface::vantry
