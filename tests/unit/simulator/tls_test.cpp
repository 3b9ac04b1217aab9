#include "simulator/wire/tls.h"

#include <arpa/inet.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "raw_client.h"
#include "simulator/wire/server_group.h"
#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

/// A client that trusts one certificate and looks at the name in it.
class TlsClient {
 public:
  TlsClient(int port, const std::string& certificate, const std::string& name)
      : context_(SSL_CTX_new(TLS_client_method()), SSL_CTX_free), tls_(SSL_new(context_.get()), SSL_free) {
    SSL_CTX_load_verify_locations(context_.get(), certificate.c_str(), nullptr);
    tls_.reset(SSL_new(context_.get()));
    SSL_set_verify(tls_.get(), SSL_VERIFY_PEER, nullptr);
    X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(tls_.get()), name.c_str());
    socket_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    SSL_set_fd(tls_.get(), socket_);
    trusted_ = SSL_connect(tls_.get()) == 1;
  }
  TlsClient(const TlsClient&) = delete;
  TlsClient& operator=(const TlsClient&) = delete;
  ~TlsClient() {
    tls_.reset();
    close(socket_);
  }

  [[nodiscard]] bool trusted() const { return trusted_; }

  /// Everything that the server says to a request that lets it close the connection.
  std::string Get(const std::string& target) {
    const std::string request =
        "GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1:1\r\nConnection: close\r\n\r\n";
    // In two pieces, the second of which comes when the first has been read.
    SSL_write(tls_.get(), request.data(), 9);
    SSL_write(tls_.get(), request.data() + 9, static_cast<int>(request.size()) - 9);
    std::string answer;
    char block[4096];
    for (int count = 0; (count = SSL_read(tls_.get(), block, sizeof block)) > 0;)
      answer.append(block, static_cast<std::size_t>(count));
    return answer;
  }

 private:
  std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context_;
  std::unique_ptr<SSL, decltype(&SSL_free)> tls_;
  int socket_ = -1;
  bool trusted_ = false;
};

class TlsTest : public SimulatorTest {
 protected:
  TlsTest() { options_.tlsSelfSigned = (directory_ / "tls").string(); }

  ~TlsTest() override {
    if (!servers_) return;
    servers_->Stop();
    thread_.join();
    servers_.reset();
  }

  int Serve() {
    options_.port = 0;
    log_ = std::make_unique<RequestLog>("");
    servers_ = std::make_unique<ServerGroup>(Start(), *log_);
    EXPECT_EQ(servers_->Bind(), -1);
    thread_ = std::thread([this] { servers_->Run(); });
    return servers_->port();
  }

  [[nodiscard]] std::string Certificate() const { return options_.tlsSelfSigned + "/cert.pem"; }

  std::unique_ptr<RequestLog> log_;
  std::unique_ptr<ServerGroup> servers_;
  std::thread thread_;
};

TEST_F(TlsTest, CertificateOfItsOwnIsTrustedForTheLoopbackAndNothingElse) {
  const int port = Serve();
  TlsClient client(port, Certificate(), "127.0.0.1");
  ASSERT_TRUE(client.trusted());
  const std::string answer = client.Get("/servlet/rest/v1/dkm/documents/D1001");
  EXPECT_EQ(answer.substr(0, 12), "HTTP/1.1 200");
  // Addresses that the server tells are where the client found it.
  EXPECT_NE(answer.find("\"https://127.0.0.1:1/servlet/rest/v1/content/streams/10010/fork.lxz\""),
            std::string::npos);
  EXPECT_FALSE(TlsClient(port, Certificate(), "192.0.2.1").trusted());
}

TEST_F(TlsTest, LongContentArrivesWhole) {
  options_.seed.largeBytes = 3'000'001;
  TlsClient client(Serve(), Certificate(), "127.0.0.1");
  const std::string answer = client.Get("/servlet/rest/v1/content/streams/10090/x");
  const auto body = answer.find("\r\n\r\n");
  ASSERT_NE(body, std::string::npos);
  EXPECT_EQ(answer.substr(body + 4), ReadFile(directory_ / "data/content/10090"));
}

