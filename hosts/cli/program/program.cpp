#include "hosts/cli/program/program.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>
#include <vtdirect/platform/http_observer.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>

#include "hosts/cli/browsing/mounted_path.h"
#include "hosts/cli/checkouts/recovery.h"
#include "hosts/cli/commands/command_line.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/http_log/har_file.h"
#include "hosts/cli/many/listed_addresses.h"
#include "hosts/cli/program/environment.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/program/interruption_report.h"
#include "hosts/cli/program/trace_log.h"
#include "hosts/cli/texts/generation.h"
#include "hosts/cli/texts/near_word.h"
#include "hosts/cli/work_folder/named_documents.h"
#include "hosts/cli/work_folder/work_folder.h"

namespace vtdirect_cli {
namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 16U;

// The first file or connection that is opened would take the place of a closed standard descriptor, and get
// what is written there. What takes it now refuses to be read, or to be written, as a closed one does.
void KeepStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) continue;
    static_cast<void>(open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
}

// A closed pipe and a file that may not grow are failures to be reported, after which temporary files go, and
// no reason to end.
void TurnSignalsIntoErrors() {
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
}

// The library's search for the folder of a first source XLIFF has no end where the server names the folder by
// a path, unless a host asks for one: nobody at a terminal can want that. Who has set the variable has
// decided.
void BoundTheFolderScan() {
  setenv("FENLOOM_XLIFF_BOUNDED_FOLDER_SCAN", "1", 0);
}

[[nodiscard]] std::string TraceLevels(const Arguments& arguments) {
  if (arguments.Has("trace")) return arguments.Text("trace");
  return Environment("FENLOOM_TRACE");
}

// In a work folder the name of a file is as good as its document's address, and where a folder is looked at, that of a
// directory as the folder's path. What is changed or cloned is never a whole directory by its local name: its files may
// hold edits, of which such a command knows nothing.
[[nodiscard]] Arguments WithAddresses(const CommandRow& command, Arguments arguments) {
  for (const OperandRow& operand : command.operands) {
    const bool isFolder = operand.name == ArgumentName("PATH") && std::strcmp(command.name, "clone") != 0;
    if (!isFolder && !(operand.name == ArgumentName("ADDRESS"))) continue;
    if (!arguments.Has(operand.name)) continue;
    std::vector<std::string> texts = arguments.All(operand.name);
    for (std::string& text : texts)
      text = isFolder ? AddressOfWorkName(text) : UidOfWorkFile(text).value_or(text);
    arguments.Set(operand.name, std::move(texts));
  }
  return arguments;
}

// The failure of a column that the command's rows don't have.
[[nodiscard]] std::optional<Failure> RefusalOfSorting(const CommandRow& command, const Arguments& arguments) {
  const std::string wanted = arguments.Text("sort");
  const auto& columns = command.columns;
  if (!arguments.Has("sort") || std::find(columns.begin(), columns.end(), wanted) != columns.end()) {
    return std::nullopt;
  }
  const std::vector<std::string> names(columns.begin(), columns.end());
  std::string all;
  for (const std::string& name : names) all += (all.empty() ? "" : ", ") + name;
  return Failure{ExitCode::Usage, "there is no column \"" + wanted + "\" to sort by; there are " + all,
                 DidYouMean(wanted, names)};
}

[[nodiscard]] ExitCode RunListing(const CommandRow& command, const Arguments& arguments, Host& host) {
  if (command.columns.empty()) return command.run(host, arguments);
  host.output().BeginListing(StandardScreen(), arguments.Text("sort"));
  const ExitCode code = command.run(host, arguments);
  host.output().EndListing();
  return code;
}

[[nodiscard]] ExitCode RunOnHost(const CommandRow& command, const Arguments& arguments, Host& host) {
  if (const auto failure = RefusalOfSorting(command, arguments)) return host.output().Fail(*failure);
  if (const auto failure = host.SetUp(command, arguments)) return host.output().Fail(*failure);
  if (command.requests == Requests::Some && std::strcmp(command.name, "recover") != 0) {
    WarnOfOpenEntries(host, host.ServersOf(command, arguments));
  }
  if (const auto failure = RefusalOfWorkFiles(command, arguments)) return host.output().Fail(*failure);
  const ExitCode code = RunListing(command, WithAddresses(command, arguments), host);
  if (code != ExitCode::Ok) return code;
  host.TellCredentialsAccepted();
  KeepCheckedIn(host, command, arguments);
  return code;
}

