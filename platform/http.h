#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "export.h"
#include "failure_detail.h"

/// The HTTP part of the platform: one call performs one exchange, and small sources and sinks carry the
/// bytes.
///
/// Threads: everything may be called from any thread at any time, also on one Connection by several threads
/// at once, and also from inside a source, a sink, a progress function or an authentication callback, for the
/// same server too. Each exchange runs on its caller's thread and blocks it; its sources, sinks and callbacks
/// are used on that thread alone. No lock is held while a request is under way or a host's code runs.
///
/// A Connection is an origin (scheme, host, port), and no socket. The default platform keeps the TCP
/// connections to an origin for all that speak to it, and all of them share its cookies and its login
/// (http_credentials.h). Threads wait for each other in two cases, and never inside a callback:
///   - The first request to an origin, and the first after its credentials or the trust have changed, goes
///     alone until the head of its answer is there, so that all share the session that it is given. When it
///     ends without an answer, the next one goes first. Nobody waits longer for it than it may take: the
///     connect limit and the limit of the first byte (http_settings.h); after that they go ahead.
///   - Of more exchanges with an origin than `exchangesAtOnce`, the later ones wait for a place, in the order
///     in which they came and without a limit: each that has a place moves bytes or is ended by a limit.
/// So a callback must not wait for a call to the same origin that another thread is making.
namespace du::http {

/// How an exchange ended. An HTTP 404 or 500 is a delivered answer and not a failed exchange: it comes with
/// `Done` and its status. Every other value means that there is no usable answer.
enum class ErrorCode : std::int32_t {
  Done = 0,
  NoConnection = 1,  ///< host unknown, port refused, or no connection could be set up
  /// A limit ran out: of the connecting, of the wait for an answer, or of a stall. Only while connecting
  /// nothing was sent. After that a POST or PATCH may have been carried out: see DoRequestWithCommonAuth.
  TimedOut = 2,
  Cancelled = 3,         ///< a progress function gave false
  TlsFailure = 4,        ///< the handshake failed or the certificate did not verify
  TooLarge = 5,          ///< the server refused a request body as too large (HTTP 413)
  LocalFileFailure = 6,  ///< a source could not be read, or a sink could not be written
  /// The answer broke off, was cut short or was no HTTP, or there was none. A POST or PATCH may have been
  /// carried out.
  ProtocolFailure = 7,
};

/// Method codes of a Request.
enum class Method : std::int32_t { Get = 0, Post = 2, Patch = 5 };

/// A platform's connection to one server. Opaque: the library holds it, hands it back and deletes it. Any
/// number of exchanges may run on one at the same time.
class VTDIRECT_API Connection {
 public:
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  virtual ~Connection();
};

/// Where the bytes of a request come from.
///
/// The transport may read a source more than once: a request that is sent again after a demand for
/// authentication rewinds its body first.
class VTDIRECT_API FileSource {
 public:
  FileSource() = default;
  FileSource(const FileSource&) = delete;
  FileSource& operator=(const FileSource&) = delete;
  virtual ~FileSource();

  /// The number of bytes from the start to the end, or nothing when it is not known.
  [[nodiscard]] virtual std::optional<std::uint64_t> Size() = 0;

  /// Copies the next bytes to `buffer`, at most `capacity`, and sets `*count` to their number; 0 is the end.
  /// Anything but `Done` ends the exchange with that code.
  [[nodiscard]] virtual ErrorCode Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) = 0;

  /// Goes back to the first byte. False when that is impossible, which ends the exchange.
  [[nodiscard]] virtual bool Rewind() = 0;
};

/// Where the bytes of a response go.
///
/// The calls come in the order Begin, any number of Write, Finish. An exchange that fails after Begin ends
/// without Finish. A sink may refuse at each step, which ends the exchange with the code that it gives.
class VTDIRECT_API FileSink {
 public:
  FileSink() = default;
  FileSink(const FileSink&) = delete;
  FileSink& operator=(const FileSink&) = delete;
  virtual ~FileSink();

  /// Told once, before the first byte: the HTTP status and the announced length of the body, if there is one.
  [[nodiscard]] virtual ErrorCode Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) = 0;

  /// Takes the next `count` bytes of the body.
  [[nodiscard]] virtual ErrorCode Write(const std::uint8_t* data, std::size_t count) = 0;

  /// Told once, after the last byte of a complete body. Errors that only show when a file is flushed or
  /// closed are reported here.
  [[nodiscard]] virtual ErrorCode Finish() = 0;
};

