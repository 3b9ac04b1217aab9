#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>

#include "tests/e2e/platform/fetching.h"
#include "tests/e2e/servers/kerberos_realm.h"
#include "tests/e2e/servers/server_program.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/unused_port.h"

namespace {

using testing::ElementsAre;
using vtdirect_test::Asking;
using vtdirect_test::Fetch;
using vtdirect_test::FetchFrom;

constexpr const char* modules = "/usr/lib/apache2/modules/";

// Apache hands the whole body over before it reads anything, so it has to be read to the end first.
constexpr const char* echo = R"(#!/bin/sh
  body=$(cat)
  printf 'Content-Type: text/plain\n\n%s' "$body"
)";

constexpr const char* configuration = R"(
ServerRoot @HOME@
ServerName localhost
PidFile @HOME@/apache.pid
Listen 127.0.0.1:@PORT@
LoadModule mpm_prefork_module @MODULES@mod_mpm_prefork.so
LoadModule authn_core_module @MODULES@mod_authn_core.so
LoadModule authz_core_module @MODULES@mod_authz_core.so
LoadModule authz_user_module @MODULES@mod_authz_user.so
LoadModule alias_module @MODULES@mod_alias.so
LoadModule cgi_module @MODULES@mod_cgi.so
@USER@
DefaultRuntimeDir @HOME@
ErrorLog @HOME@/apache.log
LogFormat "%m %>s %u %k" told
CustomLog @HOME@/access.log told
StartServers 1
DocumentRoot @HOME@/documents
ScriptAlias /echo @HOME@/echo
<Directory @HOME@>
  Require valid-user
  @LOGIN@
</Directory>
)";

constexpr const char* digestLogin = R"(
  AuthType Digest
  AuthName vault
  AuthDigestProvider file
  AuthUserFile @HOME@/users
)";

constexpr const char* negotiateLogin = R"(
  AuthType GSSAPI
  AuthName vault
  GssapiCredStore keytab:@KEYTAB@
  GssapiLocalName On
  @MORE@
)";

/// Apache, which wants to know who asks.
class Apache : public testing::Test {
 protected:
  void SetUp() override {
    vtdirect_test::UseLongLimits();
    program_ = vtdirect_test::FindProgram("apache2");
    if (program_.empty()) GTEST_SKIP() << "Apache is missing (Debian package apache2-bin)";
    vtdirect_test::WriteFile(directory_.File("echo"), echo);
    mkdir(directory_.File("documents").c_str(), 0755);
    vtdirect_test::WriteFile(directory_.File("documents/doc"), "vaulted");
    chmod(directory_.File("echo").c_str(), 0755);
  }
  void Start(const std::string& moduleLines, const std::string& login, const std::string& keytab = "",
             const std::string& more = "") {
    std::string text = moduleLines + configuration;
    text = vtdirect_test::Filled(text, {{"LOGIN", login}});
    text = vtdirect_test::Filled(text, {{"HOME", directory_.path()},
                                        {"PORT", std::to_string(port_)},
                                        {"MODULES", modules},
                                        {"USER", UserLines()},
                                        {"KEYTAB", keytab},
                                        {"MORE", more}});
    vtdirect_test::WriteFile(directory_.File("apache.conf"), text);
    apache_.emplace(
        std::vector<std::string>{program_, "-D", "FOREGROUND", "-f", directory_.File("apache.conf")}, port_,
        directory_.File("apache.log"));
  }
  /// Apache refuses to serve as root and becomes somebody else, who must be able to read its files.
  std::string UserLines() {
    if (getuid() != 0) return "";
    chmod(directory_.path().c_str(), 0755);
    return "User nobody\nGroup nogroup\n";
  }
  [[nodiscard]] std::string Url() const { return "http://localhost:" + std::to_string(port_); }
  static Asking Doc() {
    Asking asking;
    asking.uri = "/doc";
    return asking;
  }
  Asking Echo() const {
    Asking asking;
    asking.uri = "/echo";
    asking.method = du::http::Method::Post;
    asking.headers = "Content-Type: text/plain";
    asking.body = &body_;
    return asking;
  }
  /// Method, status and user of each request, and how many its connection had before.
  [[nodiscard]] std::vector<std::string> Told(std::size_t count) const {
    return vtdirect_test::LinesOf(directory_.File("access.log"), count);
  }