TEST_F(TlsTest, ClientWithoutTlsIsTurnedAwayAndKeepsNobodyWaiting) {
  const int port = Serve();
  RawClient plain(port);
  plain.Send("GET / HTTP/1.1\r\nHost: h\r\n\r\n");
  EXPECT_TRUE(plain.ClosedByServer());
  const RawClient silent(port);
  EXPECT_TRUE(TlsClient(port, Certificate(), "127.0.0.1").trusted());
}

TEST_F(TlsTest, SelfSignedFilesAreMadeOnceAndTheKeyIsTheOwnersAlone) {
  const TlsFiles files = SelfSignedFiles(options_.tlsSelfSigned, "127.0.0.1");
  struct stat status {};
  ASSERT_EQ(stat(files.key.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  const std::string first = ReadFile(files.certificate);
  SelfSignedFiles(options_.tlsSelfSigned, "127.0.0.1");
  EXPECT_EQ(ReadFile(files.certificate), first);
  // Another address, another certificate.
  SelfSignedFiles(options_.tlsSelfSigned, "192.0.2.1");
  EXPECT_NE(ReadFile(files.certificate), first);
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(options_.tlsSelfSigned))
    ++count;
  EXPECT_EQ(count, 2U);
}

std::string ProblemWithSelfSigned(const std::string& directory, const std::string& address) {
  try {
    SelfSignedFiles(directory, address);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return {};
}

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// A certificate of somebody else for "elsewhere", with its key.
TlsFiles MakeForeignFiles(const std::string& directory) {
  std::filesystem::create_directories(directory);
  TlsFiles files{directory + "/cert.pem", directory + "/key.pem"};
  EVP_PKEY* key = EVP_EC_gen("P-256");
  X509* certificate = X509_new();
  X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                             reinterpret_cast<const unsigned char*>("elsewhere"), -1, -1, 0);
  X509_set_issuer_name(certificate, X509_get_subject_name(certificate));
  X509_gmtime_adj(X509_getm_notBefore(certificate), 0);
  X509_gmtime_adj(X509_getm_notAfter(certificate), 864'000);
  X509_set_pubkey(certificate, key);
  X509_sign(certificate, key, EVP_sha256());
  std::FILE* file = std::fopen(files.certificate.c_str(), "w");
  PEM_write_X509(file, certificate);
  std::fclose(file);
  file = std::fopen(files.key.c_str(), "w");
  PEM_write_PrivateKey(file, key, nullptr, nullptr, 0, nullptr, nullptr);
  std::fclose(file);
  X509_free(certificate);
  EVP_PKEY_free(key);
  return files;
}

TEST_F(TlsTest, FilesOfAnotherOriginAreNeverReplaced) {
  const TlsFiles files = MakeForeignFiles(options_.tlsSelfSigned);
  const std::string certificate = ReadFile(files.certificate);
  const std::string key = ReadFile(files.key);
  EXPECT_NE(ProblemWithSelfSigned(options_.tlsSelfSigned, "127.0.0.1").find(files.certificate),
            std::string::npos);
  EXPECT_EQ(ReadFile(files.certificate), certificate);
  EXPECT_EQ(ReadFile(files.key), key);
  // For its own name it does.
  EXPECT_EQ(ProblemWithSelfSigned(options_.tlsSelfSigned, "elsewhere"), "");
  std::filesystem::remove(files.certificate);
  EXPECT_NE(ProblemWithSelfSigned(options_.tlsSelfSigned, "127.0.0.1").find(files.key), std::string::npos);
  EXPECT_EQ(ReadFile(files.key), key);
}

TEST_F(TlsTest, FilesThatAreNoPairOfKeyAndCertificateAreNeverReplaced) {
  const TlsFiles files = SelfSignedFiles(options_.tlsSelfSigned, "127.0.0.1");
  WriteText(files.key, "notes");
  EXPECT_NE(ProblemWithSelfSigned(options_.tlsSelfSigned, "127.0.0.1").find(files.key), std::string::npos);
  EXPECT_EQ(ReadFile(files.key), "notes");
  WriteText(files.certificate, "more notes");
  EXPECT_NE(ProblemWithSelfSigned(options_.tlsSelfSigned, "127.0.0.1").find(files.certificate),
            std::string::npos);
  EXPECT_EQ(ReadFile(files.certificate), "more notes");
}

// Making them was cut off between the two.
TEST_F(TlsTest, CertificateOfItsOwnWithoutTheKeyIsMadeAnew) {
  const TlsFiles files = SelfSignedFiles(options_.tlsSelfSigned, "127.0.0.1");
  std::filesystem::remove(files.key);
  EXPECT_EQ(ProblemWithSelfSigned(options_.tlsSelfSigned, "127.0.0.1"), "");
  EXPECT_TRUE(TlsClient(Serve(), Certificate(), "127.0.0.1").trusted());
}

TEST_F(TlsTest, KeyThatDoesNotFitACertificateOfItsOwnIsNeverReplaced) {
  const TlsFiles files = SelfSignedFiles(options_.tlsSelfSigned, "127.0.0.1");
  const std::string certificate = ReadFile(files.certificate);
  const std::string key = ReadFile(MakeForeignFiles((directory_ / "other").string()).key);
  WriteText(files.key, key);
  for (const char* address : {"127.0.0.1", "192.0.2.1"}) {
    const std::string problem = ProblemWithSelfSigned(options_.tlsSelfSigned, address);
    EXPECT_NE(problem.find(files.key + " does not fit"), std::string::npos) << problem;
    EXPECT_NE(problem.find("removed"), std::string::npos) << problem;
    EXPECT_EQ(ReadFile(files.certificate), certificate);
    EXPECT_EQ(ReadFile(files.key), key);
  }
  std::filesystem::remove(files.certificate);
  std::filesystem::remove(files.key);
  EXPECT_EQ(ProblemWithSelfSigned(options_.tlsSelfSigned, "127.0.0.1"), "");
}

/// What went away and what came by its own name, in the order in which it did.
std::vector<std::string> ChangesOf(const std::string& directory, const std::function<void()>& act) {
  const int watcher = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  EXPECT_GE(inotify_add_watch(watcher, directory.c_str(), IN_DELETE | IN_MOVED_TO), 0);
  act();
  alignas(inotify_event) std::array<char, 4096> buffer{};
  const ssize_t count = read(watcher, buffer.data(), buffer.size());
  close(watcher);
  std::vector<std::string> changes;
  for (ssize_t at = 0; at < count;) {
    const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
    changes.push_back(((event->mask & IN_DELETE) != 0 ? "-" : "+") + std::string(event->name));
    at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
  }
  return changes;
}

// Cut off anywhere, it leaves a certificate of its own that has no key.
TEST_F(TlsTest, RenewalNeverLeavesAKeyThatDoesNotFit) {
  SelfSignedFiles(options_.tlsSelfSigned, "127.0.0.1");
  const auto changes =
      ChangesOf(options_.tlsSelfSigned, [this] { SelfSignedFiles(options_.tlsSelfSigned, "192.0.2.1"); });
  EXPECT_EQ(changes, (std::vector<std::string>{"-key.pem", "+cert.pem", "+key.pem"}));
}

std::string ProblemWith(const std::string& certificate, const std::string& key) {
  try {
    TlsIdentity identity(certificate, key);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return {};
}

TEST_F(TlsTest, FileThatCannotBeUsedIsNamed) {
  const TlsFiles files = SelfSignedFiles(options_.tlsSelfSigned, "127.0.0.1");
  const TlsFiles others = SelfSignedFiles((directory_ / "other").string(), "127.0.0.1");
  EXPECT_EQ(ProblemWith(files.certificate, files.key), "");
  EXPECT_NE(ProblemWith("/missing", files.key).find("/missing"), std::string::npos);
  EXPECT_NE(ProblemWith(files.certificate, others.key).find(others.key), std::string::npos);
  EXPECT_NE(ProblemWith(files.key, files.key).find(files.key), std::string::npos);
}

}  // namespace
}  // namespace vantry_sim