/// One exchange. Filled by the caller on its stack; owns nothing and lives for the call only.
struct Request {
  /// What the server is asked to do.
  Method method = Method::Get;
  /// Absolute path and query on the connection's host, escaped by the caller. It may hold bytes that cannot
  /// be on a request line (a search filter's blanks) and may lack the leading "/": the transport makes it
  /// fit for the wire, and changes nothing that already is.
  const char* uri = nullptr;
  /// The extra header lines, joined by CR LF, with none after the last. Always set; may be empty. Parts of
  /// them come from servers: when a line is no header line (no ":", a name that is no token, a control byte)
  /// or is one that frames the message ("Content-Length", "Host" ...), nothing is sent.
  FileSource* headers = nullptr;
  /// The body, or null for a request without one. Without effect on a GET.
  FileSource* body = nullptr;
  /// Kept for the record's layout; every caller leaves it null.
  FileSink* secondSink = nullptr;
  /// Receives the body of the response.
  FileSink* sink = nullptr;
};

/// How the platform is to authenticate. Built for each request; the platform only reads it.
struct CommonAuth {
  /// One extra header line that marks this client to the server.
  const char* header = nullptr;
  /// Called when the server demands authentication. True: try again with the credentials that are set now.
  /// False: report the server's answer as it is.
  std::function<bool()> reauthenticate;
  /// Told at most once, on the request's thread and before its end, what the exchange failed on, where more
  /// is known than the error code; and of an answer whose status or coding speaks of something between here
  /// and the server. May be empty. A platform that knows no more leaves it alone.
  std::function<void(const FailureReport&)> explain = {};
};

/// Makes a connection for a server URL. Makes no request and opens no socket.
/// @param uri     URL of the server, "http" or "https". Only its scheme, host and port count; user name and
///                password in it are passed over (see http_credentials.h).
/// @param second  always null
/// @param third   always null
/// @return empty when the URL cannot be used
VTDIRECT_API std::unique_ptr<Connection> ConnectURI(const char* uri, const char* second, const char* third);

/// Performs one exchange and blocks until it is over.
///
/// Sends the line of `auth` and the lines of `request.headers`, streams the body out and the response into
/// the sink. Authentication happens inside this call: on HTTP 401 `auth.reauthenticate` is asked, a bounded
/// number of times, and the body is rewound for each further try. A refused answer's body reaches the sink
/// only when no further try follows. No exchange waits for ever: limits on connecting, on the first byte of
/// the answer and on a stall end it (http_settings.h). After a connect limit ran out, further exchanges that
/// need a new connection to that origin fail with `TimedOut` at once for 5 seconds. That is forgotten when
/// the origin answers, and when the limit, its credentials or the trust change.
///
/// A GET follows redirects, but never out of https. To another origin it goes without credentials, without
/// the cookies that this process has there, and without the caller's lines other than "Accept". Cookies of the
/// first session go along if they belong to that host or domain, but never to another port of the host that
/// set them.
/// A redirect that isn't followed is reported as an answer. A body is never redirected. It is sent a second
/// time only when the server demands authentication.
///
/// A kept connection that the server has closed meanwhile costs a GET nothing: it is sent again over a new
/// one. A POST or PATCH of which one byte went out is never sent again. When it ends with `TimedOut`,
/// `ProtocolFailure` or `Cancelled`, the server may have carried it out or not, and nothing here can tell
/// which: before it is tried again, ask the server for what it would have changed.
///
/// What a source, a sink or the callback throws passes through; the connection stays usable.
/// @param httpStatus  receives the HTTP status when the result is `Done`; left alone otherwise, except that a
///                    body above the server's limit also sets it to 413. What that answer says reaches the
///                    sink as far as it came. May be null.
/// @return `ProtocolFailure`, with nothing sent, also for an unfit header line or an unknown method
[[nodiscard]] VTDIRECT_API ErrorCode DoRequestWithCommonAuth(Connection& connection, const CommonAuth& auth,
                                                             const Request& request, int* httpStatus);

/// Serves bytes in place, without a copy. The buffer must stay valid for the life of the source.
class VTDIRECT_API BufferFileSource final : public FileSource {
 public:
  /// Takes the bytes; copies and owns nothing.
  BufferFileSource(const std::uint8_t* data, std::size_t size);
  std::optional<std::uint64_t> Size() override;
  ErrorCode Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) override;
  bool Rewind() override;

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t position_ = 0;
};

/// Serves the content of a file, which is opened when the source is first asked. A null or empty path is
/// harmless as long as the source is not read; a file that cannot be opened gives `LocalFileFailure`.
class VTDIRECT_API DiskFileSource final : public FileSource {
 public:
  /// Takes the path and opens nothing yet.
  explicit DiskFileSource(const char* path);
  ~DiskFileSource() override;
  std::optional<std::uint64_t> Size() override;
  ErrorCode Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) override;
  bool Rewind() override;

 private:
  [[nodiscard]] bool Open();
  std::string path_;
  int descriptor_ = -1;
};

