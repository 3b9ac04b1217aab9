#include "documents/storing/document_building.h"

#include <optional>
#include <utility>
#include <vector>

#include "documents/storing/auth_app_version.h"
#include "documents/storing/content_upload.h"
#include "documents/storing/dependencies.h"
#include "documents/storing/document_instruction.h"

namespace lxservices::cms_interface::vantry {
namespace {

// The entry at an index, or null for an index outside.
const UploadedContent* EntryAt(const std::vector<UploadedContent>& contents,
                               std::optional<std::size_t> index) {
  return index && *index < contents.size() ? &contents[*index] : nullptr;
}

Status PostInstruction(const InstructionParts& parts, const Poster& poster) {
  rapidjson::Document memory;
  JsonAllocator& allocator = memory.GetAllocator();
  rapidjson::Value instruction = MakeInstruction(parts, allocator);
  return poster(allocator, instruction);
}

// Fenlet documents have a viewable and a metadata file beside the primary content.
Status BuildFenlet(ServerContext& server, InstructionParts parts, const DocumentUploadParams& params,
                   const Poster& poster, du::http::ProgressFunction progress) {
  std::vector<std::string> paths{params.mainPath};
  std::optional<std::size_t> viewable;
  std::optional<std::size_t> vcs;
  if (!params.viewablePath.empty()) {
    viewable = paths.size();
    paths.push_back(params.viewablePath);
  }
  if (!params.vcsPath.empty()) {
    vcs = paths.size();
    paths.push_back(params.vcsPath);
  }
  const auto [status, contents] = UploadContents(server, paths, std::move(progress));
  if (status != Ok) return status;
  EnsureAuthAppVersion(server);
  parts.main = EntryAt(contents, 0);
  parts.viewable = EntryAt(contents, viewable);
  parts.vcs = EntryAt(contents, vcs);
  parts.language = params.language;
  parts.application = {AuthoringApplicationOrDefault(server), AuthAppVersionOrDefault(server)};
  return PostInstruction(parts, poster);
}

// General and UGC documents have the primary content alone. UGC ones belong to an application of their own,
// whose version is never negotiated.
Status BuildSimple(ServerContext& server, InstructionParts parts, const DocumentUploadParams& params,
                   const Poster& poster, du::http::ProgressFunction progress) {
  const auto [status, contents] = UploadPaths(server, {params.mainPath}, std::move(progress));
  if (status != Ok) return status;
  if (parts.kind == DocumentKind::General) {
    EnsureAuthAppVersion(server);
    parts.application = {AuthoringApplicationOrDefault(server), AuthAppVersionOrDefault(server)};
  } else {
    parts.application = {"DOVA", "42"};
  }
  parts.main = EntryAt(contents, 0);
  return PostInstruction(parts, poster);
}

Status Build(ServerContext& server, const InstructionParts& parts, const DocumentUploadParams& params,
             const Poster& poster, du::http::ProgressFunction progress) {
  const auto build = parts.kind == DocumentKind::Fenlet ? BuildFenlet : BuildSimple;
  return build(server, parts, params, poster, std::move(progress));
}

bool IsKnown(DocumentKind kind) {
  return kind == DocumentKind::Fenlet || kind == DocumentKind::General || kind == DocumentKind::Ugc;
}

}  // namespace

Status BuildDocumentForCreate(ServerContext& server, const NewDocument& document,
                              const DocumentUploadParams& params, const Poster& poster,
                              du::http::ProgressFunction progress) {
  if (!IsKnown(params.kind)) return NotFound;
  InstructionParts parts;
  parts.kind = params.kind;
  parts.name = document.name;
  parts.folderId = document.folderId;
  DependencyList dependencies;
  if (params.kind == DocumentKind::Fenlet && params.dependencies != nullptr) {
    dependencies = ResolveDependencyMap(server, *params.dependencies);
    parts.dependencies = &dependencies;
  }
  return Build(server, parts, params, poster, std::move(progress));
}

Status BuildDocumentForIterate(ServerContext& server, const KnownDocument& document,
                               const DocumentUploadParams& params, const Poster& poster,
                               du::http::ProgressFunction progress) {
  if (!IsKnown(params.kind)) return NotFound;
  InstructionParts parts;
  parts.kind = params.kind;
  parts.document = &document.record;
  parts.json = &document.json;
  DependencyList dependencies;
  if (params.kind == DocumentKind::Fenlet && params.dependencies != nullptr) {
    dependencies = MergeDependencyMap(server, *params.dependencies, document.record.dependencies);
    parts.dependencies = &dependencies;
  }
  return Build(server, parts, params, poster, std::move(progress));
}

}  // namespace lxservices::cms_interface::vantry
