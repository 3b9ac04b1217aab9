#include "browsing/document_details.h"

#include <string_view>

#include "base/failure_trace.h"
#include "browsing/latest_version.h"
#include "documents/reading/document_reads.h"

namespace lxservices::cms_interface::vantry {
namespace {

// The server writes a content's name as a pattern in which this stands for the document's own name.
std::string ExpandCadName(std::string_view pattern, std::string_view cadName) {
  constexpr std::string_view placeholder = "{$CAD_NAME}";
  std::string name;
  std::size_t position = 0;
  for (auto hit = pattern.find(placeholder); hit != std::string_view::npos;
       hit = pattern.find(placeholder, position)) {
    name.append(pattern.substr(position, hit - position)).append(cadName);
    position = hit + placeholder.size();
  }
  return name.append(pattern.substr(position));
}

SourceEntry MakeSourceEntry(const ContentRecord& section, const std::string& cadName) {
  return {ExpandCadName(section.fileName, cadName),
          section.contentUrl.empty() ? std::string() : section.contentUrl.front(),
          section.id + ":" + std::to_string(section.streamId)};
}

void FillAttributes(const DocumentRecord& record, std::map<std::string, std::string>& attributes) {
  attributes["name"] = record.master.name;
  attributes["number"] = record.master.number;
}

// The newest version and the list of versions. One list serves both, and is read only when it is needed.
void FillVersions(ServerContext& server, const AskedDocument& asked, DocumentQuery& query) {
  std::vector<DocCandidate> candidates;
  bool isLatestOpen = query.latest != nullptr;
  if (isLatestOpen) {
    candidates = FindLatestCandidates(server, asked);
    isLatestOpen = !TakeLatestFromCandidate(candidates, asked, *query.latest);
  }
  if (query.versions == nullptr && !isLatestOpen) return;
  // A failure leaves the list empty, and the document then stands for its own newest version.
  const auto versions =
      ReadDocumentVersions(server, asked.id, asked.record.contextId).value_or(std::vector<DocumentSummary>());
  if (isLatestOpen) TakeLatestFromVersions(versions, candidates, asked, *query.latest);
  if (query.versions == nullptr) return;
  for (const DocumentSummary& version : versions) {
    query.versions->push_back({FormatWorkspaceId(asked.workspace, version.id), VersionText(version)});
  }
}

}  // namespace

Status GetDocumentDetails(ServerContext& server, const CheckoutId& id, DocumentQuery& query) {
  // Before the document is read, whether or not the newest version is asked for.
  server.SettleServices();
  AskedDocument asked{id.document, WorkspaceOf(id), {}};
  const DocumentRecord& record = asked.record;
  const Status status = HandOver(ReadDocument(server, asked.id), asked.record);
  if (status != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to locate document %s on server\n", id.text.c_str());
    return status;
  }
  if (query.current != nullptr) *query.current = MakeFileInfo(record, id.text);
  FillVersions(server, asked, query);
  if (query.attributes != nullptr) FillAttributes(record, *query.attributes);
  if (query.contents != nullptr) {
    for (const ContentRecord& section : record.contentSections) {
      query.contents->push_back(MakeSourceEntry(section, record.master.cadName));
    }
  }
  return Ok;
}

}  // namespace lxservices::cms_interface::vantry