  const std::string body_ = std::string(300'000, 'p') + "end";
  const int port_ = vtdirect_test::UnusedPort();
  vtdirect_test::TemporaryDirectory directory_;
  std::string program_;
  std::optional<vtdirect_test::ServerProgram> apache_;
};

class ApacheDigest : public Apache {
 protected:
  void SetUp() override {
    Apache::SetUp();
    if (IsSkipped()) return;
    // By hand: MD5 of "paula:vault:s3cret".
    vtdirect_test::WriteFile(directory_.File("users"), "paula:vault:07a9ce886437e26d85a643ef35777915\n");
    chmod(directory_.File("users").c_str(), 0644);
    Start(
        "LoadModule authn_file_module @MODULES@mod_authn_file.so\n"
        "LoadModule auth_digest_module @MODULES@mod_auth_digest.so\n",
        digestLogin);
  }
};

TEST_F(ApacheDigest, LetsAPasswordIn) {
  du::http::SetPasswordCredentials(Url(), "paula", "s3cret");
  const auto connection = vtdirect_test::Connect(Url());
  EXPECT_EQ(Fetch(*connection, Doc()).body, "vaulted");
  EXPECT_TRUE(Fetch(*connection, Echo()).body == body_);
  EXPECT_EQ(Fetch(*connection, Doc()).body, "vaulted");
  // One demand, and none after it, on one connection.
  EXPECT_THAT(Told(4), ElementsAre("GET 401 - 0", "GET 200 paula 1", "POST 200 paula 2", "GET 200 paula 3"));
}

TEST_F(ApacheDigest, GetsABodyThatItDemandedALoginForOnceMore) {
  du::http::SetPasswordCredentials(Url(), "paula", "s3cret");
  EXPECT_TRUE(FetchFrom(Url(), Echo()).body == body_);
}

TEST_F(ApacheDigest, RefusesAWrongPassword) {
  du::http::SetPasswordCredentials(Url(), "paula", "wrong");
  EXPECT_EQ(FetchFrom(Url(), Doc()).status, 401);
}

class ApacheNegotiate : public Apache {
 protected:
  void SetUp() override {
    Apache::SetUp();
    if (IsSkipped()) return;
    if (access((std::string(modules) + "mod_auth_gssapi.so").c_str(), R_OK) != 0) {
      GTEST_SKIP() << "mod_auth_gssapi is missing (Debian package libapache2-mod-auth-gssapi)";
    }
    const std::string missing = vtdirect_test::KerberosRealm::Missing();
    if (!missing.empty()) {
      GTEST_SKIP() << missing << " missing (Debian packages krb5-kdc, krb5-admin-server, krb5-user)";
    }
    realm_.emplace(directory_.path());
    chmod(realm_->keytab().c_str(), 0644);
  }
  void StartNegotiate(const std::string& more = "") {
    Start("LoadModule auth_gssapi_module @MODULES@mod_auth_gssapi.so\n", negotiateLogin, realm_->keytab(),
          more);
  }
  std::optional<vtdirect_test::KerberosRealm> realm_;
};

TEST_F(ApacheNegotiate, LetsATicketInWithABodyToo) {
  realm_->LogIn();
  StartNegotiate();
  du::http::SetNegotiateCredentials(Url());
  const auto connection = vtdirect_test::Connect(Url());
  EXPECT_EQ(Fetch(*connection, Doc()).body, "vaulted");
  EXPECT_TRUE(Fetch(*connection, Echo()).body == body_);
  EXPECT_EQ(Fetch(*connection, Doc()).body, "vaulted");
  // The ticket goes out at once: no request is made in vain.
  EXPECT_THAT(Told(3), ElementsAre("GET 200 anna 0", "POST 200 anna 1", "GET 200 anna 2"));
}

TEST_F(ApacheNegotiate, MayKeepALoginForAConnection) {
  realm_->LogIn();
  StartNegotiate("GssapiConnectionBound On");
  du::http::SetNegotiateCredentials(Url());
  const auto connection = vtdirect_test::Connect(Url());
  EXPECT_EQ(Fetch(*connection, Doc()).body, "vaulted");
  EXPECT_TRUE(Fetch(*connection, Echo()).body == body_);
  EXPECT_EQ(Fetch(*connection, Doc()).body, "vaulted");
}

TEST_F(ApacheNegotiate, GetsNoTicketThatTheHostDidNotOffer) {
  realm_->LogIn();
  StartNegotiate();
  EXPECT_EQ(FetchFrom(Url(), Doc()).status, 401);
  du::http::SetPasswordCredentials(Url(), "anna", "s3cret");
  EXPECT_EQ(FetchFrom(Url(), Doc()).status, 401);
  du::http::SetNegotiateCredentials("http://127.0.0.1:" + std::to_string(port_));
  du::http::ClearCredentials(Url());
  EXPECT_EQ(FetchFrom(Url(), Doc()).status, 401);
}

TEST_F(ApacheNegotiate, AsksTheHostWhenThereIsNoTicketAndSendsTheBodyAgain) {
  StartNegotiate();
  du::http::SetNegotiateCredentials(Url());
  Asking asking = Echo();
  int asked = 0;
  asking.reauthenticate = [this, &asked] {
    ++asked;
    realm_->LogIn();
    return true;
  };
  EXPECT_TRUE(FetchFrom(Url(), asking).body == body_);
  EXPECT_EQ(asked, 1);
  EXPECT_THAT(Told(2), ElementsAre("POST 401 - 0", testing::StartsWith("POST 200 anna ")));
}

TEST_F(ApacheNegotiate, ReportsTheDemandWhenTheHostHasNoTicket) {
  StartNegotiate();
  du::http::SetNegotiateCredentials(Url());
  EXPECT_EQ(FetchFrom(Url(), Doc()).status, 401);
}

}  // namespace
