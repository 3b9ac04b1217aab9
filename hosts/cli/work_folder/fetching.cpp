#include "hosts/cli/work_folder/fetching.h"

#include <unistd.h>
#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <cstring>

#include "hosts/cli/files/fetch_record.h"
#include "hosts/cli/files/target_file.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/work_folder/why_failed.h"

namespace vtdirect_cli {
namespace {

using End = FetchResult::End;

[[nodiscard]] FetchResult Failed(Failure failure) {
  return {End::Failed, std::move(failure), {}};
}

[[nodiscard]] FetchResult Left(const std::string& path, const std::string& why,
                               const std::string& advice = {}) {
  return {End::Left, Failure{ExitCode::Failure, Printable(path) + " " + why, advice}, {}};
}

[[nodiscard]] Failure CannotWrite(const std::string& path, int error) {
  return {ExitCode::LocalFile, "cannot write " + Printable(path) + ": " + std::strerror(error)};
}

// Why the file that is there is not to be replaced; nothing when it may be, with its facts.
[[nodiscard]] std::optional<FetchResult> WhyItStays(const WorkFolder& folder, const Comparison& wanted,
                                                    std::optional<struct stat>& expected) {
  const std::string place = folder.OnDisk(wanted.path);
  struct stat facts = {};
  if (lstat(place.c_str(), &facts) != 0) {
    if (errno == ENOENT) return std::nullopt;
    return Failed(CannotWrite(folder.Shown(wanted.path), errno));
  }
  if (!S_ISREG(facts.st_mode)) return Left(folder.Shown(wanted.path), "is no file here; it is left as it is");
  if (!wanted.file || !HasBytesOf(place, FactsOf(place), *wanted.file)) {
    return Left(folder.Shown(wanted.path), "was changed here; it is left as it is");
  }
  if ((facts.st_mode & 0222U) == 0 || access(place.c_str(), W_OK) != 0) {
    return Left(folder.Shown(wanted.path), "is write-protected; it is left as it is",
                "chmod u+w lets it be replaced");
  }
  expected = facts;
  return std::nullopt;
}

[[nodiscard]] Failure NotPlaced(const std::string& path, int error) {
  if (error == ESTALE || error == EEXIST) {
    return {ExitCode::Failure, Printable(path) + " was written to meanwhile; it is left as it is"};
  }
  return CannotWrite(path, error);
}

[[nodiscard]] FetchResult Replace(WorkFolder& folder, const Comparison& wanted,
                                  const FetchProgress& progress) {
  std::optional<struct stat> expected;
  if (auto stays = WhyItStays(folder, wanted, expected)) return *stays;
  if (const int error = MakeFoldersFor(folder.root(), wanted.path); error != 0) {
    return Failed(CannotWrite(folder.Shown(wanted.path), error));
  }
  Arrival arrival = FetchVersion(folder, folder.incoming(), *wanted.document, progress);
  if (arrival.hasNoContent) return {End::Empty, std::nullopt, {}};
  if (arrival.failure) return Failed(*arrival.failure);
  if (const auto failure = PutInPlace(folder, arrival, expected)) return Failed(*failure);
  return {End::Fetched, std::nullopt, arrival.file};
}

}  // namespace

Arrival FetchVersion(const WorkFolder& folder, const std::string& directory, const RemoteDocument& document,
                     const FetchProgress& progress) {
  Arrival arrival;
  arrival.pending = std::make_unique<DurableFile>(folder.OnDisk(document.path), directory);
  if (const int error = arrival.pending->error(); error != 0) {
    arrival.failure = CannotWrite(folder.Shown(document.path), error);
    return arrival;
  }
  const VtDirectManager::Outcome outcome;
  VtDirectManager::DownloadOptions options;
  options.progress = [&progress](std::size_t received, std::size_t) {
    if (progress) progress(received);
    return !Interrupted();
  };
  options.compareSize = true;
  std::string uid;
  const std::string& local = arrival.pending->path();
  if (!VtDirectManager::GetFile(document.uid.c_str(), local.c_str(), uid, options)) {
    arrival.failure = WhyFailed(outcome, "cannot fetch " + Printable(folder.Shown(document.path)));
    arrival.hasNoContent =
        arrival.failure->code == ExitCode::NotFound && VtDirectManager::ShouldCreate(document.uid.c_str());
    if (const int full = Interrupted() ? 0 : ProbeWritable(local); full != 0) {
      arrival.failure = CannotWrite(folder.Shown(document.path), full);
    }
    return arrival;
  }
  const auto measured = Measure(local);
  if (!measured) {
    arrival.failure = CannotWrite(folder.Shown(document.path), EIO);
    return arrival;
  }
  arrival.file = {document.path,  document.address, document.uid,    document.version,
                  measured->size, StampFile(local), measured->sha256};
  return arrival;
}

std::optional<Failure> PutInPlace(WorkFolder& folder, Arrival& arrival,
                                  const std::optional<struct stat>& before) {
  // Nothing lies in its place without a word of where it came from.
  const std::string fault = folder.store().Announce(arrival.file);
  if (!fault.empty()) return StoreFailure(fault);
  if (const int error = arrival.pending->Commit(DurableFile::Permissions::OfTarget,
                                                DurableFile::Condition::AsBefore, before);
      error != 0) {
    static_cast<void>(folder.store().Withdraw(arrival.file.path));
    return NotPlaced(folder.Shown(arrival.file.path), error);
  }
  static_cast<void>(folder.store().Keep(arrival.file));
  return std::nullopt;
}

FetchResult RecogniseFile(WorkFolder& folder, const Comparison& wanted, const FetchProgress& progress) {
  const std::string place = folder.OnDisk(wanted.path);
  const LocalFacts facts = FactsOf(place);
  if (facts.kind != LocalFacts::Kind::File) return {End::Left, std::nullopt, {}};
  const VtDirectManager::Outcome outcome;
  const auto size = VtDirectManager::GetContentSize(wanted.document->uid.c_str());
  if (!size) return Failed(WhyFailed(outcome, "cannot ask for " + Printable(folder.Shown(wanted.path))));
  if (*size != facts.size) return {End::Left, std::nullopt, {}};
  Arrival arrival = FetchVersion(folder, folder.incoming(), *wanted.document, progress);
  if (arrival.failure) return Failed(*arrival.failure);
  if (!HasBytesOf(place, facts, arrival.file)) return {End::Left, std::nullopt, {}};
  arrival.file.time = TimeToKeep(facts.time, facts.seen);
  const std::string fault = folder.store().Keep(arrival.file);
  if (!fault.empty()) return Failed(StoreFailure(fault));
  return {End::Known, std::nullopt, arrival.file};
}

FetchResult FetchFile(WorkFolder& folder, const Comparison& wanted, const FetchProgress& progress) {
  if (wanted.state != FileState::Both && wanted.state != FileState::InTheWay) {
    return Replace(folder, wanted, progress);
  }
  FetchResult result = RecogniseFile(folder, wanted, progress);
  if (result.end != End::Left) return result;
  if (wanted.state == FileState::InTheWay) {
    return Left(folder.Shown(wanted.path),
                "is here and did not come from the server, which has another document of that name; it is "
                "left as it is",
                "move it away and pull again");
  }
  return Left(
      folder.Shown(wanted.path),
      "was changed here, and the server has version " + wanted.document->version + "; it is left as it is",
      "vtdirect diff shows your changes, and vtdirect revert keeps them beside it before you pull again");
}

}  // namespace vtdirect_cli
