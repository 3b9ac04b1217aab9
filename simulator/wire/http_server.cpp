#include "simulator/wire/http_server.h"

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <functional>
#include <limits>
#include <map>
#include <thread>
#include <utility>
#include <vector>

#include "simulator/wire/answer_body.h"
#include "simulator/wire/connection_stream.h"
#include "simulator/wire/connection_threads.h"
#include "simulator/wire/http_refusals.h"
#include "simulator/wire/request_body.h"

namespace vantry_sim {
namespace {

/// How long a silent connection is kept.
constexpr int kKeepAliveSeconds = 300;
/// The library counts requests down for its Keep-Alive header alone; the loop here serves without end.
constexpr std::size_t kKeepAliveRequests = 1'000'000'000;
/// How long a stop waits for answers that are under way.
constexpr auto kGrace = std::chrono::seconds(3);
/// The most of a body that is kept in memory.
constexpr std::uint64_t kMostBodyInMemory = 16 * 1024 * 1024;

/// A multipart body reaches the routes as it was sent: under this name the HTTP library doesn't know its type
/// and leaves it alone.
constexpr const char* kBodyType = "X-Vantry-Sim-Body-Type";

bool HasBody(const httplib::Request& request) {
  return request.has_header("Transfer-Encoding") ||
         (request.has_header("Content-Length") && request.get_header_value("Content-Length") != "0");
}

bool TakesBody(const std::string& method) {
  return method == "POST" || method == "PUT" || method == "PATCH" || method == "DELETE";
}

}  // namespace

/// The HTTP library's server with a connection loop of our own: it keeps connections as long as clients want
/// them, knows them all when it is to stop, and logs what really went over the wire.
class HttpServer::Implementation final : public httplib::Server {
 public:
  Implementation(Simulator& simulator, RequestLog& log, Door door);
  bool BindToOptions();
  [[nodiscard]] int port() const { return port_; }
  void Serve();
  void StopServing();

 private:
  void WaitForStragglers();

  /// One connection at work on one exchange.
  struct Connection {
    explicit Connection(int socket) : stream(socket) {}
    ConnectionStream stream;
    Exchange exchange;
    bool close_after = false;
  };

  bool process_and_close_socket(socket_t socket) override;
  void ServeOne(Connection& connection);
  static void PrepareRequest(httplib::Request& request, Connection& connection, const Simulator& simulator);
  using Produce = std::function<vantry_sim::Response(vantry_sim::Request&)>;
  void Answer(const httplib::Request& request, httplib::Response& response, const Produce& produce);
  void AnswerWithBody(const httplib::Request& request, httplib::Response& response,
                      const httplib::ContentReader& reader);
  void AnswerUpload(const httplib::Request& request, httplib::Response& response,
                    const httplib::ContentReader& reader);
  [[nodiscard]] vantry_sim::Request OwnRequest(const httplib::Request& request);
  bool RefuseBody(const httplib::Request& request, httplib::Response& response, const BodyOutcome& outcome);
  void Fill(httplib::Response& out, const Response& answer, Connection& connection,
            const std::optional<FaultAction>& fault);
  Connection* Find(const httplib::Request& request);
  bool Sleep(std::chrono::milliseconds duration);

  Simulator& simulator_;
  RequestLog& log_;
  Door door_;
  int port_ = 0;

