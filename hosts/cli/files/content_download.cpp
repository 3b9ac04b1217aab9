#include "hosts/cli/files/content_download.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vtdirect/platform/failure_detail.h>
#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <cstring>
#include <iostream>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/recovery.h"
#include "hosts/cli/commands/dry_run.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/files/fetch_record.h"
#include "hosts/cli/files/replacement.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/network_failures.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/texts/progress_line.h"

namespace vtdirect_cli {
namespace {

// How much of a content has come, and how much was announced; 0 without a word of that.
struct Progress {
  std::size_t received = 0;
  std::size_t announced = 0;
};

[[nodiscard]] Failure WriteFailure(const std::string& what, int error) {
  if (Interrupted()) return InterruptedFailure();
  return {ExitCode::LocalFile, "cannot write " + what + ": " + std::strerror(error)};
}

// Why nothing can be fetched from an address, which may be a folder's.
[[nodiscard]] Failure DiagnoseDownload(Host& host, const std::string& address, Seen seen) {
  Failure failure = Diagnose(host, address, seen);
  if (failure.code != ExitCode::NotFound || !IsPathOfFolder(address)) return failure;
  return {ExitCode::Failure, address + " is a folder; nothing was fetched",
          CommandToType("get -r", address) + " fetches it"};
}

// Why no file name could be found for the target.
[[nodiscard]] Failure NamelessFailure(Host& host, const std::string& address) {
  if (address.ends_with('/')) {
    return {ExitCode::Usage, "\"" + address + "\" is a folder's path; nothing was fetched",
            CommandToType("get -r", address) + " fetches a folder"};
  }
  if (!VtDirectManager::FileExists(address.c_str())) return DiagnoseDownload(host, address, Seen::Missing);
  return {ExitCode::Usage, "\"" + address + "\" has no file name; name a file with -o"};
}

[[nodiscard]] bool IsOfOtherLength(const std::optional<Reason>& reason) {
  constexpr auto detail = du::http::FailureDetail::ContentOfOtherLength;
  return reason && reason->platformDetail == static_cast<int>(detail);
}

// The class of a failed GetFile. The library's status tells a download that failed and not why; see Diagnose.
[[nodiscard]] Failure DownloadFailure(Host& host, const Download& download, const std::string& localPath,
                                      const Progress& progress) {
  if (Interrupted()) return InterruptedFailure();
  if (const int error = ProbeWritable(localPath); error != 0)
    return WriteFailure(Printable(localPath), error);
  const auto reason = LastReason();
  if (IsOfOtherLength(reason)) {
    return WithReason({ExitCode::DownloadFailed,
                       "the content of " + download.address + " was not taken: " + NetworkHint(reason)});
  }
  const int status = reason ? reason->httpStatus : 0;
  if (progress.received == 0 || status == 401) return DiagnoseDownload(host, download.address, Seen::Unknown);
  // What came is then no part of the content, but what the server says instead of it.
  if (status != 0 && status != 200) {
    return WithReason({ExitCode::DownloadFailed,
                       "the content of " + download.address + " was not given: " + AnswerText(*reason)});
  }
  std::string text =
      "the download of " + download.address + " broke off after " + ByteCount(progress.received);
  if (progress.announced > 0) text += " of " + std::to_string(progress.announced);
  const std::string why = NetworkHint(reason);
  return WithReason({ExitCode::DownloadFailed, why.empty() ? text : text + ": " + why});
}

// The UID to go on with.
[[nodiscard]] Result<std::string> Fetch(Host& host, const Download& download, const std::string& localPath) {
  const bool quiet = host.output().quiet() || host.output().json();
  const std::size_t width = quiet || download.progress ? 0 : TerminalWidth();
  const std::string& name = download.target.path.empty() ? download.address : download.target.path;
  ProgressLine line(width == 0 ? nullptr : &std::cerr, name, width);
  Progress progress;
  VtDirectManager::DownloadOptions options;
  options.progress = [&download, &progress, &line](std::size_t received, std::size_t announced) {
    progress = {received, announced};
    line.Show(received, announced, ProgressLine::Clock::now());
    if (download.progress) download.progress(received);
    return !Interrupted();
  };
  options.compareSize = true;
  const std::string& source = download.source.empty() ? download.address : download.source;
  std::string uid;
  ForgetReasons();
  const bool done = VtDirectManager::GetFile(source.c_str(), localPath.c_str(), uid, options);
  line.Clear();
  if (!done) return DownloadFailure(host, download, localPath, progress);
  if (Interrupted()) return InterruptedFailure();
  return download.uidToGoOnWith.empty() ? uid : download.uidToGoOnWith;
}

[[nodiscard]] Failure ChangedMeanwhile(const std::string& path) {
  return {ExitCode::LocalFile,
          path +
              " was written to while the content was fetched, and is not replaced; the same command can be "
              "given again"};
}

[[nodiscard]] std::uint64_t SizeOf(const std::string& path) {
  struct stat facts = {};
  return stat(path.c_str(), &facts) == 0 ? static_cast<std::uint64_t>(facts.st_size) : 0;
}

void Report(Host& host, const Download& download, const std::string& uid, std::uint64_t size) {
  Record record = download.described;
  record.insert(record.end(), {{"uid", uid}, {"file", download.target.path}, {"bytes", size}});
  host.output().JsonOnly(record);
  host.output().Note("saved " + download.target.path + ", " + BytesToTell(size));
}

// What is fetched, as a record of it names it.
[[nodiscard]] const std::string& NameOfSource(const Download& download) {
  if (!download.uidToGoOnWith.empty()) return download.uidToGoOnWith;
  return download.source.empty() ? download.address : download.source;
}

[[nodiscard]] Result<std::uint64_t> FetchIntoFile(Host& host, const Download& download) {
  if (auto failure = RefusalToReplaceCopy(download.target, download.force, NameOfSource(download))) {
    return *failure;
  }
  DurableFile pending(download.target.path);
  if (pending.error() != 0) return WriteFailure(download.target.path, pending.error());
  const auto uid = Fetch(host, download, pending.path());
  if (!uid) return uid.failure();
  const std::uint64_t size = SizeOf(pending.path());
  // Before anybody else can write to it: what is recorded is what the server has.
  auto record = Measure(pending.path());
  const auto condition = download.force ? DurableFile::Condition::Anything : DurableFile::Condition::AsBefore;
  if (auto failure = RefusalToLoseContent(download.target, download.force, record ? record->sha256 : "")) {
    return *failure;
  }
  const int error = pending.Commit(DurableFile::Permissions::OfTarget, condition, download.target.before);
  if (error == ESTALE) return ChangedMeanwhile(download.target.path);
  if (error != 0) return WriteFailure(download.target.path, error);
  if (record) {
    record->address = download.address;
    record->uid = *uid;
    record->version = download.version;
    record->copyUse = download.isOfWorkingCopy ? CopyUse::Fetched : CopyUse::None;
    RecordFetch(host, download.target.path, *record);
  }
  Report(host, download, *uid, size);
  return size;
}

// A stream gets nothing until the content is complete, so that its reader never takes a part, or the server's
// refusal, for the whole.
[[nodiscard]] Result<std::uint64_t> FetchIntoStream(Host& host, const Download& download, int descriptor,
                                                    const std::string& name) {
  const DurableFile pending(host.workDirectory() + "/content");
  if (pending.error() != 0) return WriteFailure(host.workDirectory(), pending.error());
  const auto uid = Fetch(host, download, pending.path());
  if (!uid) return uid.failure();
  const int error = CopyToDescriptor(pending.path(), descriptor);
  if (error != 0) return WriteFailure(name, error);
  const std::uint64_t size = SizeOf(pending.path());
  if (download.target.kind == Target::Kind::Device) Report(host, download, *uid, size);
  return size;
}

[[nodiscard]] Result<std::uint64_t> FetchIntoDevice(Host& host, const Download& download) {
  const int descriptor = open(download.target.path.c_str(), O_WRONLY | O_CLOEXEC);
  if (descriptor < 0) return WriteFailure(download.target.path, errno);
  auto size = FetchIntoStream(host, download, descriptor, download.target.path);
  close(descriptor);
  return size;
}

// What a listing has told of is there.
[[nodiscard]] bool IsThere(const Download& download) {
  const std::string& source = download.source.empty() ? download.address : download.source;
  return !download.version.empty() || VtDirectManager::FileExists(source.c_str());
}

[[nodiscard]] Result<std::uint64_t> TellDownload(Host& host, const Download& download) {
  ForgetReasons();
  if (!IsThere(download)) return DiagnoseDownload(host, download.address, Seen::Unknown);
  const std::string file = download.target.path.empty() ? "-" : download.target.path;
  Record json = download.described;
  json.insert(json.end(), {{"file", file}, {"dry_run", true}});
  const std::string would = download.target.before ? "would replace" : "would write";
  host.output().Row({{"would", would}, {"file", file}, {"address", download.address}}, json);
  return std::uint64_t{0};
}

}  // namespace

std::vector<OptionRow> DownloadOptions() {
  return {
      {.name = "output",
       .letter = 'o',
       .value = "FILE",
       .completion = Completion::Files,
       .help = "Write to FILE; into FILE when that is a directory or ends in \"/\"; to standard output when "
               "it is "
               "\"-\", once the content has arrived whole."},
      {.name = "no-clobber", .letter = 'n', .help = "Fail when the target exists."},
      {.name = "force",
       .letter = 'f',
       .help =
           "Replace a file that vtdirect did not save, or that was changed since; what is in it is lost."},
      DryRunOption("Say which files would be written, and fetch none.")};
}

std::vector<MemberRow> DownloadMembers() {
  return {{"uid", MemberType::Text, "without --dry-run", "the object's UID"},
          {"file", MemberType::Text, nullptr, "the local file"},
          {"bytes", MemberType::Number, "without --dry-run", "its size"},
          DryRunMember("true: the file could be written, and was not")};
}

std::optional<Failure> CheckDownloadOptions(Host& host, const Arguments& arguments) {
  const std::string output = arguments.Text("output");
  if (arguments.Has("output") && output.empty())
    return Failure{ExitCode::Usage, "--output takes a file name"};
  if (arguments.Has("force") && arguments.Has("no-clobber")) {
    return Failure{ExitCode::Usage, "--force and --no-clobber can't be meant together"};
  }
  if (output == "-" && host.output().json()) {
    return Failure{ExitCode::Usage, "--json and \"-o -\" both want standard output; give a file"};
  }
  return std::nullopt;
}

Result<Download> SettleDownload(Host& host, const Arguments& arguments, const std::string& address,
                                const std::string& place) {
  Download download;
  download.address = address;
  download.noClobber = arguments.Has("no-clobber");
  download.force = arguments.Has("force");
  download.isDryRun = IsDryRun(arguments);
  const std::string output = place.empty() ? arguments.Text("output") : place;
  std::string name;
  if (place.empty() && NeedsFileName(output)) {
    name = SafeFileName(FileNameOf(download.address));
    if (name.empty()) return NamelessFailure(host, download.address);
  }
  const auto target = SettleTarget(output, name, download.noClobber);
  if (!target) return target.failure();
  if (auto failure = RefusalOfReplacement(*target, download.force)) return *failure;
  download.target = *target;
  return download;
}

void RecordFetch(Host& host, const std::string& file, FetchRecord record) {
  std::string newest;
  if (record.version.empty()) {
    static_cast<void>(VtDirectManager::GetStatus(record.uid.c_str(), record.version, newest, nullptr));
  }
  const std::string fault = FetchRecords().Keep(file, record);
  if (fault.empty()) return;
  host.output().Warning("it is not recorded that the server has the content of " + file + ": " + fault +
                        "; a further get into it takes --force");
}

void KeepContentOf(Host& host, const std::string& workingCopy, const std::string& iteration,
                   const std::string& sha256) {
  auto records = FetchRecords().OfWorkingCopy(workingCopy);
  if (records.empty()) return;
  const std::string sum = sha256.empty() ? SumOnServer(host, iteration) : sha256;
  for (FetchRecord& record : records) {
    // It stays that of a working copy that is gone, and its file is not replaced.
    if (record.sha256 != sum) continue;
    record.uid = iteration;
    record.version.clear();
    record.copyUse = CopyUse::None;
    RecordFetch(host, record.file, record);
  }
}

void ForgetContentOf(const std::string& workingCopy) {
  for (const FetchRecord& record : FetchRecords().OfWorkingCopy(workingCopy)) {
    FetchRecords().Forget(record.file);
  }
}

Result<std::uint64_t> PerformDownload(Host& host, const Download& download) {
  if (download.isDryRun) return TellDownload(host, download);
  switch (download.target.kind) {
    case Target::Kind::StandardOutput:
      return FetchIntoStream(host, download, STDOUT_FILENO, "standard output");
    case Target::Kind::Device:
      return FetchIntoDevice(host, download);
    case Target::Kind::File:
      break;
  }
  return FetchIntoFile(host, download);
}

ExitCode RunDownload(Host& host, const Download& download) {
  const auto size = PerformDownload(host, download);
  return size ? ExitCode::Ok : host.output().Fail(size.failure());
}

}  // namespace vtdirect_cli
