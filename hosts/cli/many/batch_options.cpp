#include "hosts/cli/many/batch_options.h"

#include <algorithm>

#include "hosts/cli/commands/dry_run.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/failures/retrying.h"
#include "hosts/cli/many/listed_addresses.h"
#include "hosts/cli/work_folder/pulling.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] OptionRow StopOption() {
  return {.name = "stop-on-error", .help = "Begin nothing further when something has failed."};
}

[[nodiscard]] Subjects SubjectsOf(Host& host, const Arguments& arguments, Wanted wanted, OfFolders ofFolders,
                                  Effort effort) {
  const std::vector<std::string> addresses = arguments.All("ADDRESS");
  if (!arguments.Has("recursive")) return FindSubjects(addresses, wanted, effort);
  Subjects subjects =
      WithDocumentsBelow(FindSubjects(addresses, Wanted::DocumentsAndFolders, effort), ofFolders, effort);
  if (!addresses.empty() && subjects.found.empty() && subjects.failures.empty()) {
    host.output().Note(ofFolders == OfFolders::All ? "there are no documents"
                                                   : "vtdirect has checked out nothing there");
  }
  return subjects;
}

[[nodiscard]] std::vector<BatchTask> TasksOf(const Arguments& arguments, const std::vector<Subject>& subjects,
                                             WorkOnOne one, PassOverOne passOver = nullptr) {
  std::vector<BatchTask> tasks;
  for (const Subject& subject : subjects) {
    BatchTask& task = tasks.emplace_back();
    task.address = subject.address;
    task.run = [&arguments, &subject, one](Host& host) {
      ForgetReasons();
      return one(host, arguments, subject.address);
    };
    if (passOver == nullptr) continue;
    task.passOver = [&subject, passOver](Host& host, const Failure& why) {
      return passOver(host, subject.address, why);
    };
  }
  return tasks;
}

}  // namespace

bool IsForMany(const Arguments& arguments) {
  const std::vector<std::string> addresses = arguments.All("ADDRESS");
  return arguments.Has("from") || arguments.Has("recursive") || addresses.size() != 1 ||
         IsPattern(addresses.front());
}

std::vector<OptionRow> ReadingManyOptions(const char* recursiveHelp) {
  std::vector<OptionRow> options = {RecursiveOption(recursiveHelp)};
  for (const OptionRow& row : ListOptions()) options.push_back(row);
  options.push_back(ParallelOption());
  options.push_back(RetriesOption());
  options.push_back(StopOption());
  return options;
}

std::vector<OptionRow> ChangingManyOptions(OfFolders ofFolders) {
  const bool takesAll = ofFolders == OfFolders::All;
  std::vector<OptionRow> options = {RecursiveOption(
      takesAll ? "Take folders too, for all documents in them and below them."
               : "Take folders too, for what vtdirect has checked out in them and below them.")};
  for (const OptionRow& row : ListOptions()) options.push_back(row);
  options.push_back(StopOption());
  options.push_back(DryRunOption());
  return options;
}

Result<BatchOptions> ReadBatchOptions(const Arguments& arguments) {
  const auto threads = ReadThreads(arguments);
  if (!threads) return threads.failure();
  const auto retries = ReadRetries(arguments);
  if (!retries) return retries.failure();
  BatchOptions options;
  options.threads = *threads;
  options.retries = *retries;
  options.stopOnError = arguments.Has("stop-on-error");
  options.verbose = true;
  return options;
}

ExitCode ReadEach(Host& host, const Arguments& arguments, Wanted wanted, WorkOnOne readOne,
                  PassOverOne passOver) {
  const auto options = ReadBatchOptions(arguments);
  if (!options) return host.output().Fail(options.failure());
  if (!IsForMany(arguments)) return readOne(host, arguments, arguments.Text("ADDRESS"));
  const Subjects subjects =
      SubjectsOf(host, arguments, wanted, OfFolders::All, {options->threads, options->retries});
  BatchEnd end = RunTogether(host, TasksOf(arguments, subjects.found, readOne, passOver), *options);
  TellFailures(host, subjects.failures, end);
  return FinishBatch(host, end, subjects.found.size() + subjects.failures.size());
}

ExitCode ChangeEach(Host& host, const Arguments& arguments, OfFolders ofFolders, WorkOnOne changeOne) {
  if (!IsForMany(arguments)) return changeOne(host, arguments, arguments.Text("ADDRESS"));
  const Subjects subjects =
      SubjectsOf(host, arguments, Wanted::Documents, ofFolders, {usualThreads, usualRetries});
  BatchEnd end;
  // Who asked for more than there is may have meant something else.
  if (subjects.failures.empty() || !arguments.Has("stop-on-error")) {
    end = RunOneByOne(host, TasksOf(arguments, subjects.found, changeOne), arguments.Has("stop-on-error"));
  }
  if (end.worst == ExitCode::Interrupted) return end.worst;
  TellFailures(host, subjects.failures, end);
  return FinishBatch(host, end, subjects.found.size() + subjects.failures.size());
}

}  // namespace vtdirect_cli
