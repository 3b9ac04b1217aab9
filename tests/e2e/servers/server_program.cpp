#include "tests/e2e/servers/server_program.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>
#include <stdexcept>

#include "tests/e2e/platform/scripted_server.h"
#include "tests/support/temporary_directory.h"

namespace vtdirect_test {
namespace {

constexpr int patienceMilliseconds = 20'000;
constexpr int stepMilliseconds = 10;

/// In the child: becomes the program.
[[noreturn]] void Become(const std::vector<std::string>& words, int input, int output) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  setsid();
  dup2(input, 0);
  dup2(output, 1);
  dup2(output, 2);
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  execv(arguments[0], arguments.data());
  _exit(127);
}

int Start(const std::vector<std::string>& words, const std::string& logFile, int input) {
  const int output = open(logFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  const int process = fork();
  if (process == 0) Become(words, input, output);
  close(output);
  return process;
}

bool Accepts(int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool accepts = connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  close(socket);
  return accepts;
}

bool HasEnded(int process) {
  siginfo_t state = {};
  return waitid(P_PID, static_cast<id_t>(process), &state, WEXITED | WNOHANG | WNOWAIT) != 0 ||
         state.si_pid != 0;
}

void Sleep() {
  usleep(stepMilliseconds * 1000);
}

}  // namespace

std::string FindProgram(const std::string& name) {
  for (const char* directory :
       {"/usr/sbin/", "/usr/bin/", "/usr/local/sbin/", "/usr/local/bin/", "/sbin/", "/bin/"}) {
    if (access((directory + name).c_str(), X_OK) == 0) return directory + name;
  }
  return "";
}

std::string Filled(std::string text, const std::map<std::string, std::string>& values) {
  for (const auto& [name, value] : values) {
    const std::string mark = "@" + name + "@";
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + value.size())) {
      text.replace(at, mark.size(), value);
    }
  }
  return text;
}

int RunProgram(const std::vector<std::string>& words, const std::string& logFile, const std::string& input) {
  const std::string inputFile = logFile + ".in";
  WriteFile(inputFile, input);
  const int descriptor = open(inputFile.c_str(), O_RDONLY | O_CLOEXEC);
  const int process = Start(words, logFile, descriptor);
  close(descriptor);
  unlink(inputFile.c_str());
  int status = 0;
  const bool ended = waitpid(process, &status, 0) == process && WIFEXITED(status);
  return ended ? WEXITSTATUS(status) : -1;
}

std::vector<std::string> LinesOf(const std::string& logFile, std::size_t count) {
  std::vector<std::string> lines;
  static_cast<void>(ComesTrue([&] {
    lines.clear();
    std::istringstream log(ReadFile(logFile));
    for (std::string line; std::getline(log, line);) lines.push_back(line);
    return lines.size() >= count;
  }));
  return lines;
}

ServerProgram::ServerProgram(const std::vector<std::string>& words, int port, const std::string& logFile) {
  const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  process_ = Start(words, logFile, nothing);
  close(nothing);
  for (int waited = 0; waited < patienceMilliseconds && !HasEnded(process_); waited += stepMilliseconds) {
    if (Accepts(port)) return;
    Sleep();
  }
  kill(-process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  throw std::runtime_error(words.at(0) + " did not start: " + ReadFile(logFile));
}

ServerProgram::~ServerProgram() {
  kill(process_, SIGTERM);
  for (int waited = 0; waited < 2000 && !HasEnded(process_); waited += stepMilliseconds) Sleep();
  kill(-process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

}  // namespace vtdirect_test
