#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "simulator/export_command.h"
#include "simulator/options.h"
#include "simulator/simulator.h"
#include "simulator/wire/request_log.h"
#include "simulator/wire/server_group.h"

namespace {

constexpr int exitFailed = 1;

/// A file or connection would take the place of a closed standard descriptor, and get the lines that are
/// printed.
void KeepStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) == -1) static_cast<void>(open("/dev/null", O_RDWR));
  }
}

sigset_t StopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  return signals;
}

/// Serves until a stop signal arrives. The signals are blocked in every thread.
int Serve(vantry_sim::Options options) {
  vantry_sim::RequestLog log(options.logFile);
  const std::string bindAddress = options.bindAddress;
  vantry_sim::Simulator simulator(std::move(options));
  vantry_sim::ServerGroup servers(simulator, log, vantry_sim::LimitsFor(simulator.options().maxConnections));
  if (const int refused = servers.Bind(); refused >= 0) {
    const char* const advice = refused == 0 ? "" : "; if another program has it, 0 chooses a free one";
    std::fprintf(stderr, "vantry-sim: cannot listen on %s port %d%s\n", bindAddress.c_str(), refused, advice);
    return exitFailed;
  }
  // Scripts wait for this line, the only one on standard output.
  std::printf("vantry-sim listening on %s://%s:%d%s/",
              vantry_sim::SpeaksTls(simulator.options()) ? "https" : "http", bindAddress.c_str(),
              servers.port(), simulator.options().prefix.c_str());
  if (servers.adminPort() > 0) std::printf(" admin on http://127.0.0.1:%d/", servers.adminPort());
  std::printf("\n");
  std::fflush(stdout);

  std::thread stopper([&servers] {
    const sigset_t signals = StopSignals();
    int signal = 0;
    sigwait(&signals, &signal);
    servers.Stop();
  });
  servers.Run();
  // When serving ended by itself nobody sent the signal.
  pthread_kill(stopper.native_handle(), SIGTERM);
  stopper.join();
  return 0;
}

/// Every route that there is, which is what a server of the newest generation has.
void PrintRoutes() {
  std::string place = (std::filesystem::temp_directory_path() / "vantry-sim-routes-XXXXXX").string();
  if (mkdtemp(place.data()) == nullptr) throw std::runtime_error("cannot write " + place);
  {
    vantry_sim::Options options;
    options.dataDirectory = place;
    options.seed.kind = vantry_sim::Seed::Kind::Empty;
    std::fputs(vantry_sim::RouteTable(vantry_sim::Simulator(options).Routes()).c_str(), stdout);
  }
  std::filesystem::remove_all(place);
}

}  // namespace

int main(int argc, char** argv) {
  KeepStandardDescriptors();
  vantry_sim::CommandLine line = vantry_sim::ParseCommandLine(argc, argv);
  try {
    if (!line.check.empty()) return vantry_sim::CheckState(line.check);
    if (line.printRoutes) {
      PrintRoutes();
      return 0;
    }
    if (line.exportOptions) {
      vantry_sim::ExportState(*line.exportOptions);
      return 0;
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vantry-sim: %s\n", error.what());
    return exitFailed;
  }
  if (!line.options) {
    std::fputs(line.text.c_str(), line.exitCode == 0 ? stdout : stderr);
    return line.exitCode;
  }
  // Writing to a connection that the client has closed is no reason to end.
  signal(SIGPIPE, SIG_IGN);
  const sigset_t signals = StopSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  try {
    return Serve(std::move(*line.options));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vantry-sim: %s\n", error.what());
    return exitFailed;
  }
}
