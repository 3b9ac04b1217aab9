#include "hosts/cli/many/get_many.h"

#include <sys/stat.h>
#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <mutex>

#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/commands/dry_run.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/files/target_file.h"
#include "hosts/cli/many/batch_options.h"
#include "hosts/cli/many/many_progress.h"
#include "hosts/cli/many/wanted_files.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/texts/progress_line.h"
#include "hosts/cli/work_folder/local_files.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] Failure CannotMake(const std::string& directory, int error) {
  return {ExitCode::LocalFile,
          "cannot make the directory " + Printable(directory) + ": " + std::strerror(error)};
}

// The directory that all files go to, without a closing "/".
[[nodiscard]] Result<std::string> SettleDirectory(const Arguments& arguments) {
  std::string directory = arguments.Text("output");
  if (directory == "-") return Failure{ExitCode::Usage, "\"-o -\" takes one document"};
  if (!NeedsFileName(directory) && !arguments.Has("recursive")) {
    return Failure{ExitCode::Usage, "several documents take a directory, and --output names a file"};
  }
  while (directory.size() > 1 && directory.ends_with('/')) directory.pop_back();
  if (directory.empty()) return std::string(".");
  const bool isMade = !arguments.Has("recursive") || IsDryRun(arguments) ||
                      mkdir(directory.c_str(), 0777) == 0 || errno == EEXIST;
  if (!isMade) return CannotMake(directory, errno);
  return directory;
}

// One call of the command.
class Fetching {
 public:
  Fetching(Host& host, const Arguments& arguments, SettleSource settle, std::string directory,
           const WantedFiles& wanted)
      : host_(host),
        arguments_(arguments),
        settle_(settle),
        isDryRun_(IsDryRun(arguments)),
        directory_(std::move(directory)),
        wanted_(wanted),
        progress_(ShowsProgress() ? &std::cerr : nullptr, TerminalWidth(), wanted.files.size()) {}

  [[nodiscard]] ExitCode Run(BatchOptions options) {
    options.verbose = arguments_.Has("verbose") && !host_.output().quiet();
    options.inOrder = isDryRun_;
    options.makeRoom = [this] { progress_.Clear(); };
    BatchEnd end;
    if (!isDryRun_) TellFailures(host_, MakeFolders(), end);
    if (end.failures.empty() || !options.stopOnError) Add(RunTogether(host_, Tasks(), options), end);
    progress_.Clear();
    TellFailures(host_, wanted_.failures, end);
    const std::size_t all = wanted_.files.size() + wanted_.failures.size();
    host_.output().Note(std::to_string(saved_) + " of " + std::to_string(all) + " documents " +
                        (isDryRun_ ? "would be saved" : "saved, " + BytesToTell(bytes_)));
    return FinishBatch(host_, end, all);
  }

 private:
  static void Add(const BatchEnd& fetched, BatchEnd& end) {
    end.worst = Worse(end.worst, fetched.worst);
    end.failures.insert(end.failures.end(), fetched.failures.begin(), fetched.failures.end());
    end.notAsked = fetched.notAsked;
  }

  [[nodiscard]] bool ShowsProgress() const {
    return !host_.output().quiet() && !host_.output().json() && TerminalWidth() != 0;
  }

  [[nodiscard]] std::vector<Failure> MakeFolders() const {
    std::vector<Failure> failures;
    for (const std::string& folder : wanted_.folders) {
      if (const int error = MakeFoldersFor(directory_, folder); error != 0) {
        failures.push_back(CannotMake(directory_ + "/" + folder, error));
      }
    }
    return failures;
  }

  [[nodiscard]] std::vector<BatchTask> Tasks() {
    std::vector<BatchTask> tasks;
    for (std::size_t number = 0; number < wanted_.files.size(); ++number) {
      tasks.push_back(
          {wanted_.files[number].address, [this, number](Host& host) { return FetchOne(host, number); }});
    }
    return tasks;
  }

