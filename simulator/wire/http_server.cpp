#include "simulator/wire/http_server.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <limits>
#include <map>
#include <tuple>
#include <utility>

#include "simulator/wire/answer_body.h"
#include "simulator/wire/content_part.h"
#include "simulator/wire/fault_answer.h"
#include "simulator/wire/http_refusals.h"
#include "simulator/wire/own_request.h"
#include "simulator/wire/redaction.h"
#include "simulator/wire/request_body.h"

namespace vantry_sim {
namespace {

using Kind = FaultAction::Kind;

/// The HTTP library tells both in a header of its answers; the gate keeps connections its own way.
constexpr int keepAliveSeconds = 300;
constexpr std::size_t keepAliveRequests = 1'000'000'000;
/// The most of a body that is kept in memory.
constexpr std::uint64_t mostBodyInMemory = 16 * 1024 * 1024;

}  // namespace

std::string_view WordOf(Door door) {
  switch (door) {
    case Door::Main:
      return "main";
    case Door::Pages:
      return "pages";
    case Door::Uploads:
      return "uploads";
    case Door::Admin:
      break;
  }
  return "admin";
}

/// The HTTP library's server, whose connections the gate holds.
class HttpServer::Implementation final : public httplib::Server {
 public:
  Implementation(const ServerParts& parts, Door door);
  bool ServeOne(ConnectionStream& stream);
  void Refuse(ConnectionStream& stream, int status);

 private:
  /// One connection at work on one exchange.
  struct Ongoing {
    explicit Ongoing(ConnectionStream& connection) : stream(connection) {}
    ConnectionStream& stream;
    RequestHead head;
    Exchange exchange;
    std::uint64_t remembered = 0;  ///< id in the history
    std::uint64_t fault = 0;       ///< id of the rule that met it
    bool closeAfter = false;
  };
  using Produce = std::function<vantry_sim::Response(vantry_sim::Request&)>;
  /// The client's address and port, and the address of this machine. A port of a client may be connected to
  /// several addresses at one time.
  using Ends = std::tuple<std::string, int, std::string>;

  void SetHandlers();
  void Remember(Ongoing& ongoing);
  void Finish(Ongoing& ongoing, std::chrono::steady_clock::duration duration);
  void PrepareRequest(httplib::Request& request, Ongoing& ongoing);
  void Answer(const httplib::Request& request, httplib::Response& response, const Produce& produce);
  bool MetByFault(const httplib::Request& request, httplib::Response& response, Ongoing& ongoing,
                  const FaultAction& fault);
  void AnswerWithBody(const httplib::Request& request, httplib::Response& response,
                      const httplib::ContentReader& reader);
  void AnswerUpload(const httplib::Request& request, httplib::Response& response,
                    const httplib::ContentReader& reader);
  bool RefuseBody(const httplib::Request& request, httplib::Response& response, const BodyOutcome& outcome);
  void Fill(httplib::Response& out, const Response& answer, Ongoing& ongoing,
            const std::optional<FaultAction>& fault);
  Ongoing* Find(const httplib::Request& request);

  Simulator& simulator_;
  RequestLog& log_;
  StopSignal& stop_;
  BodyMemory& bodies_;
  AdminApi* admin_;
  Door door_;
  std::mutex mutex_;
  std::map<Ends, Ongoing*> ongoing_;
};

HttpServer::Implementation::Implementation(const ServerParts& parts, Door door)
    : simulator_(parts.simulator),
      log_(parts.log),
      stop_(parts.stop),
      bodies_(parts.bodies),
      admin_(parts.admin),
      door_(door) {
  // The HTTP library breaks long answers off where it has no listening socket. The gate listens in its place,
  // and the number of the socket is used for nothing else.
  svr_sock_ = 0;
  set_keep_alive_timeout(keepAliveSeconds);
  set_keep_alive_max_count(keepAliveRequests);
  const auto limit = simulator_.options().maxUploadBytes;
  if (limit && door_ != Door::Admin) set_payload_max_length(*limit);
  SetHandlers();
}

void HttpServer::Implementation::SetHandlers() {
  set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
    // Requests with a body go on to the handlers below, which read it first.
    if (TakesBody(request.method)) return HandlerResponse::Unhandled;
    Answer(request, response, [this](vantry_sim::Request& own) {
      if (door_ == Door::Admin) return admin_->Handle(own);
      if (door_ != Door::Uploads) return simulator_.Handle(own);
      return ErrorResponse(404, "no-such-route", "this port takes uploads alone");
    });
    return HandlerResponse::Handled;
  });
  const auto withBody = [this](const httplib::Request& request, httplib::Response& response,
                               const httplib::ContentReader& reader) {
    if (door_ == Door::Uploads) {
      AnswerUpload(request, response, reader);
    } else {
      AnswerWithBody(request, response, reader);
    }
  };
  const char* any = "[\\s\\S]*";
  Post(any, withBody);
  Put(any, withBody);
  Patch(any, withBody);
  Delete(any, withBody);
  set_error_handler(Handler(GiveReason));
}