  std::mutex mutex_;
  std::condition_variable changed_;
  bool stopping_ = false;
  std::atomic<bool> serving_ = false;
  std::map<std::pair<std::string, int>, Connection*> connections_;  ///< by the client's address and port
};

HttpServer::Implementation::Implementation(Simulator& simulator, RequestLog& log, Door door)
    : simulator_(simulator), log_(log), door_(door) {
  // The library would let two servers share a port, and clients would meet either of them.
  set_socket_options([](socket_t socket) {
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  });
  set_keep_alive_timeout(kKeepAliveSeconds);
  set_keep_alive_max_count(kKeepAliveRequests);
  new_task_queue = [] { return new ConnectionThreads; };
  if (simulator.options().max_upload_bytes) set_payload_max_length(*simulator.options().max_upload_bytes);
  set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
    // Requests with a body go on to the handlers below, which read it first.
    if (TakesBody(request.method)) return HandlerResponse::Unhandled;
    Answer(request, response, [this](vantry_sim::Request& own) {
      if (door_ != Door::kUploads) return simulator_.Handle(own);
      return ErrorResponse(404, "no-such-route", "this port takes uploads alone");
    });
    return HandlerResponse::Handled;
  });
  const auto with_body = [this](const httplib::Request& request, httplib::Response& response,
                                const httplib::ContentReader& reader) {
    if (door_ == Door::kUploads) {
      AnswerUpload(request, response, reader);
    } else {
      AnswerWithBody(request, response, reader);
    }
  };
  const char* any = "[\\s\\S]*";
  Post(any, with_body);
  Put(any, with_body);
  Patch(any, with_body);
  Delete(any, with_body);
  set_error_handler(Handler(GiveReason));
}

bool HttpServer::Implementation::BindToOptions() {
  const vantry_sim::Options& options = simulator_.options();
  const int wanted = door_ == Door::kMain      ? options.port
                     : door_ == Door::kUploads ? options.upload_port
                                               : options.page_port.value_or(0);
  port_ = wanted == 0 ? bind_to_any_port(options.bind_address)
                      : (bind_to_port(options.bind_address, wanted) ? wanted : -1);
  if (port_ <= 0) return false;
  if (door_ == Door::kUploads) simulator_.SetUploadPort(port_);
  if (door_ == Door::kPages) simulator_.SetPagePort(port_);
  if (door_ == Door::kMain) simulator_.SetOwnAddress(options.bind_address + ":" + std::to_string(port_));
  return true;
}

void HttpServer::Implementation::Serve() {
  {
    const std::lock_guard lock(mutex_);
    if (stopping_) return;
    serving_ = true;
  }
  std::thread stragglers([this] { WaitForStragglers(); });
  listen_after_bind();
  serving_ = false;
  // Serving also ends when the listening socket fails.
  StopServing();
  stragglers.join();
}

void HttpServer::Implementation::StopServing() {
  {
    const std::lock_guard lock(mutex_);
    if (std::exchange(stopping_, true)) return;
    // Whoever waits for a next request sees the end of the connection; answers go on.
    for (auto& [address, connection] : connections_) connection->stream.ShutdownReading();
    changed_.notify_all();
  }
  // The HTTP library forgets a stop that comes before it has begun to listen.
  while (serving_ && !is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  stop();
}

void HttpServer::Implementation::WaitForStragglers() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return stopping_; });
  if (changed_.wait_for(lock, kGrace, [this] { return connections_.empty(); })) return;
  for (auto& [address, connection] : connections_) {
    connection->stream.Abort();
    connection->stream.ShutdownBoth();
  }
}

bool HttpServer::Implementation::process_and_close_socket(socket_t socket) {
  Connection connection(socket);
  std::pair<std::string, int> address;
  connection.stream.get_remote_ip_and_port(address.first, address.second);
  connection.exchange.remote_port = address.second;
  {
    const std::lock_guard lock(mutex_);
    if (stopping_) return true;
    connections_[address] = &connection;
  }
  while (!connection.close_after && !connection.stream.aborted() &&
         connection.stream.WaitForRequest(kKeepAliveSeconds * 1000)) {
    ServeOne(connection);
  }
  if (!connection.stream.aborted()) connection.stream.LingerBeforeClose();
  const std::lock_guard lock(mutex_);
  connections_.erase(address);
  changed_.notify_all();
  return true;
}

