// The exchange: one request on a socket of its own, by HTTP/1.0, whose answers end with the connection.
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vtdirect/platform/http.h>
#include <vtdirect/platform/uri.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace du::http {
namespace {

constexpr std::size_t mostHeadBytes = 64 * 1024;
constexpr std::size_t mostHeaderLinesBytes = 16 * 1024;

struct PlainConnection final : Connection {
  std::string host;
  std::string port;
};

// A connected socket that closes itself.
class Socket {
 public:
  explicit Socket(const PlainConnection& to) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(to.host.c_str(), to.port.c_str(), &hints, &found) != 0) return;
    for (const addrinfo* each = found; each != nullptr && descriptor_ < 0; each = each->ai_next) Try(*each);
    freeaddrinfo(found);
  }
  ~Socket() { Close(); }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  bool Connected() const { return descriptor_ >= 0; }

  ErrorCode Send(const void* data, std::size_t size) {
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
      const ssize_t sent = send(descriptor_, next, size, MSG_NOSIGNAL);
      if (sent < 0) return Failure();
      next += sent;
      size -= static_cast<std::size_t>(sent);
    }
    return ErrorCode::Done;
  }

  // Sets `*count` to 0 at the end of the answer.
  ErrorCode Receive(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) {
    const ssize_t received = recv(descriptor_, buffer, capacity, 0);
    if (received < 0) return Failure();
    *count = static_cast<std::size_t>(received);
    return ErrorCode::Done;
  }

 private:
  // No exchange may wait for ever: both limits end a server that has gone silent.
  void Try(const addrinfo& address) {
    descriptor_ = socket(address.ai_family, address.ai_socktype | SOCK_CLOEXEC, address.ai_protocol);
    if (descriptor_ < 0) return;
    const timeval limit{60, 0};
    setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(descriptor_, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    if (connect(descriptor_, address.ai_addr, address.ai_addrlen) != 0) Close();
  }
  void Close() {
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
  }
  static ErrorCode Failure() {
    return errno == EAGAIN || errno == EWOULDBLOCK ? ErrorCode::TimedOut : ErrorCode::ProtocolFailure;
  }
  int descriptor_ = -1;
};

// Makes a target fit for the request line: the library hands over search filters with blanks in them.
std::string Target(std::string_view uri) {
  std::string target = uri.substr(0, 1) == "/" ? "" : "/";
  for (const char byte : uri) {
    const auto value = static_cast<unsigned char>(byte);
    if (value > 0x20 && value < 0x7f) {
      target += byte;
    } else {
      std::array<char, 4> escaped{};
      std::snprintf(escaped.data(), escaped.size(), "%%%02X", value);
      target += escaped.data();
    }
  }
  return target;
}

// Reads the extra header lines. Parts of them come from servers: a byte that could end a line early is
// refused.
ErrorCode ReadLines(FileSource& source, std::string* lines) {
  std::array<std::uint8_t, 4096> buffer{};
  for (std::size_t count = 1; count > 0;) {
    const ErrorCode code = source.Read(buffer.data(), buffer.size(), &count);
    if (code != ErrorCode::Done) return code;
    lines->append(reinterpret_cast<const char*>(buffer.data()), count);
    if (lines->size() > mostHeaderLinesBytes) return ErrorCode::ProtocolFailure;
  }
  for (std::size_t at = 0; at < lines->size(); ++at) {
    const bool lineEnd = lines->compare(at, 2, "\r\n") == 0;
    if (lineEnd) ++at;
    if (!lineEnd && static_cast<unsigned char>((*lines)[at]) < 0x20) return ErrorCode::ProtocolFailure;
  }
  return ErrorCode::Done;
}

ErrorCode ComposeHead(const PlainConnection& to, const CommonAuth& auth, const Request& request,
                      std::string* head) {
  const char* method = request.method == Method::Get    ? "GET"
                       : request.method == Method::Post ? "POST"
                                                        : "PATCH";
  *head = std::string(method) + ' ' + Target(request.uri) + " HTTP/1.0\r\nHost: " + to.host + ':' + to.port +
          "\r\n";
  if (auth.header != nullptr) *head += std::string(auth.header) + "\r\n";
  std::string lines;
  const ErrorCode code = ReadLines(*request.headers, &lines);
  if (code != ErrorCode::Done) return code;
  if (!lines.empty()) *head += lines + "\r\n";
  if (request.body != nullptr && request.method != Method::Get) {
    const std::optional<std::uint64_t> size = request.body->Size();
    if (!size) return ErrorCode::LocalFileFailure;
    *head += "Content-Length: " + std::to_string(*size) + "\r\n";
  }
  *head += "\r\n";
  return ErrorCode::Done;
}

ErrorCode SendBody(Socket& socket, FileSource& body) {
  std::array<std::uint8_t, 64 * 1024> buffer{};
  for (;;) {
    std::size_t count = 0;
    ErrorCode code = body.Read(buffer.data(), buffer.size(), &count);
    if (code != ErrorCode::Done || count == 0) return code;
    code = socket.Send(buffer.data(), count);
    if (code != ErrorCode::Done) return code;
  }
}

