#include <gmock/gmock.h>

#include <optional>

#include "tests/e2e/cli/vtdirect_fixture.h"
#include "tests/e2e/platform/scripted_server.h"
#include "tests/e2e/servers/server_program.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace vtdirect_test {

constexpr const char* cutConfiguration = R"(
daemon off;
master_process off;
pid @HOME@/nginx.pid;
events {}
http {
  client_body_temp_path @HOME@/client_body;
  proxy_temp_path @HOME@/proxy;
  fastcgi_temp_path @HOME@/fastcgi;
  uwsgi_temp_path @HOME@/uwsgi;
  scgi_temp_path @HOME@/scgi;
  log_format told '$request_method $status $sent_http_content_length $sent_http_transfer_encoding';
  access_log off;
  server {
    listen 127.0.0.1:@PORT@;
    location / { proxy_pass http://@SIMULATOR@; }
    location ~ /content/streams/ {
      access_log @HOME@/contents.log told;
      proxy_pass http://@BACKEND@;
    }
  }
}
)";

/// nginx in front of a server that dies while it sends the content of a document: 50,000 of 200,000 bytes.
class DyingBehindNginx : public VtDirect {
 protected:
  void SetUp() override {
    program_ = FindProgram("nginx");
    if (program_.empty()) GTEST_SKIP() << "nginx is missing (Debian package nginx-light)";
    const std::string url = "http://127.0.0.1:" + std::to_string(port_);
    Serve({"--codebase-url", url});
    WriteHome(".config/vtdirect/config", "[servers]\nfront = " + url + "/\n", 0600);
  }

  /// Starts nginx before a back end that answers for contents with these lines and so many bytes, and then
  /// closes.
  void Start(const std::string& lines, std::size_t bytes = 50'000) {
    backend_ = std::make_unique<ScriptedServer>([lines, bytes](Peer& peer, WireRequest&) {
      peer.Send("HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n" + lines + "\r\n" +
                std::string(bytes, 'c'));
      peer.Close();
    });
    const std::string home = nginxHome_.path();
    WriteFile(home + "/nginx.conf",
              Filled(cutConfiguration, {{"HOME", home},
                                        {"PORT", std::to_string(port_)},
                                        {"SIMULATOR", server().authority()},
                                        {"BACKEND", "127.0.0.1:" + std::to_string(backend_->port())}}));
    nginx_.emplace(
        std::vector<std::string>{program_, "-p", home, "-c", home + "/nginx.conf", "-e", home + "/nginx.log"},
        port_, home + "/nginx.log");
  }

  /// Stores a file of 200,000 bytes, and fetches it in place of an old one.
  ProcessResult StoreAndFetch() {
    WriteFile(Here("large.lxz"), std::string(200'000, 'c'));
    const ProcessResult stored = Run({"put", "large.lxz", largeAddress, "--checkin"});
    EXPECT_EQ(stored.status, 0) << stored.err;
    WriteFile(Here("large.lxz"), "old");
    return Run({"get", "--force", largeAddress, "-o", "large.lxz"});
  }
  void ExpectOldFileKept(const ProcessResult& result) {
    EXPECT_EQ(result.status, 7) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr(largeAddress));
    EXPECT_EQ(ReadFile(Here("large.lxz")), "old");
    EXPECT_THAT(HereNames(), ElementsAre("large.lxz"));
  }

  static constexpr const char* largeAddress = "//front/Products/Trekking Bike/Folders/Frame/large.lxz";
  const int port_ = UnusedPort();
  std::string program_;
  TemporaryDirectory nginxHome_;
  std::unique_ptr<ScriptedServer> backend_;
  std::optional<ServerProgram> nginx_;
};

TEST_F(DyingBehindNginx, WithoutALengthLooksWholeAndIsFoundOutByTheRecord) {
  Start("");
  ExpectOldFileKept(StoreAndFetch());
  // nginx takes the end of the connection for the end of the content, and sends its last chunk.
  EXPECT_THAT(LinesOf(nginxHome_.File("contents.log"), 1), ElementsAre("GET 200 - chunked"));
}

TEST_F(DyingBehindNginx, WithALengthBreaksOff) {
  Start("Content-Length: 200000\r\n");
  ExpectOldFileKept(StoreAndFetch());
  EXPECT_THAT(LinesOf(nginxHome_.File("contents.log"), 1), ElementsAre("GET 200 200000 -"));
}

TEST_F(DyingBehindNginx, AfterTheLastByteHasGivenAll) {
  Start("", 200'000);
  const ProcessResult result = StoreAndFetch();
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(ReadFile(Here("large.lxz")), std::string(200'000, 'c'));
}

}  // namespace vtdirect_test
