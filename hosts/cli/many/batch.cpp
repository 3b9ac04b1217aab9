#include "hosts/cli/many/batch.h"

#include <vtdirect/vt_direct_manager.h>

#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <sstream>

#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/failures/retrying.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/printable.h"
#include "hosts/cli/work_folder/parallel.h"

namespace vtdirect_cli {
namespace {

using VtDirectManager::FailureKind;

// Whether it was the server itself that was asked for, and no object of it.
[[nodiscard]] bool IsOfServerCheck(const Reason& reason) {
  return reason.step == VtDirectManager::stepAskWhetherServerAnswers ||
         reason.step == VtDirectManager::stepCheckServer || reason.step == VtDirectManager::stepAskForVersion;
}

// What every further task on this server would fail with.
[[nodiscard]] bool IsOfServer(const Failure& failure) {
  if (failure.code == ExitCode::AuthenticationRefused || failure.code == ExitCode::ServerUnsupported)
    return true;
  return failure.code == ExitCode::CannotConnect && failure.reason &&
         (failure.reason->kind == FailureKind::Unreachable || IsOfServerCheck(*failure.reason));
}

// What one task has said.
struct Said {
  std::string out;
  std::string err;
  std::vector<TableRow> rows;
};

class Together {
 public:
  Together(Host& host, const std::vector<BatchTask>& tasks, const BatchOptions& options)
      : host_(host), tasks_(tasks), options_(options), said_(tasks.size()), isOver_(tasks.size(), false) {}

  [[nodiscard]] BatchEnd Run() {
    for (const std::vector<std::size_t>& group : GroupsByServer()) {
      host_.ForgetAuthenticationRefusal();
      serverFailure_ = std::nullopt;
      RunInParallel(group.size(), options_.threads, [&](std::size_t number) { RunTask(group[number]); });
    }
    // What was left out has nothing to say, and keeps nobody waiting any more.
    const std::lock_guard lock(mutex_);
    isOver_.assign(tasks_.size(), true);
    PassWhatIsNext();
    return std::move(end_);
  }

 private:
  // In the order of the first task of each.
  [[nodiscard]] std::vector<std::vector<std::size_t>> GroupsByServer() const {
    std::vector<std::vector<std::size_t>> groups;
    std::map<std::string, std::size_t> numbers;
    for (std::size_t number = 0; number < tasks_.size(); ++number) {
      const std::string server = VtDirectManager::GetServerURL(tasks_[number].address.c_str());
      const auto [place, isNew] = numbers.emplace(server, groups.size());
      if (isNew) groups.emplace_back();
      groups[place->second].push_back(number);
    }
    return groups;
  }

  void RunTask(std::size_t number) {
    if (stopped_) return;
    const auto unusable = WhyServerIsUnusable();
    if (unusable && !tasks_[number].passOver) {
      const std::lock_guard lock(mutex_);
      ++end_.notAsked;
      return;
    }
    for (unsigned repetition = 0; !RunOnce(number, unusable, repetition);) ++repetition;
  }

  // False when it is to be run again: what it has said is forgotten then.
  [[nodiscard]] bool RunOnce(std::size_t number, const std::optional<Failure>& unusable,
                             unsigned repetition) {
    std::ostringstream out;
    std::ostringstream err;
    Output output(out, err, host_.output());
    if (!options_.verbose) output.SetQuiet(true);
    Host host(host_, output);
    const ReasonCollector reasons;
    const BatchTask& task = tasks_[number];
    const ExitCode code = unusable ? task.passOver(host, *unusable) : task.run(host);
    const std::vector<Failure>& failures = output.failures();
    if (failures.size() == 1 && MayRepeat(task, failures.front()) &&
        IsToBeRepeated(failures.front(), repetition, options_.retries)) {
      return false;
    }
    // What a signal has broken off is told once, at the end.
    Take(number, code, failures, {out.str(), Interrupted() ? "" : err.str(), output.TakeRows()});
    return true;
  }