/// Writes the response body to a file, replacing what was there. The file is opened when the response begins,
/// so an exchange without any answer leaves an existing file alone.
class VTDIRECT_API DiskFileSink final : public FileSink {
 public:
  /// Takes the path and opens nothing yet.
  explicit DiskFileSink(const char* path);
  ~DiskFileSink() override;
  ErrorCode Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) override;
  ErrorCode Write(const std::uint8_t* data, std::size_t count) override;
  ErrorCode Finish() override;

 private:
  std::string path_;
  int descriptor_ = -1;
};

/// Appends to a string until that holds `limit` bytes of this response, and drops the rest without failing.
class VTDIRECT_API StringFileSink final : public FileSink {
 public:
  /// The string belongs to the caller and must outlive the sink; `limit` is in bytes.
  StringFileSink(std::string& target, std::size_t limit);
  ErrorCode Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) override;
  ErrorCode Write(const std::uint8_t* data, std::size_t count) override;
  ErrorCode Finish() override;

 private:
  std::string& target_;
  std::size_t remaining_;
};

/// Keeps a body in memory while it fits within `memoryLimit` bytes; past that, moves it into a temporary file
/// of its own. The file outlives the sink: whoever asks for its path reads and deletes it. A sink whose path
/// nobody asked for removes its file itself. The file has a largest size and never takes the last of its file
/// system (http_settings.h): beyond that the exchange ends with `LocalFileFailure`.
class VTDIRECT_API FailoverFileSink final : public FileSink {
 public:
  /// @param memoryLimit  in bytes
  explicit FailoverFileSink(std::size_t memoryLimit);
  ~FailoverFileSink() override;
  ErrorCode Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) override;
  ErrorCode Write(const std::uint8_t* data, std::size_t count) override;
  ErrorCode Finish() override;

  /// Gives the memory content away; empty when the body went to a file.
  std::vector<std::uint8_t>&& AdoptBuffer();
  /// The path of the temporary file, or the empty text when the body stayed in memory. From this call on the
  /// file belongs to the caller.
  std::string GetFilePath();

 private:
  [[nodiscard]] ErrorCode OpenFile();
  [[nodiscard]] bool WriteBuffer();
  [[nodiscard]] bool WriteToFile(const std::uint8_t* data, std::size_t count);
  std::size_t memoryLimit_;
  std::vector<std::uint8_t> buffer_;
  std::string filePath_;
  std::uint64_t written_ = 0;
  int descriptor_ = -1;
  bool handedOut_ = false;
};

/// Chooses by the HTTP status to which of two sinks a body goes: 2xx to `onSuccess`, any other to
/// `onFailure`. The sink that was not chosen is told nothing.
class VTDIRECT_API HttpSuccessFileSink final : public FileSink {
 public:
  /// Both belong to the caller and must outlive this one.
  HttpSuccessFileSink(FileSink* onSuccess, FileSink* onFailure);
  ErrorCode Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) override;
  ErrorCode Write(const std::uint8_t* data, std::size_t count) override;
  ErrorCode Finish() override;

 private:
  FileSink* onSuccess_;
  FileSink* onFailure_;
  FileSink* chosen_ = nullptr;
};

/// A progress function: bytes so far, bytes in all (0 when unknown). A false result cancels the transfer.
using ProgressFunction = std::function<bool(std::size_t, std::size_t)>;

/// Passes all bytes on to another sink and reports as they go.
class VTDIRECT_API ProgressSink final : public FileSink {
 public:
  /// `next` belongs to the caller and must outlive this one; an empty `report` reports nothing.
  ProgressSink(ProgressFunction report, FileSink* next);
  ErrorCode Begin(int httpStatus, std::optional<std::uint64_t> expectedLength) override;
  ErrorCode Write(const std::uint8_t* data, std::size_t count) override;
  ErrorCode Finish() override;

 private:
  ProgressFunction report_;
  FileSink* next_;
  std::size_t done_ = 0;
  std::size_t total_ = 0;
};

/// Serves the bytes of another source and reports as they go.
class VTDIRECT_API ProgressSource final : public FileSource {
 public:
  /// `inner` belongs to the caller and must outlive this one; an empty `report` reports nothing.
  ProgressSource(FileSource& inner, ProgressFunction report);
  std::optional<std::uint64_t> Size() override;
  ErrorCode Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) override;
  bool Rewind() override;

 private:
  FileSource& inner_;
  ProgressFunction report_;
  std::size_t done_ = 0;
};

}  // namespace du::http
