#include "hosts/mount/background.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>

namespace vtdirect_mount {
namespace {

[[noreturn]] void EndAsTold(int pipe) {
  unsigned char status = 1;
  while (read(pipe, &status, 1) < 0 && errno == EINTR) {
  }
  _exit(status);
}

}  // namespace

Background::Background() {
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) return;
  const pid_t process = fork();
  if (process > 0) {
    close(ends[1]);
    EndAsTold(ends[0]);
  }
  close(ends[0]);
  pipe_ = ends[1];
}

Background::~Background() {
  if (pipe_ >= 0) close(pipe_);
}

void Background::Tell(int status) {
  if (pipe_ < 0) return;
  const auto byte = static_cast<unsigned char>(status);
  while (write(pipe_, &byte, 1) < 0 && errno == EINTR) {
  }
  close(pipe_);
  pipe_ = -1;
}

void Background::LetGo() {
  setsid();
  if (chdir("/") != 0) return;
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nothing, descriptor);
  if (nothing > STDERR_FILENO) close(nothing);
  Tell(0);
}

}  // namespace vtdirect_mount
