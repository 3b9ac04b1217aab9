#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/failures/retrying.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/work_folder/parallel.h"
#include "hosts/cli/work_folder/pulling.h"

namespace vtdirect_cli {
namespace {

/// One line of the answer.
struct Line {
  Comparison file;
  std::string checkout;     // as status calls it; empty when nobody has it, and when it was not asked
  std::string holder;       // who has it checked out
  bool isHeldHere = false;  // by this program
  bool isUntold = false;    // it was asked, and there was no answer
};

/// Who has the documents checked out. A listing does not tell it, so it is asked for those alone whose user will
/// want to know.
class Holders {
 public:
  /// Reads the book once, which tells without a request what this program has checked out.
  /// @param all  whether every document is asked for
  Holders(const LocalSide& local, bool all) : all_(all), book_(CheckoutBook().Read()) {
    for (const auto& [path, file] : local.kept) {
      const auto state = local.states.find(path);
      const bool isModified = state != local.states.end() && state->second == LocalState::Modified;
      if ((all || isModified) && FindHeldHere(file.uid) == nullptr) asked_.push_back({path, file.uid, {}});
    }
  }

  /// The questions that are known before the listings are there: most documents have no newer version.
  [[nodiscard]] SideTasks Questions() {
    return {asked_.size(),
            [this](std::size_t number) { asked_[number].state = ReadCheckoutState(asked_[number].uid); }};
  }

  /// Asks for what is not answered yet.
  void Settle(std::vector<Line>& lines, unsigned threads) {
    std::map<std::string, const Question*> answered;
    for (const Question& question : asked_) {
      if (question.state) answered.emplace(question.path, &question);
    }
    std::vector<Line*> open;
    for (Line& line : lines) {
      if (TakeHeldHere(line) || !line.file.document || (!all_ && !line.file.isModified)) continue;
      const auto question = answered.find(line.file.path);
      if (question != answered.end() && AreSameUid(question->second->uid, line.file.document->uid)) {
        Take(line, *question->second->state);
      } else {
        open.push_back(&line);
      }
    }
    RunInParallel(open.size(), threads, [&open](std::size_t number) {
      Take(*open[number], ReadCheckoutState(open[number]->file.document->uid));
    });
  }

 private:
  struct Question {
    std::string path;
    std::string uid;
    std::optional<CheckoutState> state;  // nothing: not asked yet
  };

  [[nodiscard]] const KeptCheckout* FindHeldHere(const std::string& uid) const {
    const KeptCheckout* found = nullptr;
    for (const KeptCheckout& kept : book_.checkouts) {
      if (LeadsTo(kept, uid)) found = &kept;
    }
    return found;
  }

  [[nodiscard]] bool TakeHeldHere(Line& line) const {
    const KeptCheckout* kept = line.file.file ? FindHeldHere(line.file.file->uid) : nullptr;
    if (kept == nullptr) return false;
    line.isHeldHere = true;
    line.checkout = "by-you";
    line.holder = kept->user;
    return true;
  }

  static void Take(Line& line, const CheckoutState& state) {
    line.isUntold = state.status == VtDirectManager::CheckoutStatusFailed;
    if (line.isUntold) line.checkout = CheckoutWord(state.status);
    if (state.user.empty()) return;
    line.holder = state.user;
    line.checkout = CheckoutWord(state.status);
    if (state.status == VtDirectManager::CheckoutByOther) line.checkout += " (" + state.user + ")";
  }

