#include "documents/storing/upload_ticket.h"

#include <optional>

#include "base/failure_trace.h"
#include "base/step_words.h"
#include "connection/json_members.h"
#include "connection/rest_stream.h"
#include "documents/storing/text_file.h"

namespace lxservices::cms_interface::vantry {
namespace {

// An element of another type is passed over: an empty stream id in its place could not be read as a number,
// and would end the upload in an exception instead of a refusal.
void AppendTexts(const rapidjson::Value& value, std::vector<std::string>& texts) {
  if (!value.IsArray()) return;
  for (const auto& element : value.GetArray()) {
    if (element.IsString()) texts.emplace_back(TextView(element));
  }
}

UploadTicket ReadTicket(const rapidjson::Document& answer) {
  UploadTicket ticket;
  if (!answer.IsObject()) return ticket;
  for (const auto& member : answer.GetObject()) {
    const std::string_view name = TextView(member.name);
    if (name == "masterUrl") CopyString(member.value, ticket.masterUrl);
    if (name == "uploadUrl") CopyString(member.value, ticket.uploadUrl);
    if (name == "fileNames") AppendTexts(member.value, ticket.fileNames);
    if (name == "streamIds") AppendTexts(member.value, ticket.streamIds);
  }
  return ticket;
}

bool IsComplete(const UploadTicket& ticket) {
  return !ticket.fileNames.empty() && !ticket.streamIds.empty() && !ticket.masterUrl.empty() &&
         !ticket.uploadUrl.empty();
}

}  // namespace

std::optional<UploadTicket> RequestUploadTicket(ServerContext& server, std::size_t fileCount) {
  const FailureStep step(stepAskForUploadPlace);
  const ScopedTempPath body(
      WriteTextFile(MakeTempFile("upload", "json"), "{\n\"noOfFiles\":" + std::to_string(fileCount) + "\n}"));
  if (body.path().empty()) return std::nullopt;
  std::optional<RestStream> response;
  const auto post = [&](const char* path) {
    const std::string nonce = server.CsrfHeader();
    response.emplace(MakeRestRequest(server.http(), du::http::Method::Post, path, body.path().c_str(),
                                     nullptr, nonce.c_str()),
                     du::http::ProgressFunction());
  };
  post("servlet/rest/v1/content/creationFactory");
  if (response->status() == 404) post("servlet/rest/content/creationFactory");
  rapidjson::Document answer;
  if (!response->succeeded() || !ParseJsonResponse(*response, answer)) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to update document with error %d : %s\n",
                         response->status(), response->errorText().c_str());
    return std::nullopt;
  }
  UploadTicket ticket = ReadTicket(answer);
  if (IsComplete(ticket)) return ticket;
  response->ReportBroken();
  return std::nullopt;
}

}  // namespace lxservices::cms_interface::vantry