bool HttpServer::Implementation::ServeOne(ConnectionStream& stream) {
  Ongoing ongoing(stream);
  const Ends ends{stream.remoteAddress(), stream.remotePort(), stream.localAddress()};
  ongoing.exchange.start = std::chrono::system_clock::now();
  ongoing.exchange.remotePort = stream.remotePort();
  ongoing.head = stream.BeginExchange();
  Remember(ongoing);
  {
    const std::lock_guard lock(mutex_);
    ongoing_[ends] = &ongoing;
  }
  const auto begin = std::chrono::steady_clock::now();
  bool closedByClient = false;
  const bool served = process_request(stream, false, closedByClient,
                                      [&](httplib::Request& request) { PrepareRequest(request, ongoing); });
  // An answer without a body has only its head. One that breaks off gives its head away with what it had.
  const bool flushed = stream.aborted() || stream.Flush();
  const bool lost = ongoing.exchange.method.empty();
  if (stream.readAny()) Finish(ongoing, std::chrono::steady_clock::now() - begin);
  const std::lock_guard lock(mutex_);
  ongoing_.erase(ends);
  return served && flushed && !closedByClient && !lost && !ongoing.closeAfter;
}

void HttpServer::Implementation::Remember(Ongoing& ongoing) {
  if (door_ == Door::Admin) return;
  RememberedRequest request;
  request.door = WordOf(door_);
  request.client = ongoing.stream.remoteAddress() + ":" + std::to_string(ongoing.stream.remotePort());
  request.connection = ongoing.stream.number();
  request.method = ongoing.head.method;
  request.target = ShownTarget(ongoing.head.target);
  request.start = ongoing.exchange.start;
  for (const auto& [name, value] : ongoing.head.headers)
    request.headers.emplace_back(name, ShownHeader(name, value));
  ongoing.remembered = simulator_.history().Begin(std::move(request));
}

void HttpServer::Implementation::Finish(Ongoing& ongoing, std::chrono::steady_clock::duration duration) {
  if (door_ == Door::Admin) return;
  Exchange& exchange = ongoing.exchange;
  exchange.duration = std::chrono::duration_cast<std::chrono::microseconds>(duration);
  exchange.status = ongoing.stream.status();
  exchange.bodyBytes = ongoing.stream.bodyBytes();
  simulator_.history().Finish(ongoing.remembered, exchange, ongoing.fault);
  log_.Write(exchange);
}

/// Answers a head that is not served.
void HttpServer::Implementation::Refuse(ConnectionStream& stream, int status) {
  SendRefusal(stream, status);
  if (door_ == Door::Admin) return;
  Exchange exchange;
  exchange.start = std::chrono::system_clock::now();
  exchange.remotePort = stream.remotePort();
  exchange.status = stream.status();
  exchange.bodyBytes = stream.bodyBytes();
  log_.Write(exchange);
}

