#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/trace.h"
#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/platform/tls_server.h"
#include "tests/e2e/servers/server_program.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"
#include "tests/support/unused_port.h"

namespace {

using du::http::ErrorCode;
using du::http::FailureDetail;
using testing::ElementsAre;
using testing::HasSubstr;
using vtdirect_test::Asking;
using vtdirect_test::Fetch;
using vtdirect_test::Fetched;
using vtdirect_test::FetchFrom;

constexpr const char* configuration = R"(
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
  types { application/json json; application/octet-stream lxz; }
  log_format told '$request_method $uri $ssl_protocol $ssl_client_verify $sent_http_content_encoding $connection_requests';
  access_log @HOME@/access.log told;
  @MORE_SERVERS@
  server {
    listen 127.0.0.1:@PORT@ ssl;
    root @HOME@;
    ssl_certificate @HOME@/server.pem;
    ssl_certificate_key @HOME@/server.key;
    @TLS@
    @LINES@
  }
}
)";

/// nginx as it is in front of real installations, with TLS.
class Nginx : public testing::Test {
 protected:
  void SetUp() override {
    vtdirect_test::UseLongLimits();
    program_ = vtdirect_test::FindProgram("nginx");
    if (program_.empty()) GTEST_SKIP() << "nginx is missing (Debian package nginx-light)";
    if (!vtdirect_test::HaveOpenSsl())
      GTEST_SKIP() << "the openssl program, which makes certificates, is missing";
    vtdirect_test::Trust(vtdirect_test::MakeCertificate(directory_.path(), "server", "IP:127.0.0.1"));
    vtdirect_test::WriteFile(directory_.File("doc.json"), text_);
    vtdirect_test::WriteFile(directory_.File("content.lxz"), text_);
  }

  /// Starts it with these lines in its TLS server. It speaks TLS 1.3 unless they say otherwise.
  void Start(const std::string& lines, const std::string& moreServers = "") {
    const std::string& home = directory_.path();
    const std::string tls = lines.find("ssl_protocols") == std::string::npos ? "ssl_protocols TLSv1.3;" : "";
    vtdirect_test::WriteFile(home + "/nginx.conf",
                             vtdirect_test::Filled(configuration, {{"HOME", home},
                                                                   {"PORT", std::to_string(port_)},
                                                                   {"TLS", tls},
                                                                   {"LINES", lines},
                                                                   {"MORE_SERVERS", moreServers}}));
    nginx_.emplace(
        std::vector<std::string>{program_, "-p", home, "-c", home + "/nginx.conf", "-e", home + "/nginx.log"},
        port_, home + "/nginx.log");
  }
  [[nodiscard]] std::string Url() const { return "https://127.0.0.1:" + std::to_string(port_); }
  /// What it has noted of the requests: method, path, TLS, client's certificate, packing, how many requests
  /// the connection has had.
  [[nodiscard]] std::vector<std::string> Told(std::size_t count) const {
    return vtdirect_test::LinesOf(directory_.File("access.log"), count);
  }
  static Asking For(const std::string& uri, const std::string& lines = "") {
    Asking asking;
    asking.uri = uri;
    asking.headers = lines;
    return asking;
  }

