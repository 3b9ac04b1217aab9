#include "documents/storing/document_storing.h"

#include <utility>

#include "base/checkout_id.h"
#include "base/failure_trace.h"
#include "base/text.h"
#include "documents/reading/document_reader.h"
#include "documents/reading/document_reads.h"
#include "documents/storing/conflict_resolution.h"
#include "documents/storing/document_building.h"
#include "documents/storing/document_posting.h"

namespace lxservices::cms_interface::vantry {
namespace {

// The three local paths, as the traces name them.
struct LocalPaths {
  explicit LocalPaths(const DocumentUploadParams& params)
      : main(TextOrEmpty(params.mainPath)),
        viewable(TextOrEmpty(params.viewablePath)),
        vcs(TextOrEmpty(params.vcsPath)) {}
  const char* main;
  const char* viewable;
  const char* vcs;
};

FileInfo MakeFileInfoWithId(const DocumentRecord& record, std::string id) {
  FileInfo info = MakeFileInfo(record);
  info.id = std::move(id);
  return info;
}

// The document twice: as the server gave it, for what this model does not know, and as a record.
bool ReadForIteration(ServerContext& server, const std::string& id, rapidjson::Document& json,
                      DocumentRecord& record) {
  if (!ReadDocumentJson(server, id, json)) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to locate document %s on server\n", id.c_str());
    return false;
  }
  ReadDocumentRecord(json, record);
  return true;
}

}  // namespace

Status CreateDocument(ServerContext& server, const std::string& name, const std::string& contextId,
                      const std::string& folderId, const DocumentUploadParams& params, FileInfo& info,
                      du::http::ProgressFunction progress) {
  DocumentRecord record;
  const Poster poster = [&](JsonAllocator& allocator, rapidjson::Value& instruction) {
    return PostDocumentInstructions(server, true, allocator, instruction, contextId, {&record, 1}, nullptr);
  };
  const Status status = BuildDocumentForCreate(server, name, folderId, params, poster, std::move(progress));
  if (status != Ok) {
    const LocalPaths paths(params);
    TracerFor(Follows())(dp::TraceType::Error,
                         "Failed to create document (%s, %s, %s) on server ctx %s, folder %s\n", paths.main,
                         paths.viewable, paths.vcs, contextId.c_str(), folderId.c_str());
    return status;
  }
  info = MakeFileInfoWithId(record, record.id);
  return Ok;
}

Status CreateDocumentInWorkspace(ServerContext& server, const std::string& name, const std::string& contextId,
                                 const std::string& folderId, const std::string& workspaceId,
                                 const DocumentUploadParams& params, FileInfo& info,
                                 du::http::ProgressFunction progress) {
  DocumentRecord record;
  const Poster poster = [&](JsonAllocator& allocator, rapidjson::Value& instruction) {
    return PostStore(server, allocator, instruction, workspaceId, {&record, 1}, nullptr);
  };
  const Status status = BuildDocumentForCreate(server, name, folderId, params, poster, std::move(progress));
  if (status != Ok) {
    const LocalPaths paths(params);
    TracerFor(Follows())(dp::TraceType::Error,
                         "Failed to create document (%s, %s, %s) on server ctx %s, folder %s, workspace %s\n",
                         paths.main, paths.viewable, paths.vcs, contextId.c_str(), folderId.c_str(),
                         workspaceId.c_str());
    return status;
  }
  info = MakeFileInfoWithId(record, FormatWorkspaceId(workspaceId, record.id));
  return Ok;
}

Status IterateDocument(ServerContext& server, const char* id, const DocumentUploadParams& params,
                       FileInfo& info, du::http::ProgressFunction progress) {
  rapidjson::Document json;
  DocumentRecord record;
  if (!ReadForIteration(server, id, json, record)) return Refused;
  DocumentRecord answer;
  const Poster poster = [&](JsonAllocator& allocator, rapidjson::Value& instruction) {
    rapidjson::Value resolution = MakeResolution(allocator, iterationResolution, id);
    return PostDocumentInstructions(server, false, allocator, instruction, record.contextId, {&answer, 1},
                                    &resolution);
  };
  const Status status = BuildDocumentForIterate(server, record, json, params, poster, std::move(progress));
  if (status != Ok) {
    const LocalPaths paths(params);
    TracerFor(Follows())(dp::TraceType::Error, "Failed to iterate document id %s (%s, %s, %s)\n", id,
                         paths.main, paths.viewable, paths.vcs);
    return status;
  }
  info = MakeFileInfoWithId(answer, answer.id);
  return Ok;
}

Status StoreDocument(ServerContext& server, const char* text, const DocumentUploadParams& params,
                     du::http::ProgressFunction progress) {
  CheckoutId checkoutId;
  if (!ParseValidCheckoutId(text, checkoutId)) return NotFound;
  const std::string& id = WorkingDocumentId(checkoutId);
  rapidjson::Document json;
  DocumentRecord record;
  if (!ReadForIteration(server, id, json, record)) return Refused;
  // The answer is dropped: the CheckoutId stays the same, and check-in picks the newer iteration up through
  // it.
  DocumentRecord answer;
  const Poster poster = [&](JsonAllocator& allocator, rapidjson::Value& instruction) {
    rapidjson::Value resolution = MakeResolution(allocator, iterationResolution, record.id);
    return PostStore(server, allocator, instruction, checkoutId.field1, {&answer, 1}, &resolution);
  };
  const Status status = BuildDocumentForIterate(server, record, json, params, poster, std::move(progress));
  if (status != Ok) {
    const LocalPaths paths(params);
    TracerFor(Follows())(dp::TraceType::Error, "Failed to store document id %s (%s, %s, %s)\n", id.c_str(),
                         paths.main, paths.viewable, paths.vcs);
  }
  return status;
}

}  // namespace lxservices::cms_interface::vantry
