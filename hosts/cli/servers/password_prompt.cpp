#include "hosts/cli/servers/password_prompt.h"

#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/texts/progress_line.h"

namespace vtdirect_cli {
namespace {

constexpr std::size_t longestAnswer = 1024;

class Terminal {
 public:
  Terminal() : descriptor_(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)) {}
  ~Terminal() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  [[nodiscard]] int descriptor() const { return descriptor_; }

  // A line of progress may stand where the question is to be.
  void Ask(const std::string& question) const { Write(WipeOfProgress() + question); }

  void Write(const std::string& text) const {
    static_cast<void>(!write(descriptor_, text.data(), text.size()));
  }

 private:
  int descriptor_;
};

// Stopping the program while the echo is off would leave the shell's user typing blindly, and a program in
// the background gets an error in place of a stop, and so asks for nothing.
class NoStops {
 public:
  NoStops() {
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    for (std::size_t i = 0; i < std::size(stopSignals); ++i) sigaction(stopSignals[i], &ignore, &before_[i]);
  }
  ~NoStops() {
    for (std::size_t i = 0; i < std::size(stopSignals); ++i) sigaction(stopSignals[i], &before_[i], nullptr);
  }
  NoStops(const NoStops&) = delete;
  NoStops& operator=(const NoStops&) = delete;

 private:
  static constexpr int stopSignals[] = {SIGTSTP, SIGTTIN, SIGTTOU};
  struct sigaction before_[std::size(stopSignals)] = {};
};

[[nodiscard]] std::optional<std::string> ReadLine(int descriptor) {
  char buffer[longestAnswer];
  std::size_t size = 0;
  std::optional<std::string> line;
  while (size < sizeof buffer) {
    const ssize_t count = read(descriptor, buffer + size, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    if (buffer[size] == '\n') {
      line.emplace(buffer, size);
      break;
    }
    ++size;
  }
  explicit_bzero(buffer, sizeof buffer);
  return line;
}

// The echo is off before the question is there, so that an answer to it is never shown, however fast it comes.
[[nodiscard]] std::optional<std::string> AskWithoutEcho(const Terminal& terminal,
                                                        const std::string& question) {
  termios before = {};
  const int descriptor = terminal.descriptor();
  if (tcgetattr(descriptor, &before) != 0) return std::nullopt;
  const CleanUp restore([descriptor, before] { tcsetattr(descriptor, TCSAFLUSH, &before); });
  termios silent = before;
  silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
  silent.c_lflag |= ICANON;
  if (tcsetattr(descriptor, TCSAFLUSH, &silent) != 0) return std::nullopt;
  terminal.Ask(question);
  auto secret = ReadLine(descriptor);
  terminal.Write("\n");
  return secret;
}

[[nodiscard]] std::optional<std::string> PromptForSecret(const std::string& question) {
  const Terminal terminal;
  if (terminal.descriptor() < 0) return std::nullopt;
  const NoStops noStops;
  return AskWithoutEcho(terminal, question);
}

}  // namespace

std::optional<PasswordCredentials> PromptForPassword(const std::string& origin, const std::string& user) {
  const Terminal terminal;
  if (terminal.descriptor() < 0) return std::nullopt;
  const NoStops noStops;
  PasswordCredentials answer{user, {}};
  if (user.empty()) {
    terminal.Ask("User name for " + Printable(origin) + ": ");
    const std::optional<std::string> name = ReadLine(terminal.descriptor());
    if (!name || name->empty()) return std::nullopt;
    answer.user = *name;
  }
  const std::optional<std::string> password =
      AskWithoutEcho(terminal, "Password for " + Printable(answer.user) + " at " + Printable(origin) + ": ");
  if (!password) return std::nullopt;
  answer.password = *password;
  return answer;
}

std::optional<std::string> PromptForToken(const std::string& origin) {
  return PromptForSecret("Token for " + Printable(origin) + ": ");
}

std::optional<std::string> PromptForPassphrase(const std::string& keyFile) {
  return PromptForSecret("Passphrase for " + Printable(keyFile) + ": ");
}

}  // namespace vtdirect_cli