  const std::string text_ = std::string(200'000, 'n') + "end";
  const int port_ = vtdirect_test::UnusedPort();
  vtdirect_test::TemporaryDirectory directory_;
  std::string program_;
  std::optional<vtdirect_test::ServerProgram> nginx_;
};

TEST_F(Nginx, ServesByTls12) {
  Start("ssl_protocols TLSv1.2;");
  EXPECT_TRUE(FetchFrom(Url(), For("/content.lxz")).body == text_);
  EXPECT_THAT(Told(1), ElementsAre("GET /content.lxz TLSv1.2 NONE - 1"));
}

TEST_F(Nginx, ServesByTls13OnOneConnection) {
  Start("ssl_protocols TLSv1.3;");
  EXPECT_TRUE(FetchFrom(Url(), For("/content.lxz")).body == text_);
  EXPECT_TRUE(FetchFrom(Url(), For("/doc.json")).body == text_);
  EXPECT_THAT(Told(2), ElementsAre("GET /content.lxz TLSv1.3 NONE - 1", "GET /doc.json TLSv1.3 NONE - 2"));
}

TEST_F(Nginx, PacksJsonAndNoContents) {
  Start("gzip on;\ngzip_types *;\ngzip_min_length 1;");
  const std::string acceptJson = "Accept: application/json";
  EXPECT_TRUE(FetchFrom(Url(), For("/doc.json", acceptJson)).body == text_);
  EXPECT_TRUE(FetchFrom(Url(), For("/content.lxz")).body == text_);
  EXPECT_THAT(Told(2), ElementsAre("GET /doc.json TLSv1.3 NONE gzip 1", "GET /content.lxz TLSv1.3 NONE - 2"));
}

TEST_F(Nginx, MayAllowOneRequestAConnection) {
  Start("keepalive_requests 1;\nlocation /write { return 200 written; }");
  const auto connection = vtdirect_test::Connect(Url());
  const std::string body(100'000, 'p');
  Asking post = For("/write");
  post.method = du::http::Method::Post;
  post.body = &body;
  for (int round = 0; round < 3; ++round) {
    EXPECT_TRUE(Fetch(*connection, For("/doc.json")).body == text_);
    EXPECT_EQ(Fetch(*connection, post).body, "written");
  }
  const std::string get = "GET /doc.json TLSv1.3 NONE - 1";
  const std::string posted = "POST /write TLSv1.3 NONE - 1";
  EXPECT_THAT(Told(6), testing::UnorderedElementsAre(get, posted, get, posted, get, posted));
}

TEST_F(Nginx, KnowsItsClientsByTheirCertificates) {
  const std::string client = vtdirect_test::MakeCertificate(directory_.path(), "client", "DNS:anna.example");
  const std::string locked = vtdirect_test::MakeLockedKey(directory_.path(), "client", "s3cret");
  const std::string pkcs12 = vtdirect_test::MakePkcs12(directory_.path(), "client", "s3cret");
  Start("ssl_client_certificate " + client + ";\nssl_verify_client on;");
  const auto passphrase = [](const std::string&) { return std::optional<std::string>("s3cret"); };
  du::http::SetClientCertificate(Url(), {client, locked, passphrase});
  EXPECT_TRUE(FetchFrom(Url(), For("/doc.json")).body == text_);
  du::http::SetClientCertificate(Url(), {pkcs12, "", passphrase});
  EXPECT_TRUE(FetchFrom(Url(), For("/doc.json")).body == text_);
  const std::string known = "GET /doc.json TLSv1.3 SUCCESS - 1";
  EXPECT_THAT(Told(2), ElementsAre(known, known));
}

TEST_F(Nginx, AnswersWithAPageToWhoHasNoCertificate) {
  const std::string client = vtdirect_test::MakeCertificate(directory_.path(), "client", "DNS:anna.example");
  Start("ssl_client_certificate " + client + ";\nssl_verify_client on;");
  const Fetched fetched = FetchFrom(Url(), For("/doc.json"));
  EXPECT_EQ(fetched.code, ErrorCode::Done);
  EXPECT_EQ(fetched.status, 400);
  EXPECT_THAT(fetched.body, HasSubstr("No required SSL certificate was sent"));
  EXPECT_EQ(fetched.found.detail, FailureDetail::ClientCertificateWanted);
}

TEST_F(Nginx, IsToldToWantHttpsByWhoAsksByHttp) {
  Start("");
  const Fetched fetched = FetchFrom("http://127.0.0.1:" + std::to_string(port_), For("/doc.json"));
  EXPECT_EQ(fetched.code, ErrorCode::Done);
  EXPECT_EQ(fetched.status, 400);
  EXPECT_EQ(fetched.found.detail, FailureDetail::WantsHttps);
}

TEST_F(Nginx, SendsPlainRequestsOnToTlsWithTheLoginThatCountsThere) {
  const int plainPort = vtdirect_test::UnusedPort();
  // By hand: "{PLAIN}" tells nginx that the password is stored in clear.
  vtdirect_test::WriteFile(directory_.File("passwords"), "paula:{PLAIN}s3cret\n");
  Start("auth_basic vault;\nauth_basic_user_file " + directory_.File("passwords") + ";",
        "server { listen 127.0.0.1:" + std::to_string(plainPort) + ";\nreturn 301 " + Url() +
            "$request_uri; }\n");
  const std::string plain = "http://127.0.0.1:" + std::to_string(plainPort);
  int asked = 0;
  Asking asking = For("/doc.json");
  asking.reauthenticate = [&] {
    ++asked;
    du::http::SetPasswordCredentials(plain, "paula", "s3cret");
    return true;
  };
  EXPECT_TRUE(FetchFrom(plain, asking).body == text_);
  EXPECT_TRUE(FetchFrom(plain, asking).body == text_);
  EXPECT_EQ(asked, 1);
}

}  // namespace