// What an answer tells before its body.
struct AnswerHead {
  int status = 0;
  std::optional<std::uint64_t> length;
  std::string bodyBegin;  // what came with the head
};

// The value of a header line, without regard to case; empty when it is not there.
std::string HeaderValue(const std::string& head, std::string_view name) {
  for (std::size_t line = head.find("\r\n"); line != std::string::npos; line = head.find("\r\n", line + 2)) {
    const std::string_view text = std::string_view(head).substr(line + 2, name.size() + 1);
    const bool same =
        text.size() == name.size() + 1 && text.back() == ':' &&
        std::equal(name.begin(), name.end(), text.begin(),
                   [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
    if (!same) continue;
    const std::size_t begin = head.find_first_not_of(" \t", line + 3 + name.size());
    const std::size_t end = std::min(head.find("\r\n", line + 2), head.size());
    return begin < end ? head.substr(begin, end - begin) : std::string();
  }
  return {};
}

ErrorCode ReceiveHead(Socket& socket, AnswerHead* answer) {
  std::string head;
  std::size_t end = std::string::npos;
  std::array<std::uint8_t, 4096> buffer{};
  while ((end = head.find("\r\n\r\n")) == std::string::npos) {
    std::size_t count = 0;
    const ErrorCode code = socket.Receive(buffer.data(), buffer.size(), &count);
    if (code != ErrorCode::Done) return code;
    if (count == 0 || head.size() > mostHeadBytes) return ErrorCode::ProtocolFailure;
    head.append(reinterpret_cast<const char*>(buffer.data()), count);
  }
  answer->bodyBegin = head.substr(end + 4);
  head.resize(end);
  if (head.compare(0, 7, "HTTP/1.") != 0 || head.size() < 12) return ErrorCode::ProtocolFailure;
  answer->status = std::atoi(head.c_str() + 9);
  // A server must not send pieces to a client of HTTP/1.0; one that does is not understood here.
  if (answer->status < 200 || !HeaderValue(head, "Transfer-Encoding").empty())
    return ErrorCode::ProtocolFailure;
  const std::string length = HeaderValue(head, "Content-Length");
  if (!length.empty()) answer->length = std::strtoull(length.c_str(), nullptr, 10);
  return ErrorCode::Done;
}

ErrorCode ReceiveBody(Socket& socket, const AnswerHead& answer, FileSink& sink) {
  ErrorCode code = sink.Begin(answer.status, answer.length);
  if (code != ErrorCode::Done) return code;
  std::uint64_t received = answer.bodyBegin.size();
  code = sink.Write(reinterpret_cast<const std::uint8_t*>(answer.bodyBegin.data()), answer.bodyBegin.size());
  std::array<std::uint8_t, 64 * 1024> buffer{};
  while (code == ErrorCode::Done && (!answer.length || received < *answer.length)) {
    std::size_t count = 0;
    code = socket.Receive(buffer.data(), buffer.size(), &count);
    if (code != ErrorCode::Done || count == 0) break;
    received += count;
    code = sink.Write(buffer.data(), count);
  }
  if (code != ErrorCode::Done) return code;
  if (answer.length && received != *answer.length) return ErrorCode::ProtocolFailure;
  return sink.Finish();
}

}  // namespace

Connection::~Connection() = default;

std::unique_ptr<Connection> ConnectURI(const char* uri, const char*, const char*) {
  const std::string text = uri;
  if (GetURIPart(text, URIPart::Scheme) != "http" || GetURIPart(text, URIPart::Host).empty()) return nullptr;
  auto connection = std::make_unique<PlainConnection>();
  connection->host = GetURIPart(text, URIPart::Host);
  connection->port = GetURIPart(text, URIPart::Port);
  if (connection->port.empty()) connection->port = "80";
  return connection;
}

ErrorCode DoRequestWithCommonAuth(Connection& connection, const CommonAuth& auth, const Request& request,
                                  int* httpStatus) {
  const auto& to = static_cast<const PlainConnection&>(connection);
  std::string head;
  ErrorCode code = ComposeHead(to, auth, request, &head);
  if (code != ErrorCode::Done) return code;

  Socket socket(to);
  if (!socket.Connected()) return ErrorCode::NoConnection;
  code = socket.Send(head.data(), head.size());
  const bool sendsBody = request.body != nullptr && request.method != Method::Get;
  if (code == ErrorCode::Done && sendsBody) code = SendBody(socket, *request.body);
  if (code != ErrorCode::Done) return code;

  AnswerHead answer;
  code = ReceiveHead(socket, &answer);
  if (code == ErrorCode::Done) code = ReceiveBody(socket, answer, *request.sink);
  if (code != ErrorCode::Done) return code;
  if (httpStatus != nullptr) *httpStatus = answer.status;
  return sendsBody && answer.status == 413 ? ErrorCode::TooLarge : ErrorCode::Done;
}

}  // namespace du::http
