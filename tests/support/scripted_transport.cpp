#include "tests/support/scripted_transport.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <ostream>
#include <utility>

namespace vtdirect_test {
namespace {

std::atomic<ScriptedTransport*> current = nullptr;

class ScriptedConnection final : public du::http::Connection {
 public:
  explicit ScriptedConnection(std::string url) : server(std::move(url)) {}
  std::string server;
};

du::http::ErrorCode ReadAll(du::http::FileSource& source, std::string& text) {
  std::uint8_t buffer[777];
  std::size_t count = 0;
  auto error = du::http::ErrorCode::Done;
  while ((error = source.Read(buffer, sizeof buffer, &count)) == du::http::ErrorCode::Done && count > 0) {
    text.append(reinterpret_cast<const char*>(buffer), count);
  }
  return error;
}

std::string MethodName(du::http::Method method) {
  switch (method) {
    case du::http::Method::Get:
      return "GET";
    case du::http::Method::Post:
      return "POST";
    case du::http::Method::Patch:
      return "PATCH";
  }
  return "method " + std::to_string(static_cast<int>(method));
}

// Delivers a body in pieces of an odd size, as a network does. One that breaks off is never finished.
du::http::ErrorCode Deliver(const Answer& answer, du::http::FileSink* sink) {
  using du::http::ErrorCode;
  if (sink == nullptr) return ErrorCode::Done;
  if (const auto error = sink->Begin(answer.status, answer.body.size()); error != ErrorCode::Done)
    return error;
  constexpr std::size_t piece = 4099;
  for (std::size_t position = 0; position < answer.body.size(); position += piece) {
    const std::size_t count = std::min(piece, answer.body.size() - position);
    const auto* data = reinterpret_cast<const std::uint8_t*>(answer.body.data()) + position;
    if (const auto error = sink->Write(data, count); error != ErrorCode::Done) return error;
  }
  return answer.error != ErrorCode::Done ? answer.error : sink->Finish();
}

}  // namespace

void PrintTo(const SentRequest& request, std::ostream* out) {
  *out << request.line << " to " << request.server << "\n" << request.headers;
  if (request.body) *out << "\n\n" << *request.body;
}

ScriptedTransport::ScriptedTransport() {
  current = this;
}
ScriptedTransport::~ScriptedTransport() {
  current = nullptr;
}

ScriptedTransport& ScriptedTransport::Then(int status, std::string body) {
  return Then(Answer{status, std::move(body)});
}

ScriptedTransport& ScriptedTransport::Then(Answer answer) {
  script_.push_back(std::move(answer));
  return *this;
}

ScriptedTransport& ScriptedTransport::ThenFail(du::http::ErrorCode error) {
  return Then(Answer{0, {}, error});
}

void ScriptedTransport::AnswerBy(Router router) {
  const std::lock_guard lock(mutex_);
  router_ = std::move(router);
}

void ScriptedTransport::OnConnect(std::function<void(const std::string& url)> action) {
  const std::lock_guard lock(mutex_);
  onConnect_ = std::move(action);
}

void ScriptedTransport::RefuseConnections(int count) {
  const std::lock_guard lock(mutex_);
  refusedConnections_ = count;
}

void ScriptedTransport::ClearRequests() {
  const std::lock_guard lock(mutex_);
  requests_.clear();
}

std::vector<std::string> ScriptedTransport::lines() const {
  std::vector<std::string> lines;
  for (const auto& request : requests_) lines.push_back(request.line);
  return lines;
}

std::unique_ptr<du::http::Connection> ScriptedTransport::Connect(const char* uri) {
  std::unique_lock lock(mutex_);
  if (const auto action = onConnect_) {
    lock.unlock();
    action(uri);
    lock.lock();
  }
  connections_.emplace_back(uri);
  if (refusedConnections_ > 0) {
    --refusedConnections_;
    return nullptr;
  }
  return std::make_unique<ScriptedConnection>(uri);
}

std::optional<Answer> ScriptedTransport::AnswerTo(const SentRequest& sent, const char* clientMark,
                                                  bool isWhole) {
  std::unique_lock lock(mutex_);
  requests_.push_back(sent);
  clientMarks_.emplace_back(clientMark);
  if (!isWhole) return std::nullopt;
  if (const Router router = router_) {
    lock.unlock();
    return router(sent);
  }
  if (script_.empty()) return std::nullopt;
  Answer answer = std::move(script_.front());
  script_.pop_front();
  return answer;
}

du::http::ErrorCode ScriptedTransport::Exchange(const std::string& server, const du::http::CommonAuth& auth,
                                                const du::http::Request& request, int* httpStatus) {
  SentRequest sent{server, MethodName(request.method) + " " + request.uri, {}, {}};
  (void)ReadAll(*request.headers, sent.headers);
  auto read = du::http::ErrorCode::Done;
  if (request.body != nullptr) read = ReadAll(*request.body, sent.body.emplace());
  const auto found = AnswerTo(sent, auth.header, read == du::http::ErrorCode::Done);
  if (read != du::http::ErrorCode::Done) return read;
  if (!found) return du::http::ErrorCode::NoConnection;
  const Answer& answer = *found;
  for (int demand = 0; demand < answer.demands; ++demand) {
    const bool again = auth.reauthenticate();
    const std::lock_guard lock(mutex_);
    authResults_.push_back(again);
  }
  const bool isExplained = answer.found.detail != du::http::FailureDetail::Unknown;
  if (isExplained && auth.explain) auth.explain(answer.found);
  if (answer.error != du::http::ErrorCode::Done) {
    if (answer.status != 0) *httpStatus = answer.status;
    return answer.body.empty() ? answer.error : Deliver(answer, request.sink);
  }
  const auto delivered = Deliver(answer, request.sink);
  if (delivered == du::http::ErrorCode::Done) *httpStatus = answer.status;
  if (answer.afterwards) answer.afterwards();
  return delivered;
}

}  // namespace vtdirect_test

namespace du::http {

std::unique_ptr<Connection> ConnectURI(const char* uri, const char*, const char*) {
  auto* transport = vtdirect_test::current.load();
  return transport != nullptr ? transport->Connect(uri) : nullptr;
}

ErrorCode DoRequestWithCommonAuth(Connection& connection, const CommonAuth& auth, const Request& request,
                                  int* httpStatus) {
  auto* transport = vtdirect_test::current.load();
  if (transport == nullptr) return ErrorCode::NoConnection;
  const auto& scripted = static_cast<vtdirect_test::ScriptedConnection&>(connection);
  return transport->Exchange(scripted.server, auth, request, httpStatus);
}

}  // namespace du::http