void HttpServer::Implementation::ServeOne(Connection& connection) {
  Exchange& exchange = connection.exchange;
  exchange.start = std::chrono::system_clock::now();
  exchange.method.clear();
  exchange.target.clear();
  exchange.user.clear();
  connection.stream.BeginExchange();

  const auto begin = std::chrono::steady_clock::now();
  bool closed_by_client = false;
  const bool served =
      process_request(connection.stream, false, closed_by_client,
                      [&](httplib::Request& request) { PrepareRequest(request, connection, simulator_); });
  const auto duration = std::chrono::steady_clock::now() - begin;
  const bool lost = exchange.method.empty();
  if (!served || closed_by_client || lost) connection.close_after = true;
  if (!connection.stream.read_any()) return;
  if (connection.stream.head_too_long()) SendHeadTooLong(connection.stream);

  exchange.duration = std::chrono::duration_cast<std::chrono::microseconds>(duration);
  exchange.status = connection.stream.status();
  exchange.body_bytes = connection.stream.body_bytes();
  log_.Write(exchange);
}

/// Runs when the head of a request has been read and before anything is done with it.
void HttpServer::Implementation::PrepareRequest(httplib::Request& request, Connection& connection,
                                                const Simulator& simulator) {
  connection.stream.EndOfHead();
  connection.exchange.method = request.method;
  connection.exchange.target = request.target;
  connection.exchange.user = simulator.UserOf(request.get_header_value("Authorization"));
  if (!TakesBody(request.method)) {
    // The HTTP library leaves such a body unread, and it would be taken for the next request.
    if (HasBody(request)) connection.close_after = true;
  } else {
    const bool chunked = request.has_header("Transfer-Encoding");
    if (chunked && request.has_header("Content-Length")) connection.close_after = true;
    // Without either header the HTTP library would read until the client closes.
    if (!chunked && !request.has_header("Content-Length")) request.set_header("Content-Length", "0");
    if (request.is_multipart_form_data()) {
      const std::string type = request.get_header_value("Content-Type");
      request.headers.erase("Content-Type");
      request.set_header(kBodyType, type);
    }
  }
  if (connection.close_after) {
    request.headers.erase("Connection");
    request.set_header("Connection", "close");
  }
}

void HttpServer::Implementation::AnswerWithBody(const httplib::Request& request, httplib::Response& response,
                                                const httplib::ContentReader& reader) {
  const std::uint64_t limit =
      std::min(simulator_.options().max_upload_bytes.value_or(kMostBodyInMemory), kMostBodyInMemory);
  std::string body;
  const BodyOutcome outcome =
      ReadBody(reader, limit, response.status, [&](std::string_view piece) { body.append(piece); });
  if (RefuseBody(request, response, outcome)) return;
  Answer(request, response, [&](vantry_sim::Request& own) {
    own.body = std::move(body);
    return simulator_.Handle(own);
  });
}

/// The bytes of an upload go to the disk while they come. They become the server's when the answer is made,
/// and so a fault in its place leaves none of them.
void HttpServer::Implementation::AnswerUpload(const httplib::Request& request, httplib::Response& response,
                                              const httplib::ContentReader& reader) {
  vantry_sim::Request own = OwnRequest(request);
  vantry_sim::Response refusal;
  const auto upload = simulator_.BeginUpload(own, refusal);
  const std::uint64_t limit =
      simulator_.options().max_upload_bytes.value_or(std::numeric_limits<std::uint64_t>::max());
  // What was refused is still read: a client that sends listens only when it has sent all.
  const BodyOutcome outcome = ReadBody(reader, limit, response.status, [&](std::string_view piece) {
    if (upload) upload->Receive(piece);
  });
  if (RefuseBody(request, response, outcome)) return;
  Answer(request, response, [&](vantry_sim::Request&) {
    return upload ? simulator_.FinishUpload(*upload, own) : std::move(refusal);
  });
}

/// Answers for a body that wasn't read whole. @return false for one that was
bool HttpServer::Implementation::RefuseBody(const httplib::Request& request, httplib::Response& response,
                                            const BodyOutcome& outcome) {
  if (outcome.complete && !outcome.too_large) return false;
  if (Connection* connection = Find(request); connection != nullptr && !outcome.at_its_end) {
    connection->close_after = true;
    response.set_header("Connection", "close");
  }
  const vantry_sim::Response refusal =
      outcome.too_large ? ErrorResponse(413, "too-large", "the body is longer than this server takes")
                        : ErrorResponse(400, "broken-body", "the body ended before its announced end");
  response.status = refusal.status;
  response.set_content(refusal.body, refusal.content_type);
  return true;
}