[[nodiscard]] ExitCode RunLogged(const CommandRow& command, const Arguments& arguments, Host& host) {
  const auto place = HarFile::PlaceFor(arguments.Text("log-http"));
  if (!place) return host.output().Fail(place.failure());
  HarFile log(*place, host.ObserveHttp());
  const ExitCode code = RunOnHost(command, arguments, host);
  const std::string fault = log.Write();
  if (!fault.empty()) host.output().Warning("the exchanges of this run are not logged: " + fault);
  return code;
}

[[nodiscard]] ExitCode RunCommand(const CommandRow& command, const Arguments& arguments, Output& output) {
  if (arguments.Has("trace")) {
    const std::string fault = TraceLevelsFault(arguments.Text("trace"));
    if (!fault.empty()) return output.Fail({ExitCode::Usage, fault});
  }
  StartTraceLog(TraceLevels(arguments), std::cerr);
  const ReasonCollector reasons;
  Host host(output);
  du::http::SetExchangeObserver(host.ExchangeWatch(), 0);
  return arguments.Has("log-http") ? RunLogged(command, arguments, host)
                                   : RunOnHost(command, arguments, host);
}

// Expected failures are no exceptions. What comes here all the same has undone all that was temporary on its
// way.
[[nodiscard]] ExitCode RunGuarded(const CommandRow& command, const Arguments& arguments, Output& output) {
  std::string what;
  try {
    return RunCommand(command, arguments, output);
  } catch (const std::bad_alloc&) {
    what = "there is not enough memory";
  } catch (const std::exception& exception) {
    what = std::string("an unexpected failure ended the command (") + exception.what() + ")";
  } catch (...) {
    what = "an unexpected failure ended the command";
  }
  Failure failure{ExitCode::Failure, what};
  if (const auto told = InterruptionReport::ToldBeforeException()) {
    failure.message += "; " + told->words;
    failure.changeIsOpen = told->changeIsOpen;
  }
  return output.Fail(failure);
}

[[nodiscard]] int Finish(Output& output, ExitCode code) {
  errno = 0;
  const bool written = output.Flush();
  // A reader that has enough and goes is no fault, and a shell that counts it sees a closed pipe.
  if (output.nobodyReads()) return 128 + SIGPIPE;
  if (!written && code == ExitCode::Ok) {
    const std::string reason = errno == 0 ? "" : std::string(": ") + std::strerror(errno);
    code = output.Fail({ExitCode::LocalFile, "cannot write standard output" + reason});
  }
  const int interruption = InterruptionStatus();
  return interruption != 0 ? interruption : static_cast<int>(code);
}

}  // namespace

int RunProgram(int argc, const char* const* argv) {
  KeepStandardDescriptors();
  // Before anything is printed. What is no terminal gets large pieces.
  if (isatty(STDOUT_FILENO) != 1) static_cast<void>(setvbuf(stdout, nullptr, _IOFBF, pieceSize));
  TurnSignalsIntoErrors();
  BoundTheFolderScan();
  WatchForInterruption();
  Output output(std::cout, std::cerr);
  if (const auto generated = Generate(argc, argv)) return Finish(output, *generated);

  const CommandLine line = ParseCommandLine(argc, argv);
  output.Configure(line.named, line.json, line.arguments.Has("quiet"));
  if (line.failure) return static_cast<int>(output.Fail(*line.failure));
  if (line.command == nullptr) {
    std::cout << line.text;
    return Finish(output, ExitCode::Ok);
  }
  const auto listed = WithListedAddresses(*line.command, line.arguments);
  if (!listed) return static_cast<int>(output.Fail(listed.failure()));
  const Arguments arguments = WithMountedAddresses(*line.command, *listed);
  const ExitCode code = RunGuarded(*line.command, arguments, output);
  if (code == ExitCode::Ok) AskMountsAnew(*line.command, *listed);
  return Finish(output, code);
}

}  // namespace vtdirect_cli
