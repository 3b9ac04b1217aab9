#include "hosts/cli/work_folder/pulling.h"

#include <charconv>
#include <cstring>
#include <iostream>

#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/retrying.h"
#include "hosts/cli/many/batch.h"
#include "hosts/cli/many/many_progress.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/texts/progress_line.h"
#include "hosts/cli/work_folder/fetching.h"
#include "hosts/cli/work_folder/parallel.h"

namespace vtdirect_cli {
namespace {

using End = FetchResult::End;

[[nodiscard]] bool IsToFetch(const Comparison& comparison) {
  switch (comparison.state) {
    case FileState::Newer:
    case FileState::Both:
    case FileState::Missing:
    case FileState::New:
    case FileState::InTheWay:
      return comparison.document.has_value();
    default:
      return false;
  }
}

/// Tells of the files, on whatever thread they come to their end.
class PullReport {
 public:
  PullReport(Host& host, const WorkFolder& folder) : host_(host), folder_(folder) {}

  // Called by one thread at a time.
  void Tell(const Comparison& wanted, const FetchResult& result) {
    if (result.failure) Take(*result.failure);
    if (result.end == End::Empty) {
      host_.output().Note(folder_.Shown(wanted.path) + " has no content on the server yet");
    }
    if (result.end != End::Fetched && result.end != End::Known) return;
    ++(result.end == End::Fetched ? fetched_ : known_);
    bytes_ += result.end == End::Fetched ? result.file.size : 0;
    const std::string action = result.end == End::Fetched ? "fetched" : "known";
    host_.output().Row({{"action", action}, {"file", folder_.Shown(wanted.path)}},
                       {{"action", action},
                        {"file", wanted.path},
                        {"path", wanted.document->address},
                        {"uid", result.file.uid},
                        {"version", result.file.version},
                        {"bytes", result.file.size}});
    static_cast<void>(host_.output().FlushRow());
  }

  // Of a folder, which is none of the files.
  void Tell(const Failure& failure) {
    ++others_;
    Take(failure);
  }
  void TellGone(const std::string& path) {
    host_.output().Warning(Printable(folder_.Shown(path)) +
                           " is not on the server any more; it is left as it is");
  }

  // All failures are told together once more, where they are seen.
  [[nodiscard]] ExitCode End(std::size_t all, const std::string& ofNothing) {
    const bool isOfNothing = all + others_ == 0 && !Interrupted();
    host_.output().Note(isOfNothing ? ofNothing : WhatCame(all));
    if (Interrupted()) {
      Failure failure = InterruptedFailure();
      failure.advice = "the same command goes on where this one ended";
      return host_.output().Fail(failure);
    }
    return FinishBatch(host_, end_, all + others_);
  }

 private:
  [[nodiscard]] std::string WhatCame(std::size_t all) const {
    std::string note =
        std::to_string(fetched_) + " of " + std::to_string(all) + " files fetched, " + BytesToTell(bytes_);
    if (known_ > 0) note += "; " + std::to_string(known_) + " had the server's content already";
    return note;
  }

  // What a signal has broken off is told once, at the end.
  void Take(const Failure& failure) {
    if (failure.code != ExitCode::Interrupted) TellFailures(host_, {failure}, end_);
  }

