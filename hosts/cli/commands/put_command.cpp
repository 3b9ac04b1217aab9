#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/checkouts/checkin_answer.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/checkouts/checkout_end.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/journaled_step.h"
#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/checkouts/unstored_copy.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/failures/result.h"
#include "hosts/cli/files/content_download.h"
#include "hosts/cli/files/sha256.h"
#include "hosts/cli/many/listed_addresses.h"
#include "hosts/cli/many/put_many.h"
#include "hosts/cli/many/subjects_below.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption_report.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/storing/put_conditions.h"
#include "hosts/cli/storing/put_failure.h"
#include "hosts/cli/storing/put_links.h"
#include "hosts/cli/storing/put_request.h"
#include "hosts/cli/storing/put_target.h"
#include "hosts/cli/storing/put_upload.h"
#include "hosts/cli/texts/progress_line.h"

namespace vtdirect_cli {
namespace {

// One call of the command.
struct Put {
  PutRequest request;
  PutTarget target;
  SourceLinks links;
  PutOutcome outcome;
  std::string uid;     // to go on with
  std::string sha256;  // of what is sent
  CheckoutState state;
  bool checkedIn = false;
  bool isUnchanged = false;  // the server has the file's bytes already
  bool isDryRun = false;
};

// What the user has made the store depend on.
[[nodiscard]] std::optional<Failure> SettleConditions(Host& host, const Arguments& arguments, Put& put) {
  if (arguments.Has("expect")) {
    if (auto failure = RefusalOfVersion(host, put.target, arguments.Text("expect"))) return failure;
  }
  if (arguments.Has("if-changed")) {
    const auto same = HasBytesAlready(host, put.request, put.target);
    if (!same) return same.failure();
    put.isUnchanged = *same;
  }
  put.isDryRun = arguments.Has("dry-run");
  return std::nullopt;
}

[[nodiscard]] Result<Put> Settle(Host& host, const Arguments& arguments) {
  if (auto failure = RefusalOfConditions(arguments)) return *failure;
  const auto request = ReadPutRequest(arguments);
  if (!request) return request.failure();
  const auto target = SettlePutTarget(host, *request);
  if (!target) return target.failure();
  if (request->checkIn && target->action == PutTarget::Action::Store) {
    if (auto failure = RefusalOfUnstored(request->address, target->address, "sent")) return *failure;
  }
  const auto links = SettleLinks(host, *request, *target);
  if (!links) return links.failure();
  Put put{*request, *target, *links, {}, {}, {}, {}};
  if (auto failure = SettleConditions(host, arguments, put)) return *failure;
  if (Interrupted()) return InterruptedFailure();
  return put;
}

// What fails before the first byte goes out says so.
[[nodiscard]] Failure WithNothingSent(const Failure& failure) {
  return failure.code == ExitCode::Usage ? failure : WithNothing("sent", failure);
}

// An answer that names no document leaves what the file went to.
[[nodiscard]] std::string UidOf(const Put& put) {
  if (HasObjectId(put.outcome.uid)) return put.outcome.uid;
  if (put.target.action != PutTarget::Action::Create) return put.target.address;
  const auto uid = UidAtPlace(put.target.address);
  return uid ? *uid : "";
}

// The server has taken a creation, told of no document, and shows none.
[[nodiscard]] Failure NoDocument(Host& host, const Put& put) {
  const std::string& path = put.target.address;
  const std::string taken =
      "the server has taken " + put.request.content.path + " and did not tell what became of it";
  if (auto failure = DiagnoseServer(host, VtDirectManager::GetServerURL(path.c_str()))) {
    if (failure->code == ExitCode::Interrupted) return *failure;
    return {failure->code, taken + " (" + failure->Text() + ")",
            CommandToType("info", path) + " tells when the server answers", failure->reason};
  }
  return {ExitCode::Incomplete, taken + "; it shows no document " + path,
          CommandToType("info", path) + " tells when it does, and the same command can be given again"};
}

[[nodiscard]] bool LeavesWorkingCopy(const Put& put) {
  if (IsWorkingCopy(put.state.status)) return true;
  // Not to know is no reason to forget a working copy.
  return put.state.status == VtDirectManager::CheckoutStatusFailed &&
         put.target.action == PutTarget::Action::Store && !put.checkedIn;
}

void UpdateBook(Host& host, const Put& put) {
  if (LeavesWorkingCopy(put)) {
    KeepCheckout(host, put.request.address, put.uid);
  } else if (put.target.action == PutTarget::Action::Store) {
    ForgetCheckout(host, put.target.address);
  }
}

// The server has the file's bytes now, so a later get may replace it.
void RecordStored(Host& host, const Put& put) {
  const LocalSource& source = put.request.content;
  auto record = Measure(source.path);
  if (!record || !IsUnchanged(source)) return;
  record->address = put.request.address;
  record->uid = put.uid;
  if (LeavesWorkingCopy(put)) {
    // The working copy has one content, and what was stored in it before is gone.
    ForgetContentOf(put.uid);
    record->copyUse = CopyUse::Stored;
  }
  RecordFetch(host, source.path, *record);
}

// The UID of the iteration that this makes.
[[nodiscard]] Result<std::string> CheckIn(Host& host, const Put& put, InterruptionReport& report) {
  report.TellOfOpenChange("the file is stored in the working copy " + put.uid +
                          ", and whether it is checked in is not known; " + CommandToType("verify", put.uid) +
                          " tells");
  ForgetReasons();
  JournaledStep step(host, {"checkin", put.request.address, put.uid});
  const std::string told = VtDirectManager::Checkin(put.uid.c_str());
  if (told.empty()) {
    step.SettleUnlessUnknown();
    return PutCheckInFailure(host, put.uid);
  }
  const auto kept = CheckoutBook().Find(put.uid);
  const CheckinAnswer answer = ReadCheckinAnswer(host, told, put.uid, kept ? kept->document : "", put.sha256);
  WarnOfLeftWorkspace(host);
  const std::string& uid = answer.iteration;
  if (uid.empty()) return UnknownCheckin(answer, "the file was stored in the working copy " + put.uid);
  report.Tell("the file is stored and checked in; the UID to go on with is " + uid);
  KeepContentOf(host, put.uid, uid, put.sha256);
  ForgetCheckout(host, put.uid);
  step.Settle();
  return uid;
}

[[nodiscard]] JournalEntry EntryOf(const Put& put) {
  return {WordsOf(put.target.action).step, put.request.address, put.target.address, put.request.content.path,
          put.sha256};
}

void Report(Host& host, const Put& put) {
  const std::string& file = put.request.content.path;
  const std::uint64_t size = put.request.content.size();
  host.output().Row({{"uid", put.uid}}, {{"address", put.request.address},
                                         {"file", file},
                                         {"bytes", size},
                                         {"action", std::string(WordsOf(put.target.action).done)},
                                         {"uid", put.uid},
                                         {"checked_in", put.checkedIn},
                                         {"checkout", std::string(CheckoutWord(put.state.status))}});
  static_cast<void>(host.output().Flush());
  std::string note = std::string(WordsOf(put.target.action).done) + " " + put.target.address + " from " +
                     file + ", " + BytesToTell(size);
  if (put.checkedIn) note += ", and checked in";
  host.output().Note(note);
  if (LeavesWorkingCopy(put))
    host.output().Note("it is checked out; " + CommandToType("checkin", put.uid) + " checks it in");
}

// What is told when nothing is sent: since nothing has changed, or since nothing was to be sent.
ExitCode ReportUnsent(Host& host, const Put& put) {
  const std::string& file = put.request.content.path;
  const std::string action = put.isUnchanged ? "unchanged" : WordsOf(put.target.action).done;
  Record json{{"address", put.request.address},
              {"file", file},
              {"bytes", put.request.content.size()},
              {"action", action}};
  const bool isThere = put.target.action != PutTarget::Action::Create;
  if (isThere) json.emplace_back("uid", put.target.address);
  if (put.isDryRun) json.emplace_back("dry_run", true);
  if (put.isDryRun) {
    const std::string would =
        put.isUnchanged ? "unchanged" : std::string("would ") + WordsOf(put.target.action).step;
    host.output().Row({{"would", would}, {"file", file}, {"address", put.target.address}}, json);
    return ExitCode::Ok;
  }
  host.output().Row({{"uid", put.target.address}}, json);
  host.output().Note(put.target.address + " has the content of " + file + " already; nothing was sent");
  return ExitCode::Ok;
}

// A server that is asked for the folder and doesn't answer is asked by the library to choose one.
[[nodiscard]] std::optional<Failure> CreatedElsewhere(const Put& put) {
  if (put.target.action != PutTarget::Action::Create) return std::nullopt;
  const auto refusal = RefusalOfAnotherPlace(put.target.address, put.uid);
  if (!refusal) return std::nullopt;
  if (refusal->code != ExitCode::NotFound) {
    return Failure{ExitCode::Incomplete,
                   put.request.content.path + " is stored as " + put.uid +
                       ", but whether the server has put it where " + put.target.address +
                       " says could not be found out",
                   CommandToType("path --folder", put.uid) + " tells", refusal->reason};
  }
  return Failure{ExitCode::Incomplete,
                 put.request.content.path + " is stored as " + put.uid + ", but the server has put it into " +
                     VtDirectManager::GetVFSFolderPath(put.uid.c_str()) + " and not where " +
                     put.target.address + " says; move it there on its page, to which " +
                     CommandToType("browse-url", put.uid) + " leads"};
}

// Sends the files, and keeps what follows from it.
[[nodiscard]] Result<Put> Store(Host& host, Put put, InterruptionReport& report) {
  put.sha256 = Sha256OfFile(put.request.content.path);
  JournaledStep step(host, EntryOf(put));
  put.outcome = RunUpload(host, put.request, put.target, put.links, report);
  if (!put.outcome.stored) {
    step.SettleUnlessUnknown();
    if (Interrupted()) return InterruptedFailure();
    return PutFailure(host, put.request, put.target, put.outcome);
  }
  put.uid = UidOf(put);
  if (put.uid.empty()) return NoDocument(host, put);
  report.Tell("the file is stored; the UID to go on with is " + put.uid);
  put.state = ReadCheckoutState(put.uid);
  UpdateBook(host, put);
  RecordStored(host, put);
  step.Settle();
  return put;
}

[[nodiscard]] ExitCode PutOne(Host& host, const Arguments& arguments) {
  InterruptionReport report(host, "put");
  const auto settled = Settle(host, arguments);
  if (!settled) return report.Fail(WithNothingSent(settled.failure()));
  if (settled->isUnchanged || settled->isDryRun) return ReportUnsent(host, *settled);
  auto put = Store(host, *settled, report);
  if (!put) return report.Fail(put.failure());
  if (const auto failure = CreatedElsewhere(*put)) return report.Fail(*failure);
  if (const auto failure =
          FailureOfLinks(host, put->request, put->uid, put->links, LeavesWorkingCopy(*put))) {
    return report.Fail(*failure);
  }
  if (put->request.checkIn && LeavesWorkingCopy(*put)) {
    if (Interrupted()) return report.Report();
    const auto uid = CheckIn(host, *put, report);
    if (!uid) return report.Fail(uid.failure());
    put->uid = *uid;
    put->checkedIn = true;
    put->state = ReadCheckoutState(*uid);
  }
  Report(host, *put);
  return ExitCode::Ok;
}

ExitCode RunPut(Host& host, const Arguments& arguments) {
  return PutsMany(arguments) ? PutMany(host, arguments, PutOne) : PutOne(host, arguments);
}

[[nodiscard]] std::vector<OptionRow> Options() {
  std::vector<OptionRow> options = {
      RecursiveOption("Store the files of a directory, each in the folder of the same path below ADDRESS."),
      {.name = "viewable",
       .value = "FILE",
       .completion = Completion::Files,
       .help = "Store this file as the document's viewable."},
      {.name = "metadata",
       .value = "FILE",
       .completion = Completion::Files,
       .help = "Store this file as the document's metadata."},
      {.name = "language", .value = "LANGUAGE", .help = "Set the document's language."},
      {.name = "link",
       .value = "NAME=ADDRESS",
       .repeatable = true,
       .help = "Say that the document was made from the one at ADDRESS, which it calls NAME; \"NAME=\" takes "
               "a link "
               "away. May be given several times."},
      {.name = "force",
       .letter = 'f',
       .help =
           "Store a content of another kind over a document that may be a Fenlet; its viewable, metadata and "
           "links go."},
      {.name = "kind",
       .value = "KIND",
       .help = "fenlet, general or ugc; fenlet unless given.",
       .choices = {"fenlet", "general", "ugc"}},
      {.name = "checkin", .help = "Check the working copy in after the store."},
      {.name = "stop-on-error", .help = "Of several files, send nothing further when one has failed."},
  };
  for (const OptionRow& row : FileListOptions()) options.push_back(row);
  for (const OptionRow& row : PutConditionOptions()) options.push_back(row);
  return options;
}

[[nodiscard]] std::vector<MemberRow> Members() {
  constexpr const char* sent = "unless nothing was sent";
  return {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
          {"file", MemberType::Text, nullptr, "FILE as it was given; with -r the path of the file"},
          {"bytes", MemberType::Number, nullptr, "its size"},
          {"action", MemberType::Text, nullptr,
           "created, iterated or stored (into a working copy); unchanged when --if-changed has sent nothing"},
          {"uid", MemberType::Text, "unless --dry-run would create it", "the UID to go on with"},
          {"checked_in", MemberType::Flag, sent, "whether a working copy was checked in"},
          {"checkout", MemberType::Text, sent, "the state of the checkout of that UID; see status"},
          {"dry_run", MemberType::Flag, "with --dry-run",
           "true: nothing was sent, and action is what would be done"}};
}

}  // namespace

CommandRow PutCommand() {
  return {
      "put",
      "Store a file as a document",
      "Stores FILE at ADDRESS, and prints the UID to go on with.\n\n"
      "A path that ends in \"/\" is that of a folder, or of a workspace (.../Workspaces/NAME/): the "
      "document gets FILE's name, escaped as in a path, and stays named so. A path to a document that is "
      "not there creates it. An existing document gets a new iteration; one that is checked out by "
      "vtdirect, here or on another machine, gets a store into its working copy, as does the UID or the "
      "path of a working copy. A document that somebody else has checked out, or you by other means, is "
      "refused before anything is sent. A document of the same name in another folder is ignored: a new "
      "one is created beside it, as long as the folder has none.\n\n"
      "A store into a working copy leaves it checked out unless --checkin is given.\n\n"
      "A new iteration keeps the source links that it isn't told to change, the attributes and a "
      "viewable that the server carries over. Metadata is of one iteration: without --metadata the new "
      "one has none. Documents of the kinds general and ugc take a content alone: over a document that "
      "is there they take --force, since the server does not tell whether it is a Fenlet document, whose "
      "viewable, metadata and links would go.\n\n"
      "The files must not be written to while they are sent; when they are, nothing is stored. They are "
      "copied to the directory for temporary files first, which needs room for all of them. A failure "
      "says which step failed, what is on the server now, and what can be done next.\n\n"
      "Several files are stored in the folder or the workspace at ADDRESS, which ends in \"/\" then, one "
      "after the other. If one fails, the others go on. Two of one name are refused, and so are options "
      "that belong to one document.\n\n"
      "With -r FILE is a directory. Each file in it and below it is stored in the folder of the same path "
      "below ADDRESS; a document that get -r had to call otherwise is found by its own name. The "
      "server's folders have to be there: the files of others fail, one line for a folder. Hidden files "
      "and directories, symbolic links and what is no regular file are left out, and told.",
      {{"FILE",
        "A local file, or a pattern with * or ? in quotes. Several go to the folder at ADDRESS. With -r "
        "one directory.",
        Count::AtLeastOnce},
       {"ADDRESS", "A path or a UID; see ADDRESSES."}},
      Options(),
      Requests::Some,
      RunPut,
      Members()};
}

}  // namespace vtdirect_cli
