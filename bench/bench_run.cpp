// Runs a command a number of times, one run after the other, and prints for all of them together
// "SECONDS PROCESSOR-SECONDS PEAK-KIB INSTRUCTIONS". What the command writes to standard output goes nowhere.
//
//   bench-run TIMES COMMAND [ARGUMENT...]
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/instruction_counter.h"

namespace {

struct Spent {
  double processorSeconds = 0;
  long peakKilobytes = 0;
};

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/// Runs the command once and adds what it took. False when it failed.
bool RunOnce(char** command, const posix_spawn_file_actions_t& actions, Spent& spent) {
  pid_t child = 0;
  const int error = posix_spawnp(&child, command[0], &actions, nullptr, command, environ);
  if (error != 0) {
    std::fprintf(stderr, "bench-run: cannot run %s: %s\n", command[0], std::strerror(error));
    return false;
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child) return false;
  spent.processorSeconds += Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
  spent.peakKilobytes = std::max(spent.peakKilobytes, usage.ru_maxrss);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return true;
  std::fprintf(stderr, "bench-run: %s failed\n", command[0]);
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  const long times = argc >= 3 ? std::strtol(argv[1], nullptr, 10) : 0;
  if (times <= 0) {
    std::fprintf(stderr, "usage: bench-run TIMES COMMAND [ARGUMENT...]\n");
    return 2;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  const vtdirect_bench::InstructionCounter instructions;
  const auto began = std::chrono::steady_clock::now();
  Spent spent;
  bool done = true;
  for (long run = 0; run < times && done; ++run) done = RunOnce(argv + 2, actions, spent);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
  posix_spawn_file_actions_destroy(&actions);
  if (!done) return 1;
  std::printf("%.6f %.6f %ld %s\n", took.count(), spent.processorSeconds, spent.peakKilobytes,
              instructions.Count().c_str());
  return 0;
}