  Host& host_;
  const WorkFolder& folder_;
  BatchEnd end_;
  std::size_t others_ = 0;
  std::size_t fetched_ = 0;
  std::size_t known_ = 0;
  std::uint64_t bytes_ = 0;
};

void MakeFolders(const WorkFolder& folder, const RemoteTree& tree, PullReport& report) {
  for (const std::string& path : tree.folders) {
    if (const int error = MakeFoldersFor(folder.root(), path + "/"); error != 0) {
      report.Tell({ExitCode::LocalFile, "cannot make the directory " + Printable(folder.Shown(path)) + ": " +
                                            std::strerror(error)});
    }
  }
}

// A content that broke off is asked for again; nothing of it is in its place yet.
[[nodiscard]] FetchResult FetchRepeatedly(WorkFolder& folder, const Comparison& wanted, unsigned retries,
                                          const FetchProgress& progress) {
  for (unsigned repetition = 0;; ++repetition) {
    FetchResult result = FetchFile(folder, wanted, progress);
    if (result.end != End::Failed || !result.failure) return result;
    if (!IsToBeRepeated(*result.failure, repetition, retries)) return result;
  }
}

void FetchAll(Host& host, WorkFolder& folder, const std::vector<Comparison>& wanted, Effort effort,
              PullReport& report) {
  const bool isSeen = !host.output().quiet() && !host.output().json() && TerminalWidth() != 0;
  ManyProgress progress(isSeen ? &std::cerr : nullptr, TerminalWidth(), wanted.size());
  RunInParallel(wanted.size(), effort.threads, [&](std::size_t number) {
    progress.Begin(number, folder.Shown(wanted[number].path));
    const FetchResult result =
        FetchRepeatedly(folder, wanted[number], effort.retries,
                        [&progress, number](std::size_t received) { progress.Advance(number, received); });
    progress.End(number);
    progress.MakeRoomFor([&] { report.Tell(wanted[number], result); });
  });
}

}  // namespace

Result<unsigned> ReadThreads(const Arguments& arguments) {
  if (!arguments.Has("parallel")) return usualThreads;
  const std::string text = arguments.Text("parallel");
  unsigned count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  if (whole && count >= 1 && count <= mostThreads) return count;
  return Failure{ExitCode::Usage, "--parallel takes a number from 1 to " + std::to_string(mostThreads)};
}

OptionRow ParallelOption() {
  return {.name = "parallel", .value = "N", .help = "Ask for so many things at a time; 4 unless given."};
}

Result<Effort> ReadEffort(const Arguments& arguments) {
  const auto threads = ReadThreads(arguments);
  if (!threads) return threads.failure();
  const auto retries = ReadRetries(arguments);
  if (!retries) return retries.failure();
  return Effort(*threads, *retries);
}

ExitCode PullAll(Host& host, WorkFolder& folder, const RemoteTree& tree, Effort effort) {
  const auto local = ReadLocalSide(folder);
  if (!local) return host.output().Fail(local.failure());
  PullReport report(host, folder);
  for (const Failure& failure : tree.failures) report.Tell(failure);
  MakeFolders(folder, tree, report);
  std::vector<Comparison> wanted;
  for (const Comparison& comparison : Compare(*local, tree)) {
    if (IsToFetch(comparison)) wanted.push_back(comparison);
    if (comparison.state != FileState::Gone) continue;
    if (FactsOf(folder.OnDisk(comparison.path)).kind == LocalFacts::Kind::Nothing) {
      static_cast<void>(folder.store().Forget(comparison.path));
    } else {
      report.TellGone(comparison.path);
    }
  }
  FetchAll(host, folder, wanted, effort, report);
  return report.End(wanted.size(), tree.documents.empty() ? "the folder on the server has no documents"
                                                          : "nothing is newer on the server");
}

ExitCode TellPull(Host& host, WorkFolder* folder, const RemoteTree& tree) {
  const auto local = folder ? ReadLocalSide(*folder) : LocalSide();
  if (!local) return host.output().Fail(local.failure());
  ExitCode worst = ExitCode::Ok;
  for (const Failure& failure : tree.failures) worst = Worse(worst, host.output().Fail(failure));
  for (const Comparison& comparison : Compare(*local, tree)) {
    if (!IsToFetch(comparison)) continue;
    const bool isKept = comparison.state == FileState::Both || comparison.state == FileState::InTheWay;
    const std::string action = isKept ? "would-leave" : "would-fetch";
    host.output().Row(
        {{"action", action}, {"file", folder ? folder->Shown(comparison.path) : comparison.path}},
        {{"action", action},
         {"file", comparison.path},
         {"path", comparison.document->address},
         {"uid", comparison.document->uid},
         {"version", comparison.document->version}});
  }
  return worst;
}

std::vector<MemberRow> PullMembers() {
  return {{"action", MemberType::Text, nullptr,
           "fetched, or known when the file had the server's content already; with --dry-run would-fetch, or "
           "would-leave for a file that was changed here"},
          {"file", MemberType::Text, nullptr, "the file, below the work folder"},
          {"path", MemberType::Text, nullptr, "the document's path on the server"},
          {"uid", MemberType::Text, nullptr, "UID of the version that the file has now"},
          {"version", MemberType::Text, nullptr, "that version"},
          {"bytes", MemberType::Number, "without --dry-run", "the file's size"}};
}

}  // namespace vtdirect_cli
