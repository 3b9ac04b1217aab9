#include "hosts/cli/doctor/direct_question.h"

#include <vtdirect/platform/http.h>

#include <algorithm>

#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {
namespace {

using du::http::ErrorCode;

constexpr std::size_t bodyBytes = std::size_t{64} << 10U;

/// Keeps the start of a body, and ends the exchange before it if only the head is wanted.
class AnswerSink final : public du::http::FileSink {
 public:
  explicit AnswerSink(DirectAnswer& answer) : answer_(answer) {}

  ErrorCode Begin(int httpStatus, std::optional<std::uint64_t> /*expectedLength*/) override {
    answer_.status = httpStatus;
    return answer_.headOnly || Interrupted() ? ErrorCode::Cancelled : ErrorCode::Done;
  }

  ErrorCode Write(const std::uint8_t* data, std::size_t count) override {
    const std::size_t room = bodyBytes - answer_.body.size();
    answer_.body.append(reinterpret_cast<const char*>(data), std::min(count, room));
    return Interrupted() ? ErrorCode::Cancelled : ErrorCode::Done;
  }

  ErrorCode Finish() override { return ErrorCode::Done; }

 private:
  DirectAnswer& answer_;
};

}  // namespace

DirectAnswer AskDirectly(Host& host, const std::string& url, AnswerPart wanted) {
  const bool headOnly = wanted == AnswerPart::HeadAlone;
  DirectAnswer answer;
  answer.headOnly = headOnly;
  const auto connection = du::http::ConnectURI(url.c_str(), nullptr, nullptr);
  if (connection == nullptr) {
    answer.fault = "that is no address that could be asked";
    return answer;
  }
  const std::size_t path = url.find('/', url.find("://") + 3);
  const std::string target = path == std::string::npos ? "/" : url.substr(path);
  const std::string line = headOnly ? "Accept: */*" : "Accept: application/json";
  du::http::BufferFileSource headers(reinterpret_cast<const std::uint8_t*>(line.data()), line.size());
  AnswerSink sink(answer);
  du::http::Request request;
  request.uri = target.c_str();
  request.headers = &headers;
  request.sink = &sink;
  du::http::CommonAuth auth;
  auth.header =
      "X-Zvk-Connected: 1";  // as the library's own requests: without it some servers show a login page
  auth.reauthenticate = [&host, &url] { return host.Authenticate(url); };
  auth.explain = [&answer](const du::http::FailureReport& report) { answer.fault = report.text; };
  int status = 0;
  const ErrorCode code = du::http::DoRequestWithCommonAuth(*connection, auth, request, &status);
  if (code == ErrorCode::Done) answer.status = status;
  if (answer.status != 0 && (code == ErrorCode::Done || headOnly)) {
    answer.fault.clear();
  } else if (answer.fault.empty()) {
    answer.fault = "there was no answer that could be used";
  }
  return answer;
}

std::string UrlBelow(const std::string& server, const std::string& resource) {
  return server + (server.ends_with('/') ? "" : "/") + resource;
}

}  // namespace vtdirect_cli