  bool all_;
  BookContents book_;
  std::vector<Question> asked_;
};

void Show(Host& host, const WorkFolder& folder, const Line& line) {
  const Comparison& file = line.file;
  const std::string version = file.file ? file.file->version : "";
  const std::string newest = file.document ? file.document->version : "";
  Record json{{"file", file.path}, {"state", std::string(WordOf(file.state))}, {"modified", file.isModified}};
  if (file.file) json.insert(json.end(), {{"path", file.file->address}, {"uid", file.file->uid}});
  if (!version.empty()) json.emplace_back("version", version);
  if (!newest.empty()) json.emplace_back("latest_version", newest);
  json.emplace_back("checked_out_here", line.isHeldHere);
  if (!line.holder.empty()) json.emplace_back("checked_out_by", line.holder);
  host.output().Row({{"state", std::string(WordOf(file.state))},
                     {"version", version},
                     {"latest_version", newest},
                     {"checkout", line.checkout},
                     {"file", folder.Shown(file.path)}},
                    json);
}

[[nodiscard]] bool IsToShow(const Line& line, bool all) {
  return all || line.file.state != FileState::Same || line.isHeldHere || line.isUntold ||
         !line.holder.empty();
}

// What the server does not tell is no sign that nobody has it.
[[nodiscard]] ExitCode TellUntold(Host& host, const std::vector<Line>& lines) {
  const auto count =
      std::count_if(lines.begin(), lines.end(), [](const Line& line) { return line.isUntold; });
  if (count == 0) return ExitCode::Ok;
  return host.output().Fail({ExitCode::Incomplete,
                             "whether somebody has " + std::to_string(count) +
                                 (count == 1 ? " file" : " files") + " checked out could not be found out",
                             "the same command can be given again"});
}

ExitCode RunSt(Host& host, const Arguments& arguments) {
  const auto effort = ReadEffort(arguments);
  if (!effort) return host.output().Fail(effort.failure());
  const auto opened = WorkFolder::OpenHere();
  if (!opened) return host.output().Fail(opened.failure());
  WorkFolder& folder = **opened;
  const auto local = ReadLocalSide(folder);
  if (!local) return host.output().Fail(local.failure());
  ForgetReasons();
  Holders holders(*local, arguments.Has("checkouts"));
  const RemoteTree tree = ReadRemoteTree(folder.store().server(), {"", folder.address()}, *effort,
                                         holders.Questions(), local->kept);
  std::vector<Line> lines;
  for (Comparison& comparison : Compare(*local, tree)) lines.push_back({std::move(comparison), {}, {}});
  holders.Settle(lines, effort->threads);
  if (Interrupted()) return host.output().Fail(InterruptedFailure());
  const bool all = arguments.Has("all");
  std::erase_if(lines, [all](const Line& line) { return !IsToShow(line, all); });
  for (const Line& line : lines) Show(host, folder, line);
  if (lines.empty() && tree.failures.empty()) host.output().NoteToWatcher("nothing differs");
  ExitCode worst = TellUntold(host, lines);
  for (const Failure& told : tree.failures) worst = Worse(worst, host.output().Fail(told));
  return worst;
}

}  // namespace

CommandRow StCommand() {
  CommandRow row = {
      "st",
      "Show what differs between a work folder and the server",
      "Prints one line for each file that is not the same here and on the server: its state, the version "
      "that it came from and the newest, the checkout, and the file, separated by tabs.\n\n"
      "The states are: modified (changed here), newer (on the server), both, missing (deleted here), new (on "
      "the server and not here yet), in-the-way (the same, and a file that did not come from the server has "
      "its name here), unknown (here and not on the server) and gone (from the server). A folder that can't "
      "be listed is a failure, and of its files the local side alone is told.\n\n"
      "The checkout is by-you for a document that vtdirect has checked out (see checkouts). Whether somebody "
      "else has is asked for the files that were changed here, and with --checkouts for all; it is unknown "
      "if the "
      "server does not tell, which is a failure.\n\n"
      "A file is read only when its size or time is another than when it came. Each folder is listed once.",
      {},
      {{.name = "all", .letter = 'a', .help = "Show the files too that are the same."},
       {.name = "checkouts", .help = "Ask of every file who has it checked out; one or two requests each."},
       ParallelOption(),
       RetriesOption()},
      Requests::Some,
      RunSt,
      {{"file", MemberType::Text, nullptr, "the file, below the work folder"},
       {"state", MemberType::Text, nullptr,
        "same, modified, newer, both, missing, new, in-the-way, unknown or gone"},
       {"modified", MemberType::Flag, nullptr, "whether it was changed here"},
       {"path", MemberType::Text, "when it came from the server", "the document's path there"},
       {"uid", MemberType::Text, "when it came from the server", "UID of the version that it came from"},
       {"version", MemberType::Text, "when it came from the server", "that version"},
       {"latest_version", MemberType::Text, "when the server shows it", "the newest version"},
       {"checked_out_here", MemberType::Flag, nullptr, "whether vtdirect has it checked out"},
       {"checked_out_by", MemberType::Text, "when somebody has and it was asked", "who holds the checkout"}}};
  row.worksInFolder = true;
  return AsListing(row, {"state", "version", "latest_version", "checkout", "file"},
                   "Sort the lines by this column: state, version, latest_version, checkout or file.");
}

}  // namespace vtdirect_cli
