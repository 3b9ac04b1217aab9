#include "documents/reading/file_info.h"

#include <utility>

#include "base/failure_trace.h"
#include "documents/reading/document_reads.h"

namespace lxservices::cms_interface::vantry {

std::string VersionText(const DocumentSummary& record) {
  return record.revision + "." + record.iteration;
}

FileInfo MakeFileInfo(const DocumentRecord& record, std::string id) {
  FileInfo info;
  info.id = std::move(id);
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

Result<FileInfo> GetFileInfo(ServerContext& server, const CheckoutId& id) {
  const auto [status, record] = ReadDocument(server, id.document);
  if (status != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to locate document %s on server\n", id.text.c_str());
    return status;
  }
  return MakeFileInfo(record, id.text);
}

}  // namespace lxservices::cms_interface::vantry
