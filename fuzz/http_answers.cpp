// What a server sends, byte by byte as curl and the transport above it read it: status lines, header lines, framing,
// compression, redirects and demands for authentication. An input that begins with "P" is asked with a body.
//
// A redirect may name any host. All requests go through the server itself as their proxy, so none leaves the machine.
#include <string>

#include "fuzz/support/byte_server.h"
#include "fuzz/support/input.h"
#include "fuzz/support/loopback_server.h"
#include "platform/http.h"
#include "platform/http_credentials.h"
#include "platform/http_settings.h"

using namespace du::http;
using vtdirect_fuzz::Require;

namespace {

class TextSource final : public FileSource {
 public:
  explicit TextSource(std::string_view text) : text_(text), rest_(text) {}
  std::optional<std::uint64_t> Size() override { return text_.size(); }
  ErrorCode Read(std::uint8_t* buffer, std::size_t capacity, std::size_t* count) override {
    *count = rest_.copy(reinterpret_cast<char*>(buffer), capacity);
    rest_.remove_prefix(*count);
    return ErrorCode::Done;
  }
  bool Rewind() override {
    rest_ = text_;
    return true;
  }

 private:
  std::string_view text_;
  std::string_view rest_;
};

/// Sees that the calls come in their order.
class OrderedSink final : public FileSink {
 public:
  int begun = 0;
  int finished = 0;
  std::size_t bytes = 0;
  ErrorCode Begin(int status, std::optional<std::uint64_t>) override {
    Require(++begun == 1 && status >= 100 && status <= 999);
    return ErrorCode::Done;
  }
  ErrorCode Write(const std::uint8_t*, std::size_t count) override {
    Require(begun == 1 && finished == 0);
    bytes += count;
    return bytes > (1U << 22) ? ErrorCode::LocalFileFailure : ErrorCode::Done;
  }
  ErrorCode Finish() override {
    Require(begun == 1 && ++finished == 1);
    return ErrorCode::Done;
  }
};

vtdirect_fuzz::LoopbackServer& Server() {
  static vtdirect_fuzz::LoopbackServer server;
  return server;
}

void SetUpTransport() {
  TransportSettings settings;
  settings.proxy = Server().Url();
  settings.connectTimeoutMilliseconds = 2000;
  settings.stallTimeoutSeconds = settings.firstByteTimeoutSeconds =
      settings.firstByteAfterBodyTimeoutSeconds = 2;
  settings.idleConnections = 0;
  SetTransportSettings(settings);
  SetPasswordCredentials("http://plm.example/", "anna", "secret");
}

std::vector<std::string> AnswersOf(std::string_view bytes) {
  std::vector<std::string> answers;
  while (!bytes.empty()) answers.emplace_back(vtdirect_fuzz::TakePart(bytes, vtdirect_fuzz::answerEnd));
  return answers;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool isSetUp = (SetUpTransport(), true);
  (void)isSetUp;
  std::string_view bytes = vtdirect_fuzz::TextOf(data, size);
  const bool posts = bytes.starts_with('P');
  if (posts) bytes.remove_prefix(1);
  Server().Answer(AnswersOf(bytes));
  TextSource headers("Accept: application/json\r\nX-Client: fuzz");
  TextSource body("{}");
  OrderedSink sink;
  const Request request{
      posts ? Method::Post : Method::Get, "/vt/servlet", &headers, posts ? &body : nullptr, nullptr, &sink};
  const CommonAuth auth{"X-Mark: client", [] { return false; }};
  const auto connection = ConnectURI("http://plm.example/vt/", nullptr, nullptr);
  int status = 0;
  const ErrorCode result = DoRequestWithCommonAuth(*connection, auth, request, &status);
  if (result == ErrorCode::Done) Require(status >= 200 && sink.begun == 1 && sink.finished == 1);
  return 0;
}