/// Runs when the head of a request has been read and before anything is done with it.
void HttpServer::Implementation::PrepareRequest(httplib::Request& request, Ongoing& ongoing) {
  ongoing.stream.EndOfHead();
  ongoing.exchange.method = request.method;
  ongoing.exchange.target = ShownTarget(request.target);
  ongoing.exchange.user =
      simulator_.UserOf({request.method, request.target, ongoing.head.Header("Authorization")});
  if (!TakesBody(request.method)) {
    // The HTTP library leaves such a body unread, and it would be taken for the next request.
    if (HasBody(request)) ongoing.closeAfter = true;
  } else {
    const bool chunked = request.has_header("Transfer-Encoding");
    if (chunked && request.has_header("Content-Length")) ongoing.closeAfter = true;
    // Without either header the HTTP library would read until the client closes.
    if (!chunked && !request.has_header("Content-Length")) request.set_header("Content-Length", "0");
    HideMultipartType(request);
  }
  if (ongoing.closeAfter) {
    request.headers.erase("Connection");
    request.set_header("Connection", "close");
  }
}

void HttpServer::Implementation::AnswerWithBody(const httplib::Request& request, httplib::Response& response,
                                                const httplib::ContentReader& reader) {
  const std::uint64_t limit =
      door_ == Door::Admin
          ? mostBodyInMemory
          : std::min(simulator_.options().maxUploadBytes.value_or(mostBodyInMemory), mostBodyInMemory);
  std::string body;
  BodyMemory::Share share(&bodies_, request.remote_addr);
  const BodyOutcome outcome = ReadBody(reader, limit, response.status, [&](std::string_view piece) {
    if (!share.Grow(piece.size())) return false;
    body.append(piece);
    return true;
  });
  if (RefuseBody(request, response, outcome)) return;
  if (const Ongoing* ongoing = Find(request); ongoing != nullptr && door_ != Door::Admin) {
    simulator_.history().ShowBody(ongoing->remembered, request.get_header_value("Content-Type"), body);
  }
  Answer(request, response, [&](vantry_sim::Request& own) {
    own.body = std::move(body);
    return door_ == Door::Admin ? admin_->Handle(own) : simulator_.Handle(own);
  });
}

/// The bytes of an upload go to the disk while they come. They become the server's when the answer is made,
/// and so a fault in its place leaves none of them.
void HttpServer::Implementation::AnswerUpload(const httplib::Request& request, httplib::Response& response,
                                              const httplib::ContentReader& reader) {
  const Ongoing* ongoing = Find(request);
  if (ongoing == nullptr) return;
  vantry_sim::Request own = OwnRequest(request, ongoing->head, ongoing->exchange.user);
  vantry_sim::Response refusal;
  const auto upload = simulator_.BeginUpload(own, refusal);
  const std::uint64_t limit =
      simulator_.options().maxUploadBytes.value_or(std::numeric_limits<std::uint64_t>::max());
  std::uint64_t size = 0;
  // What was refused is still read: a client that sends listens only when it has sent all.
  const BodyOutcome outcome = ReadBody(reader, limit, response.status, [&](std::string_view piece) {
    size += piece.size();
    if (upload) upload->Receive(piece);
    return true;
  });
  simulator_.history().SetBody(ongoing->remembered, {}, size);
  if (RefuseBody(request, response, outcome)) return;
  Answer(request, response, [&](vantry_sim::Request&) {
    return upload ? simulator_.FinishUpload(*upload, own) : std::move(refusal);
  });
}

/// Answers for a body that wasn't read whole. @return false for one that was
bool HttpServer::Implementation::RefuseBody(const httplib::Request& request, httplib::Response& response,
                                            const BodyOutcome& outcome) {
  if (outcome.complete && !outcome.tooLarge) return false;
  if (Ongoing* ongoing = Find(request); ongoing != nullptr && !outcome.atItsEnd) {
    ongoing->closeAfter = true;
    response.set_header("Connection", "close");
  }
  vantry_sim::Response refusal =
      outcome.tooLarge ? ErrorResponse(413, "too-large", "the body is longer than this server takes")
                       : ErrorResponse(400, "broken-body", "the body ended before its announced end");
  if (outcome.noRoom)
    refusal =
        ErrorResponse(503, "no-room", "the bodies that come now are as long as this server takes together");
  response.status = refusal.status;
  response.set_content(refusal.body, refusal.contentType);
  return true;
}