  // A task that tells of each object whatever its server says has asked the server twice already.
  [[nodiscard]] static bool MayRepeat(const BatchTask& task, const Failure& failure) {
    return !task.passOver || !IsOfServer(failure);
  }

  [[nodiscard]] std::optional<Failure> WhyServerIsUnusable() {
    const std::lock_guard lock(mutex_);
    return serverFailure_;
  }

  void Take(std::size_t number, ExitCode code, const std::vector<Failure>& failures, Said said) {
    const std::lock_guard lock(mutex_);
    ++end_.ended;
    if (!Interrupted()) {
      end_.worst = Worse(end_.worst, code);
      end_.failures.insert(end_.failures.end(), failures.begin(), failures.end());
    }
    for (const Failure& failure : failures) {
      if (IsOfServer(failure)) serverFailure_ = failure;
    }
    if (!failures.empty() && options_.stopOnError) stopped_ = true;
    if (!options_.inOrder) {
      Pass(std::move(said));
      return;
    }
    said_[number] = std::move(said);
    isOver_[number] = true;
    PassWhatIsNext();
  }

  void PassWhatIsNext() {
    for (; next_ < tasks_.size() && isOver_[next_]; ++next_) {
      Pass(std::exchange(said_[next_], {}));
    }
  }

  // Nobody is asked for what nobody reads.
  void Pass(Said said) {
    if (said.out.empty() && said.err.empty() && said.rows.empty()) return;
    if (options_.makeRoom) options_.makeRoom();
    if (!host_.output().Pass(said.out, said.err, std::move(said.rows))) stopped_ = true;
  }

  Host& host_;
  const std::vector<BatchTask>& tasks_;
  const BatchOptions& options_;
  std::mutex mutex_;
  BatchEnd end_;
  std::vector<Said> said_;
  std::vector<bool> isOver_;
  std::size_t next_ = 0;
  std::optional<Failure> serverFailure_;  // of the server whose tasks run
  std::atomic<bool> stopped_ = false;
};

}  // namespace

BatchEnd RunTogether(Host& host, const std::vector<BatchTask>& tasks, const BatchOptions& options) {
  return Together(host, tasks, options).Run();
}

BatchEnd RunOneByOne(Host& host, const std::vector<BatchTask>& tasks, bool stopOnError) {
  BatchEnd end;
  for (const BatchTask& task : tasks) {
    const std::size_t before = host.output().failures().size();
    end.worst = Worse(end.worst, task.run(host));
    ++end.ended;
    const std::vector<Failure>& failures = host.output().failures();
    const bool failed = failures.size() > before;
    end.failures.insert(end.failures.end(), failures.begin() + static_cast<std::ptrdiff_t>(before),
                        failures.end());
    if (Interrupted() || (failed && stopOnError)) break;
  }
  return end;
}

void TellFailures(Host& host, const std::vector<Failure>& failures, BatchEnd& end) {
  for (const Failure& failure : failures) {
    if (Interrupted()) return;
    end.worst = Worse(end.worst, host.output().Fail(failure));
    end.failures.push_back(failure);
  }
}

ExitCode FinishBatch(Host& host, const BatchEnd& end, std::size_t all) {
  if (Interrupted()) return host.output().Fail(InterruptedFailure());
  if (end.notAsked > 0) {
    host.output().Warning(std::to_string(end.notAsked) +
                          (end.notAsked == 1 ? " object was" : " objects were") +
                          " not asked for, since the server can't be used");
  }
  // Of one object it has just been told.
  if (end.failures.empty() || all < 2) return end.worst;
  host.output().Note(std::to_string(end.failures.size()) + " of " + std::to_string(all) + " failed:");
  for (const Failure& failure : end.failures) host.output().Note("  " + failure.Text());
  return end.worst;
}

}  // namespace vtdirect_cli
