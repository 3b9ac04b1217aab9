#include "hosts/cli/storing/put_upload.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <vector>

#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/texts/progress_line.h"

namespace vtdirect_cli {
namespace {

// Looks at the files once the copy that is sent has been made of them, and before a byte of it goes out. From
// then on they are not read any more.
class CopyCheck {
 public:
  explicit CopyCheck(const PutRequest& request) : sources_(request.Sources()) {}

  [[nodiscard]] bool Passes(std::size_t copied, PutOutcome& outcome) {
    if (done_) return true;
    done_ = true;
    LookForChanges(outcome);
    outcome.copyIsShort = copied < Size();
    return outcome.changedFile.empty() && !outcome.copyIsShort;
  }

  /// Bytes of all files together, which are fewer than those that are sent.
  [[nodiscard]] std::uint64_t Size() const {
    std::uint64_t size = 0;
    for (const LocalSource& source : sources_) size += source.size();
    return size;
  }

  // Of an upload that failed: whether it ended because the copy could not be made. The library sends none
  // that is not whole, and has then told of no progress.
  void LookAtFailure(PutOutcome& outcome) const {
    if (done_ || !LocalFileFailed()) return;
    LookForChanges(outcome);
    outcome.copyIsShort = true;
  }

 private:
  void LookForChanges(PutOutcome& outcome) const {
    for (const LocalSource& source : sources_) {
      if (!IsUnchanged(source)) outcome.changedFile = source.path;
    }
  }

  std::vector<LocalSource> sources_;
  bool done_ = false;
};

[[nodiscard]] std::string PathOf(const std::optional<LocalSource>& source) {
  return source ? source->path : std::string();
}

// The library takes every answer of success for that of the server. Whether the document was created is asked for
// in any case.
[[nodiscard]] bool StoreIsUnconfirmed(const PutTarget& target) {
  if (target.action == PutTarget::Action::Create) return false;
  const auto reasons = Reasons();
  return std::any_of(reasons.begin(), reasons.end(), [](const Reason& reason) {
    return reason.mayHaveHappened && reason.kind == VtDirectManager::FailureKind::AnswerBroken &&
           (reason.step == "store into the workspace" || reason.step == "write the document");
  });
}

// What a signal leaves, once the server has all it needs.
[[nodiscard]] std::string UnknownEnd(const PutRequest& request, const PutTarget& target) {
  const bool isNew = target.action == PutTarget::Action::Create;
  const char* const command = target.action == PutTarget::Action::Store ? "verify" : "info";
  return "the file was sent, and whether the server has stored it is not known; " +
         CommandToType(command, isNew ? target.address : request.address) + " tells";
}

// What watches the transfer; all of it outlives the transfer.
struct Watch {
  InterruptionReport& report;
  CopyCheck& check;
  ProgressLine& line;
  std::string unknownEnd;  // what is told if a signal ends the program when all was sent
};

[[nodiscard]] VtDirectManager::ProgressCallback ProgressOf(const Watch& watch, PutOutcome& outcome) {
  return [&, size = static_cast<std::size_t>(watch.check.Size())](std::size_t sent, std::size_t total) {
    outcome.total = total;
    if (!watch.check.Passes(total, outcome) || Interrupted()) return false;
    outcome.sent = sent;
    watch.line.Show(std::min<std::size_t>(sent, size), size, ProgressLine::Clock::now());
    if (outcome.AllSent()) watch.report.TellOfOpenChange(watch.unknownEnd);
    return true;
  };
}

[[nodiscard]] VtDirectManager::StatusCallback StatusOf(PutOutcome& outcome) {
  return [&outcome](VtDirectManager::StatusCode code, const char* uid) {
    outcome.code = code;
    outcome.stored = code == VtDirectManager::StatusOk;
    if (uid != nullptr) outcome.uid = uid;
  };
}

// The store alone: a check-in is a step of its own, which is told apart when something goes wrong. Unasked
// the library would check a temporary checkout in, which it knows by the form of its UID.
void Send(const PutRequest& request, const PutTarget& target, const SourceLinks& links,
          const VtDirectManager::ProgressCallback& progress, PutOutcome& outcome) {
  const std::string viewable = PathOf(request.viewable);
  const std::string metadata = PathOf(request.metadata);
  VtDirectManager::StoreOptions options;
  options.kind = request.type;
  options.checkIn = VtDirectManager::CheckInWish::NoCheckIn;
  options.language = request.language.c_str();
  options.viewablePath = viewable.c_str();
  options.vcsPath = metadata.c_str();
  options.sourceLinks = &links;
  options.status = StatusOf(outcome);
  options.progress = progress;
  try {
    static_cast<void>(
        VtDirectManager::Store(PathToStoreAt(target).c_str(), request.content.path.c_str(), options));
  } catch (const std::exception&) {
    // The library lets through what its readers raise for a ticket that makes no sense. No content has gone
    // out before there is one.
    outcome.stored = false;
    outcome.brokenTicket = outcome.sent == 0;
    if (!outcome.brokenTicket) throw;
  }
  if (target.temporary && outcome.stored) outcome.uid = target.address;
}

}  // namespace

PutOutcome RunUpload(Host& host, const PutRequest& request, const PutTarget& target, const SourceLinks& links,
                     InterruptionReport& report) {
  PutOutcome outcome;
  const bool quiet = host.output().quiet() || host.output().json();
  const std::size_t width = quiet ? 0 : TerminalWidth();
  ProgressLine line(width == 0 ? nullptr : &std::cerr, request.content.path, width);
  CopyCheck check(request);
  report.Tell("nothing was stored");
  const Patience::WhileSending patience(*host.patience(), request.content.size());
  ForgetReasons();
  const Watch watch{report, check, line, UnknownEnd(request, target)};
  Send(request, target, links, ProgressOf(watch, outcome), outcome);
  outcome.isUnconfirmed = outcome.stored && StoreIsUnconfirmed(target);
  if (outcome.isUnconfirmed) outcome.stored = false;
  if (!outcome.stored) check.LookAtFailure(outcome);
  line.Clear();
  return outcome;
}

}  // namespace vtdirect_cli
