#include "fuzz/support/byte_server.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "connection/rest_stream.h"
#include "connection/vt_connection.h"

namespace vtdirect_fuzz {
namespace {

using du::http::ErrorCode;
using lxservices::cms_interface::vantry::RestStream;
using lxservices::cms_interface::vantry::ServerContext;
using lxservices::cms_interface::vantry::ServiceFlags;
using lxservices::cms_interface::vantry::VtConnection;
using vtdirect_test::Answer;

Answer AnswerOf(std::string_view text) {
  const char kind = text.empty() ? '0' : text.front();
  const std::string body(text.substr(text.empty() ? 0 : 1));
  switch (kind) {
    case '0':
      return {200, body};
    case '1':
      return {201, body};
    case '2':
      return {204, body};
    case '3':
      return {302, body};
    case '4':
      return {404, body};
    case '5':
      return {500, body};
    case '6':
      return {401, body, ErrorCode::Done, 1};
    case '7':
      return {200, body, ErrorCode::ProtocolFailure};
    case '8':
      return {0, {}, ErrorCode::NoConnection};
    case '9':
      return {0, {}, ErrorCode::TimedOut};
    case '*': {
      Answer answer{200, body};
      while (!body.empty() && answer.body.size() <= RestStream::memoryLimit) answer.body += body;
      return answer;
    }
    default:
      return {200, std::string(text)};
  }
}

}  // namespace

std::vector<Answer> AnswersOf(std::string_view bytes) {
  std::vector<Answer> answers;
  for (;;) {
    const std::size_t end = bytes.find(answerEnd);
    answers.push_back(AnswerOf(bytes.substr(0, end)));
    if (end == std::string_view::npos) return answers;
    bytes.remove_prefix(end + 1);
  }
}

ByteServer::ByteServer(std::string_view bytes) : answers_(AnswersOf(bytes)) {
  transport_.AnswerBy([this](const vtdirect_test::SentRequest&) { return Next(); });
}

Answer ByteServer::Next() {
  const std::lock_guard lock(mutex_);
  if (next_ == answers_.size()) return {0, {}, ErrorCode::NoConnection};
  return std::move(answers_[next_++]);
}

ServerContext NewOperation(bool services) {
  ServiceFlags flags;
  flags.dataAdminChecked = flags.dynamicDocChecked = flags.cadDocChecked = true;
  flags.dataAdminPresent = flags.folderContents = flags.dataAdminV5 = services;
  flags.dynamicDocPresent = flags.dynamicDocV2 = flags.cadDocPresent = services;
  const auto refuse = [](const char*) { return false; };
  return {std::make_shared<VtConnection>("http://plm.example/vt", refuse), flags};
}

}  // namespace vtdirect_fuzz