  [[nodiscard]] ExitCode FetchOne(Host& host, std::size_t number) {
    const WantedFile& wanted = wanted_.files[number];
    progress_.Begin(number, wanted.place);
    const ExitCode code = Fetch(host, wanted, number);
    progress_.End(number);
    return code;
  }

  [[nodiscard]] ExitCode Fetch(Host& host, const WantedFile& wanted, std::size_t number) {
    auto download = Settle(host, wanted);
    if (!download) return host.output().Fail(download.failure());
    if (Interrupted()) return host.output().Fail(InterruptedFailure());
    download->described = {{"address", wanted.address}};
    download->progress = [this, number](std::size_t received) { progress_.Advance(number, received); };
    const auto size = PerformDownload(host, *download);
    if (!size) {
      if (!HasNoContent(wanted, size.failure())) return host.output().Fail(size.failure());
      host.output().Warning(wanted.address + " has no content on the server yet");
      return ExitCode::Ok;
    }
    const std::lock_guard lock(mutex_);
    ++saved_;
    bytes_ += *size;
    return ExitCode::Ok;
  }

  // A folder may hold a document without a content, which nobody has asked for by its name.
  [[nodiscard]] static bool HasNoContent(const WantedFile& wanted, const Failure& failure) {
    const bool isMissing = failure.reason && failure.reason->kind == VtDirectManager::FailureKind::NotFound;
    return !wanted.uid.empty() && isMissing && VtDirectManager::ShouldCreate(wanted.uid.c_str());
  }

  // What a listing has told of is not asked for once more.
  [[nodiscard]] Result<Download> Settle(Host& host, const WantedFile& wanted) const {
    // Nothing is written into a directory that a link leads to: it could be anywhere.
    if (const int error = isDryRun_ ? 0 : MakeFoldersFor(directory_, wanted.place); error != 0) {
      return CannotMake(InDirectory(DirectoryOf(wanted.place)), error);
    }
    const std::string place = wanted.place.empty() ? "" : InDirectory(wanted.place);
    if (wanted.uid.empty() || CheckoutBook().Find(wanted.uid)) {
      return settle_(host, arguments_, wanted.uid.empty() ? wanted.address : wanted.uid, place);
    }
    auto download = SettleDownload(host, arguments_, wanted.address, place);
    if (!download) return download.failure();
    download->source = wanted.uid;
    download->version = wanted.version;
    return *download;
  }

  [[nodiscard]] std::string InDirectory(const std::string& place) const {
    return directory_ == "." ? place : directory_ + (directory_.ends_with('/') ? "" : "/") + place;
  }

  Host& host_;
  const Arguments& arguments_;
  SettleSource settle_;
  bool isDryRun_;
  std::string directory_;
  const WantedFiles& wanted_;
  ManyProgress progress_;
  std::mutex mutex_;
  std::size_t saved_ = 0;
  std::uint64_t bytes_ = 0;
};

}  // namespace

std::vector<OptionRow> GetManyOptions() {
  std::vector<OptionRow> options = {
      {.name = "verbose", .letter = 'v', .help = "Of several documents, tell of each one that is saved."}};
  for (const OptionRow& row :
       ReadingManyOptions("Fetch folders too, with all that is in them and below them.")) {
    options.push_back(row);
  }
  return options;
}

ExitCode GetMany(Host& host, const Arguments& arguments, SettleSource settle) {
  const auto options = ReadBatchOptions(arguments);
  if (!options) return host.output().Fail(options.failure());
  auto directory = SettleDirectory(arguments);
  if (!directory) return host.output().Fail(directory.failure());
  const WantedFiles wanted = FindWantedFiles(arguments, {options->threads, options->retries});
  if (Interrupted()) return host.output().Fail(InterruptedFailure());
  return Fetching(host, arguments, settle, *directory, wanted).Run(*options);
}

}  // namespace vtdirect_cli
