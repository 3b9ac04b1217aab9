#include "tests/e2e/cli/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace vtdirect_test {
namespace {

constexpr int patienceMilliseconds = 30'000;

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

std::string Content(int descriptor) {
  struct stat facts = {};
  if (fstat(descriptor, &facts) != 0) throw std::runtime_error("no output file");
  std::string text(static_cast<std::size_t>(facts.st_size), '\0');
  const ssize_t count = pread(descriptor, text.data(), text.size(), 0);
  text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
  return text;
}

int OpenOutput(const std::string& path) {
  if (path.empty()) return memfd_create("out", MFD_CLOEXEC);
  return open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
}

bool LimitFileSize(unsigned long bytes) {
  if (bytes == 0) return true;
  const rlimit limit{bytes, bytes};
  return setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

void ResetSignals() {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) signal(number, SIG_DFL);
}

}  // namespace

Process::Process(const std::vector<std::string>& words, const ProcessOptions& options) {
  std::vector<std::string> arguments = words;
  std::vector<std::string> environment;
  for (const auto& [name, value] : options.environment) environment.push_back(name + "=" + value);
  const std::vector<char*> argv = Pointers(arguments);
  const std::vector<char*> envp = Pointers(environment);
  out_ = OpenOutput(options.outFile);
  err_ = memfd_create("err", MFD_CLOEXEC);
  if (out_ < 0 || err_ < 0) throw std::runtime_error("no output file");
  id_ = fork();
  if (id_ != 0) return;
  ResetSignals();
  setsid();
  const int nothing = open("/dev/null", O_RDONLY);
  const bool ready = dup2(nothing, 0) == 0 && dup2(out_, 1) == 1 && dup2(err_, 2) == 2 &&
                     LimitFileSize(options.fileSizeLimit) &&
                     (options.directory.empty() || chdir(options.directory.c_str()) == 0);
  if (ready) execve(argv[0], argv.data(), envp.data());
  _exit(127);
}

Process::~Process() {
  if (id_ > 0 && !ended_) {
    kill(id_, SIGKILL);
    static_cast<void>(Reap(0));
  }
  close(out_);
  close(err_);
}

void Process::Signal(int signal) const {
  kill(id_, signal);
}

std::string Process::OutputSoFar() const {
  return Content(out_);
}

bool Process::Reap(int flags) {
  if (ended_) return true;
  int status = 0;
  struct rusage usage = {};
  if (wait4(id_, &status, flags, &usage) != id_) return false;
  ended_ = true;
  peakKilobytes_ = usage.ru_maxrss;
  status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return true;
}

bool Process::Running() {
  return !Reap(WNOHANG);
}

// Returns as soon as the process has ended.
void Process::AwaitEnd() const {
  const int end = static_cast<int>(syscall(SYS_pidfd_open, id_, 0));
  if (end < 0) return;
  pollfd waiting = {end, POLLIN, 0};
  static_cast<void>(poll(&waiting, 1, patienceMilliseconds));
  close(end);
}

ProcessResult Process::Wait() {
  if (!ended_) AwaitEnd();
  if (!WaitUntil([this] { return Reap(WNOHANG); }, patienceMilliseconds)) {
    ADD_FAILURE() << "the process does not end; standard error so far: " << Content(err_);
    kill(id_, SIGKILL);
    static_cast<void>(Reap(0));
  }
  return {status_, Content(out_), Content(err_), peakKilobytes_};
}

void SleepMilliseconds(int milliseconds) {
  usleep(static_cast<useconds_t>(milliseconds) * 1000);
}

}  // namespace vtdirect_test
