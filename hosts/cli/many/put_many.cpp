#include "hosts/cli/many/put_many.h"

#include <set>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/many/batch.h"
#include "hosts/cli/many/matched_files.h"
#include "hosts/cli/storing/local_source.h"

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

}  // namespace

bool PutsMany(const Arguments& arguments) {
  const std::vector<std::string> files = arguments.All("FILE");
  return arguments.Has("from") || files.size() != 1 || IsFilePattern(files.front());
}

ExitCode PutMany(Host& host, const Arguments& arguments, PutOneFile putOne) {
  const std::string address = arguments.Text("ADDRESS");
  const MatchedFiles matched = FindMatchedFiles(arguments.All("FILE"));
  const std::vector<std::string>& files = matched.files;
  auto refusal = RefusalOfAddress(address);
  if (!refusal) refusal = RefusalOfOptions(arguments);
  if (!refusal) refusal = RefusalOfFiles(files);
  if (refusal) return host.output().Fail(*refusal);
  std::vector<BatchTask> tasks;
  for (const std::string& file : files) {
    BatchTask& task = tasks.emplace_back();
    task.address = address;
    task.run = [&arguments, &file, putOne](Host& taskHost) {
      Arguments one = arguments;
      one.Set("FILE", {file});
      ForgetReasons();
      return putOne(taskHost, one);
    };
  }
  BatchEnd end;
  // Who asked for more than there is may have meant something else.
  if (matched.failures.empty() || !arguments.Has("stop-on-error")) {
    end = RunOneByOne(host, tasks, arguments.Has("stop-on-error"));
  }
  if (end.worst == ExitCode::Interrupted) return end.worst;
  TellFailures(host, matched.failures, end);
  return FinishBatch(host, end, files.size() + matched.failures.size());
}

}  // namespace vtdirect_cli
