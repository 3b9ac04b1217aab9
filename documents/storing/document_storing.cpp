#include "documents/storing/document_storing.h"

#include <optional>
#include <utility>

#include "base/failure_trace.h"
#include "documents/reading/document_reader.h"
#include "documents/reading/document_reads.h"
#include "documents/storing/conflict_resolution.h"
#include "documents/storing/document_posting.h"

namespace lxservices::cms_interface::vantry {
namespace {

// The three local paths, as the traces name them.
std::string LocalPaths(const DocumentUploadParams& params) {
  return params.mainPath + ", " + params.viewablePath + ", " + params.vcsPath;
}

std::optional<KnownDocument> ReadForIteration(ServerContext& server, const std::string& id) {
  auto json = ReadDocumentJson(server, id);
  if (!json) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to locate document %s on server\n", id.c_str());
    return std::nullopt;
  }
  KnownDocument known{{}, std::move(*json)};
  ReadDocumentRecord(known.json, known.record);
  return known;
}

}  // namespace

Result<FileInfo> CreateDocument(ServerContext& server, const NewDocument& document,
                                const DocumentUploadParams& params, du::http::ProgressFunction progress) {
  DocumentRecord record;
  const Poster poster = [&](JsonAllocator& allocator, rapidjson::Value& instruction) {
    return PostDocumentInstructions(server, InstructionKind::Create, {allocator, instruction},
                                    document.contextId, {&record, 1});
  };
  const Status status = BuildDocumentForCreate(server, document, params, poster, std::move(progress));
  if (status == Ok) return MakeFileInfo(record, record.id);
  TracerFor(Follows())(dp::TraceType::Error, "Failed to create document (%s) on server ctx %s, folder %s\n",
                       LocalPaths(params).c_str(), document.contextId.c_str(), document.folderId.c_str());
  return status;
}

Result<FileInfo> CreateDocumentInWorkspace(ServerContext& server, const NewDocument& document,
                                           const DocumentUploadParams& params,
                                           du::http::ProgressFunction progress) {
  DocumentRecord record;
  const Poster poster = [&](JsonAllocator& allocator, rapidjson::Value& instruction) {
    return PostStore(server, {allocator, instruction}, document.workspaceId, {&record, 1});
  };
  const Status status = BuildDocumentForCreate(server, document, params, poster, std::move(progress));
  if (status == Ok) return MakeFileInfo(record, FormatWorkspaceId(document.workspaceId, record.id));
  TracerFor(Follows())(dp::TraceType::Error,
                       "Failed to create document (%s) on server ctx %s, folder %s, workspace %s\n",
                       LocalPaths(params).c_str(), document.contextId.c_str(), document.folderId.c_str(),
                       document.workspaceId.c_str());
  return status;
}

Result<FileInfo> IterateDocument(ServerContext& server, const std::string& id,
                                 const DocumentUploadParams& params, du::http::ProgressFunction progress) {
  const auto known = ReadForIteration(server, id);
  if (!known) return Refused;
  DocumentRecord answer;
  const Poster poster = [&](JsonAllocator& allocator, rapidjson::Value& instruction) {
    rapidjson::Value resolution = MakeResolution(allocator, iterationResolution, id);
    return PostDocumentInstructions(server, InstructionKind::Iterate, {allocator, instruction, &resolution},
                                    known->record.contextId, {&answer, 1});
  };
  const Status status = BuildDocumentForIterate(server, *known, params, poster, std::move(progress));
  if (status == Ok) return MakeFileInfo(answer, answer.id);
  TracerFor(Follows())(dp::TraceType::Error, "Failed to iterate document id %s (%s)\n", id.c_str(),
                       LocalPaths(params).c_str());
  return status;
}

Status StoreDocument(ServerContext& server, const CheckoutId& checkoutId, const DocumentUploadParams& params,
                     du::http::ProgressFunction progress) {
  if (!IsValidTraced(checkoutId)) return NotFound;
  const std::string& id = WorkingDocumentId(checkoutId);
  const auto known = ReadForIteration(server, id);
  if (!known) return Refused;
  // The answer is dropped: the CheckoutId stays the same, and check-in picks the newer iteration up through
  // it.
  DocumentRecord answer;
  const Poster poster = [&](JsonAllocator& allocator, rapidjson::Value& instruction) {
    rapidjson::Value resolution = MakeResolution(allocator, iterationResolution, known->record.id);
    return PostStore(server, {allocator, instruction, &resolution}, checkoutId.workspace, {&answer, 1});
  };
  const Status status = BuildDocumentForIterate(server, *known, params, poster, std::move(progress));
  if (status != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to store document id %s (%s)\n", id.c_str(),
                         LocalPaths(params).c_str());
  }
  return status;
}

}  // namespace lxservices::cms_interface::vantry