void HttpServer::Implementation::Answer(const httplib::Request& request, httplib::Response& response,
                                        const Produce& produce) {
  Ongoing* ongoing = Find(request);
  if (ongoing == nullptr) {
    response.status = 500;
    return;
  }
  if (door_ == Door::Admin) {
    vantry_sim::Request own = OwnRequest(request, ongoing->head, ongoing->exchange.user);
    Fill(response, produce(own), *ongoing, std::nullopt);
    return;
  }
  const auto fault = simulator_.faults().Take(request.method, request.target);
  if (fault) ongoing->fault = fault->rule;
  const std::chrono::milliseconds latency(simulator_.options().latencyMilliseconds);
  if (latency.count() > 0 && !stop_.Sleep(latency)) ongoing->closeAfter = true;
  if (fault && MetByFault(request, response, *ongoing, fault->action)) return;

  if (!TakesBody(request.method) && HasBody(request)) {
    Fill(response, ErrorResponse(400, "unexpected-body", "a request of this method carries no body"),
         *ongoing, std::nullopt);
    return;
  }
  vantry_sim::Request own = OwnRequest(request, ongoing->head, ongoing->exchange.user);
  if (fault && fault->action.kind == Kind::ExpireSession) simulator_.ExpireSession(own);
  vantry_sim::Response answer = produce(own);
  if (fault && fault->action.kind == Kind::LostAnswer) {
    ongoing->stream.Abort();
    return;
  }
  ApplyRange(own, answer);
  Fill(response, answer, *ongoing, fault ? std::optional(fault->action) : std::nullopt);
}

/// Does what a fault does before a request is carried out. @return whether nothing else is to be done
bool HttpServer::Implementation::MetByFault(const httplib::Request& request, httplib::Response& response,
                                            Ongoing& ongoing, const FaultAction& fault) {
  static_cast<void>(request);
  switch (fault.kind) {
    case Kind::Status:
    case Kind::Busy:
    case Kind::Redirect:
      Fill(response, FaultAnswer(fault), ongoing, std::nullopt);
      return true;
    case Kind::Stall:
      if (fault.amount) return false;
      ongoing.stream.WaitForClose();
      ongoing.stream.Abort();
      return true;
    case Kind::Drop:
      ongoing.stream.Abort();
      return true;
    case Kind::Delay:
      if (!stop_.Sleep(std::chrono::milliseconds(fault.amount.value_or(0)))) ongoing.closeAfter = true;
      return false;
    default:
      return false;
  }
}

/// @param fault what happens to the body, or nothing
void HttpServer::Implementation::Fill(httplib::Response& out, const Response& answer, Ongoing& ongoing,
                                      const std::optional<FaultAction>& fault) {
  out.status = answer.status;
  for (const auto& [name, value] : answer.headers) out.set_header(name, value);
  if (SetBody(out, answer, {ongoing.stream, stop_}, fault)) return;
  std::fprintf(stderr, "vantry-sim: cannot read %s\n", answer.file->path.c_str());
  Fill(out, ErrorResponse(500, "internal", "the server has lost these bytes"), ongoing, std::nullopt);
}

HttpServer::Implementation::Ongoing* HttpServer::Implementation::Find(const httplib::Request& request) {
  const std::lock_guard lock(mutex_);
  const auto found = ongoing_.find({request.remote_addr, request.remote_port, request.local_addr});
  return found == ongoing_.end() ? nullptr : found->second;
}

HttpServer::HttpServer(const ServerParts& parts, Door door)
    : implementation_(std::make_unique<Implementation>(parts, door)),
      tls_(door == Door::Admin ? nullptr : parts.tls) {}

HttpServer::~HttpServer() = default;

bool HttpServer::Serve(ConnectionStream& stream) {
  return implementation_->ServeOne(stream);
}

void HttpServer::Refuse(ConnectionStream& stream, int status) {
  implementation_->Refuse(stream, status);
}

std::unique_ptr<Transport> HttpServer::Carry(int socket) {
  return tls_ == nullptr ? MakePlainTransport(socket) : tls_->Carry(socket);
}

}  // namespace vantry_sim