vantry_sim::Request HttpServer::Implementation::OwnRequest(const httplib::Request& request) {
  vantry_sim::Request own;
  own.method = request.method == "HEAD" ? "GET" : request.method;
  own.target = request.target;
  own.host = request.get_header_value("Host");
  own.prefer = request.get_header_value("Prefer");
  own.nonce = request.get_header_value("X-Zvk-Nonce");
  own.content_type = request.get_header_value(request.has_header(kBodyType) ? kBodyType : "Content-Type");
  if (const Connection* connection = Find(request)) own.user = connection->exchange.user;
  return own;
}

void HttpServer::Implementation::Answer(const httplib::Request& request, httplib::Response& response,
                                        const Produce& produce) {
  Connection* connection = Find(request);
  if (connection == nullptr) {
    response.status = 500;
    return;
  }
  const auto fault = simulator_.faults().Take(request.method, request.target);
  const std::chrono::milliseconds latency(simulator_.options().latency_milliseconds);
  if (latency.count() > 0 && !Sleep(latency)) connection->close_after = true;

  const bool stalls = fault && fault->kind == FaultAction::Kind::kStall && !fault->bytes;
  if (stalls || (fault && fault->kind == FaultAction::Kind::kDrop)) {
    if (stalls) connection->stream.WaitForClose();
    connection->stream.Abort();
    return;
  }
  if (fault && fault->kind == FaultAction::Kind::kStatus) {
    Response refusal = ErrorResponse(fault->status, "fault", "this answer was asked for by --fault");
    if (fault->status == 401) refusal.headers.emplace_back("WWW-Authenticate", "Basic realm=\"vantry-sim\"");
    Fill(response, refusal, *connection, std::nullopt);
    return;
  }
  if (!TakesBody(request.method) && HasBody(request)) {
    Fill(response, ErrorResponse(400, "unexpected-body", "a request of this method carries no body"),
         *connection, std::nullopt);
    return;
  }
  vantry_sim::Request own = OwnRequest(request);
  Fill(response, produce(own), *connection, fault);
}

/// @param fault a cut or a stall in the middle of the body, or nothing
void HttpServer::Implementation::Fill(httplib::Response& out, const Response& answer, Connection& connection,
                                      const std::optional<FaultAction>& fault) {
  out.status = answer.status;
  for (const auto& [name, value] : answer.headers) out.set_header(name, value);
  if (SetBody(out, answer, connection.stream, fault)) return;
  std::fprintf(stderr, "vantry-sim: cannot read %s\n", answer.file->path.c_str());
  Fill(out, ErrorResponse(500, "internal", "the server has lost these bytes"), connection, std::nullopt);
}

HttpServer::Implementation::Connection* HttpServer::Implementation::Find(const httplib::Request& request) {
  const std::lock_guard lock(mutex_);
  const auto found = connections_.find({request.remote_addr, request.remote_port});
  return found == connections_.end() ? nullptr : found->second;
}

/// False when the server was stopped meanwhile.
bool HttpServer::Implementation::Sleep(std::chrono::milliseconds duration) {
  std::unique_lock lock(mutex_);
  return !changed_.wait_for(lock, duration, [this] { return stopping_; });
}

HttpServer::HttpServer(Simulator& simulator, RequestLog& log, Door door)
    : implementation_(std::make_unique<Implementation>(simulator, log, door)) {}

HttpServer::~HttpServer() = default;

bool HttpServer::Bind() {
  return implementation_->BindToOptions();
}

int HttpServer::port() const {
  return implementation_->port();
}

void HttpServer::Run() {
  implementation_->Serve();
}

void HttpServer::Stop() {
  implementation_->StopServing();
}

}  // namespace vantry_sim
