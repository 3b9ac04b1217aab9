#include "documents/storing/content_upload.h"

#include <cerrno>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <utility>

#include "base/failure_trace.h"
#include "base/step_words.h"
#include "connection/json_members.h"
#include "connection/rest_stream.h"
#include "connection/url_split.h"
#include "documents/storing/multipart_file.h"
#include "documents/storing/upload_ticket.h"

namespace lxservices::cms_interface::vantry {
namespace {

/// Stream number to index of the path.
using StreamIndex = std::map<std::uint64_t, std::size_t>;

std::uint64_t ReadStreamId(const std::string& text) {
  char* end = nullptr;
  errno = 0;
  const std::uint64_t number = std::strtoull(text.c_str(), &end, 10);
  const bool isTooLarge = errno == ERANGE;
  if (end == text.c_str() || isTooLarge) ReportReason({FailureKind::AnswerBroken});
  if (end == text.c_str()) throw std::invalid_argument("invalid stoull argument");
  if (isTooLarge) throw std::out_of_range("stoull argument out of range");
  return number;
}

void WriteHead(MultipartFile& body, const UploadTicket& ticket) {
  body.BeginField("Master_URL");
  body.AddText(ticket.masterUrl);
  body.BeginField("CacheDescriptor_array");
}

void WriteDescriptors(MultipartFile& body, const UploadTicket& ticket, std::size_t count) {
  for (std::size_t index = 0; index < count; ++index) {
    const std::string& stream = ticket.streamIds[index];
    body.AddText(stream + ":" + ticket.fileNames[index] + ":" + stream + ";");
  }
}

// Stream number to index of the path, for every path; the part of a file that cannot be opened is left out.
StreamIndex WriteFiles(MultipartFile& body, const UploadTicket& ticket,
                       const std::vector<std::string>& paths) {
  StreamIndex streams;
  for (std::size_t index = 0; index < paths.size(); ++index) {
    streams[ReadStreamId(ticket.streamIds[index])] = index;
    body.AddFile(paths[index], ticket.fileNames[index]);
  }
  return streams;
}

// One entry for each file; blank for one that the answer has no receipt of.
std::vector<UploadedContent> ReadReceipts(const rapidjson::Document& answer, const StreamIndex& streams,
                                          std::size_t fileCount) {
  std::vector<UploadedContent> contents(fileCount);
  const rapidjson::Value* receipts = FindArray(answer, "contentInfos");
  if (receipts == nullptr) return contents;
  for (const auto& receipt : receipts->GetArray()) {
    const rapidjson::Value* info = FindString(receipt, "encodedInfo");
    const rapidjson::Value* stream = FindMember(receipt, "streamId");
    if (info == nullptr || stream == nullptr || !stream->IsUint64()) continue;
    const auto entry = streams.find(stream->GetUint64());
    if (entry != streams.end()) contents[entry->second] = {entry->first, std::string(TextView(*info))};
  }
  return contents;
}

// A failure without a line of its own.
Status Because(FailureKind kind, Status status) {
  ReportReason({kind});
  return status;
}

Status TraceRefusal(const Reason& reason, int status, const std::string& errorText) {
  TracerFor(reason)(dp::TraceType::Error, "Failed to upload document with error %d : %s\n", status,
                    errorText.c_str());
  return Refused;
}

// A body that is not whole is sent to nobody: what a server stored of it would be half of what a user has.
Status TraceNotStaged(const std::string& bodyFile) {
  TracerFor({FailureKind::LocalFile})(dp::TraceType::Error, "Failed to write upload file %s\n",
                                      bodyFile.c_str());
  return ServerError;
}

Status TraceTooLarge() {
  TracerFor(Follows())(dp::TraceType::Error, "Failed to update document: maximum file size exceeded\n");
  return TooLarge;
}

// What was staged, and where.
struct StagedBody {
  const std::string& file;
  std::string contentType;
  std::size_t fileCount;  ///< those included that could not be opened
  StreamIndex streams;
};

// Sends the staged body over a connection of its own, even when it leads to the same server.
Result<std::vector<UploadedContent>> PostBody(ServerContext& server, const std::string& uploadUrl,
                                              const StagedBody& staged, du::http::ProgressFunction progress) {
  const auto [base, path] = SplitUrlAtPath(uploadUrl);
  const FailureMark mark;
  const auto side = server.MakeSideConnection(base);
  if (side == nullptr) return TraceRefusal(FollowsOr(mark, FailureKind::AnswerBroken), -1, {});
  const std::string nonce = server.CsrfHeader();
  RestStream response(MakeRestRequest(side, du::http::Method::Post, path.c_str(), staged.file.c_str(),
                                      staged.contentType.c_str(), nonce.c_str()),
                      std::move(progress));
  rapidjson::Document answer;
  if (!response.succeeded() || !ParseJsonResponse(response, answer)) {
    return response.errorCode() == du::http::ErrorCode::TooLarge
               ? TraceTooLarge()
               : TraceRefusal(Follows(), response.status(), response.errorText());
  }
  if (FindArray(answer, "contentInfos") == nullptr) response.ReportBroken();
  return ReadReceipts(answer, staged.streams, staged.fileCount);
}

}  // namespace

Result<std::vector<UploadedContent>> UploadContents(ServerContext& server,
                                                    const std::vector<std::string>& paths,
                                                    du::http::ProgressFunction progress) {
  const FailureStep step(stepUploadContents);
  const auto issued = RequestUploadTicket(server, paths.size());
  if (!issued) return Refused;
  const UploadTicket& ticket = *issued;
  const ScopedTempPath bodyFile(MakeTempFile("upload", "multipart"));
  MultipartFile body(bodyFile.path());
  if (!body.IsOpen()) return Because(FailureKind::LocalFile, ServerError);
  WriteHead(body, ticket);
  if (paths.size() > ticket.fileNames.size() || paths.size() > ticket.streamIds.size()) {
    return Because(FailureKind::AnswerBroken, Refused);
  }
  WriteDescriptors(body, ticket, paths.size());
  const StreamIndex streams = WriteFiles(body, ticket, paths);
  if (!body.Finish()) return TraceNotStaged(bodyFile.path());
  const StagedBody staged{bodyFile.path(), body.ContentType(), paths.size(), streams};
  return PostBody(server, ticket.uploadUrl, staged, std::move(progress));
}

Result<std::vector<UploadedContent>> UploadPaths(ServerContext& server, const std::vector<std::string>& paths,
                                                 du::http::ProgressFunction progress) {
  std::vector<std::string> given;
  bool gap = false;
  bool warned = false;
  for (const std::string& path : paths) {
    if (path.empty()) {
      gap = true;
      continue;
    }
    const FailureAside aside;  // the others are sent
    if (gap && !warned) TracerFor({FailureKind::LocalFile})(dp::TraceType::Warning, "Unexpected file path\n");
    warned = warned || gap;
    given.push_back(path);
  }
  return UploadContents(server, given, std::move(progress));
}

}  // namespace lxservices::cms_interface::vantry
