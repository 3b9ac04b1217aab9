#include "hosts/cli/many/put_many.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <set>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/failures/retrying.h"
#include "hosts/cli/many/batch.h"
#include "hosts/cli/many/matched_files.h"
#include "hosts/cli/many/put_places.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/storing/local_source.h"
#include "hosts/cli/storing/put_conditions.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/work_folder/pulling.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] std::optional<Failure> RefusalOfOptions(const Arguments& arguments) {
  for (const ArgumentName option :
       {ArgumentName("viewable"), ArgumentName("metadata"), ArgumentName("link")}) {
    if (!arguments.Has(option)) continue;
    return Failure{ExitCode::Usage, std::string("--") + option.text() +
                                        " belongs to one document, and several files are given"};
  }
  return std::nullopt;
}

[[nodiscard]] std::optional<Failure> RefusalOfFiles(const std::vector<std::string>& files) {
  std::set<std::string> names;
  for (const std::string& file : files) {
    const std::string name = BaseNameOf(file);
    if (names.insert(name).second) continue;
    return Failure{ExitCode::Usage, "two files are called \"" + name + "\", and would become one document"};
  }
  return std::nullopt;
}

[[nodiscard]] std::optional<Failure> RefusalOfAddress(const std::string& address) {
  const auto kind = RequireAddress(address);
  if (!kind) return kind.failure();
  if (address.ends_with('/') && !IsById(address, *kind)) return std::nullopt;
  return Failure{ExitCode::Usage, "several files take a folder, and \"" + address + "\" names none",
                 "the path of a folder ends in \"/\""};
}

// The directory of --recursive, without a closing "/".
[[nodiscard]] Result<std::string> SettleDirectory(const Arguments& arguments) {
  const std::vector<std::string> files = arguments.All("FILE");
  if (arguments.Has("from") || files.size() != 1) {
    return Failure{ExitCode::Usage, "--recursive takes one directory, and no list"};
  }
  std::string directory = files.front();
  struct stat facts = {};
  if (stat(directory.c_str(), &facts) != 0) {
    return Failure{ExitCode::LocalFile, "cannot read " + Printable(directory) + ": " + std::strerror(errno)};
  }
  if (!S_ISDIR(facts.st_mode)) {
    return Failure{ExitCode::Usage, Printable(directory) + " is no directory, and --recursive takes one"};
  }
  while (directory.size() > 1 && directory.ends_with('/')) directory.pop_back();
  return directory;
}

[[nodiscard]] std::vector<PutPlace> PlacesInFolder(const std::vector<std::string>& files,
                                                   const std::string& address) {
  std::vector<PutPlace> places;
  for (const std::string& file : files) places.push_back({file, address});
  return places;
}

[[nodiscard]] ExitCode PutEach(Host& host, const Arguments& arguments, const PutPlaces& wanted,
                               PutOneFile putOne) {
  std::vector<BatchTask> tasks;
  for (const PutPlace& place : wanted.places) {
    BatchTask& task = tasks.emplace_back();
    task.address = place.address;
    task.run = [&arguments, &place, putOne](Host& taskHost) {
      Arguments one = arguments;
      one.Set("FILE", {place.file});
      one.Set("ADDRESS", {place.address});
      ForgetReasons();
      return putOne(taskHost, one);
    };
  }
  BatchEnd end;
  // Who asked for more than there is may have meant something else.
  if (wanted.failures.empty() || !arguments.Has("stop-on-error")) {
    end = RunOneByOne(host, tasks, arguments.Has("stop-on-error"));
  }
  if (end.worst == ExitCode::Interrupted) return end.worst;
  TellFailures(host, wanted.failures, end);
  return FinishBatch(host, end, wanted.places.size() + wanted.failures.size());
}

[[nodiscard]] ExitCode PutDirectory(Host& host, const Arguments& arguments, PutOneFile putOne) {
  const std::string address = arguments.Text("ADDRESS");
  auto refusal = RefusalOfAddress(address);
  if (!refusal) refusal = RefusalOfOptions(arguments);
  if (!refusal) refusal = RefusalOfConditions(arguments);
  if (refusal) return host.output().Fail(*refusal);
  const auto directory = SettleDirectory(arguments);
  if (!directory) return host.output().Fail(directory.failure());
  const LocalTree tree = ReadLocalTree(*directory);
  for (const auto& [path, why] : tree.leftOut) {
    host.output().Note("left out " + Printable(PathBelow(*directory, path)) + ": " + why);
  }
  if (tree.files.empty() && tree.failures.empty()) {
    host.output().Note("there are no files to send in " + Printable(*directory));
  }
  PutPlaces wanted = FindPutPlaces(*directory, tree, address, {usualThreads, usualRetries});
  if (Interrupted()) return host.output().Fail(InterruptedFailure());
  wanted.failures.insert(wanted.failures.end(), tree.failures.begin(), tree.failures.end());
  return PutEach(host, arguments, wanted, putOne);
}

}  // namespace

bool PutsMany(const Arguments& arguments) {
  const std::vector<std::string> files = arguments.All("FILE");
  return arguments.Has("recursive") || arguments.Has("from") || files.size() != 1 ||
         IsFilePattern(files.front());
}

ExitCode PutMany(Host& host, const Arguments& arguments, PutOneFile putOne) {
  if (arguments.Has("recursive")) return PutDirectory(host, arguments, putOne);
  const std::string address = arguments.Text("ADDRESS");
  const MatchedFiles matched = FindMatchedFiles(arguments.All("FILE"));
  auto refusal = RefusalOfAddress(address);
  if (!refusal) refusal = RefusalOfOptions(arguments);
  if (!refusal) refusal = RefusalOfFiles(matched.files);
  if (refusal) return host.output().Fail(*refusal);
  return PutEach(host, arguments, {PlacesInFolder(matched.files, address), matched.failures}, putOne);
}

}  // namespace vtdirect_cli
