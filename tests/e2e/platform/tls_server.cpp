#include "tests/e2e/platform/tls_server.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <vector>

namespace vtdirect_test {
namespace {

/// Starts a program in a directory, its standard output on `output` or nowhere.
int Start(const std::string& directory, const std::vector<std::string>& words, int output) {
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  const int process = fork();
  if (process != 0) return process;
  const int nowhere = open("/dev/null", O_RDWR);
  dup2(nowhere, 0);
  dup2(output < 0 ? nowhere : output, 1);
  dup2(nowhere, 2);
  if (chdir(directory.c_str()) == 0) execvp(arguments[0], arguments.data());
  _exit(127);
}

bool Run(const std::string& directory, const std::vector<std::string>& words) {
  int status = 0;
  const int process = Start(directory, words, -1);
  return process > 0 && waitpid(process, &status, 0) == process && WIFEXITED(status) &&
         WEXITSTATUS(status) == 0;
}

}  // namespace

bool HaveOpenSsl() {
  return Run("/", {"openssl", "version"});
}

std::string MakeCertificate(const std::string& directory, const std::string& name,
                            const std::string& subjectName) {
  if (!Run(directory, {"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                       "-nodes", "-days", "2", "-subj", "/CN=vtdirect-test", "-addext",
                       "subjectAltName=" + subjectName, "-keyout", name + ".key", "-out", name + ".pem"})) {
    throw std::runtime_error("openssl made no certificate");
  }
  return directory + "/" + name + ".pem";
}

std::string MakeLockedKey(const std::string& directory, const std::string& name,
                          const std::string& passphrase) {
  const std::string locked = name + ".locked.key";
  if (!Run(directory, {"openssl", "pkcs8", "-topk8", "-in", name + ".key", "-out", locked, "-passout",
                       "pass:" + passphrase})) {
    throw std::runtime_error("openssl locked no key");
  }
  return directory + "/" + locked;
}

std::string MakePkcs12(const std::string& directory, const std::string& name, const std::string& passphrase) {
  if (!Run(directory, {"openssl", "pkcs12", "-export", "-in", name + ".pem", "-inkey", name + ".key", "-out",
                       name + ".p12", "-passout", "pass:" + passphrase})) {
    throw std::runtime_error("openssl made no PKCS#12 file");
  }
  return directory + "/" + name + ".p12";
}

TlsServer::TlsServer(const std::string& directory, const std::string& name) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  process_ = Start(directory,
                   {"openssl", "s_server", "-accept", "127.0.0.1:0", "-cert", name + ".pem", "-key",
                    name + ".key", "-HTTP"},
                   ends[1]);
  close(ends[1]);
  output_ = ends[0];
  // It says "ACCEPT 127.0.0.1:port" when it listens, perhaps after other lines.
  std::string said;
  std::size_t line;
  while ((line = said.find("ACCEPT ")) == std::string::npos || said.find('\n', line) == std::string::npos) {
    char byte;
    if (read(output_, &byte, 1) != 1) throw std::runtime_error("openssl s_server did not start: " + said);
    said += byte;
  }
  port_ = std::to_string(std::atoi(said.c_str() + said.rfind(':') + 1));
}

TlsServer::~TlsServer() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  close(output_);
}

}  // namespace vtdirect_test
