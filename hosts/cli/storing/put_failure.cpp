#include "hosts/cli/storing/put_failure.h"

#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/newest_iteration.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

using Action = PutTarget::Action;

// What the failed call leaves open.
enum class Doubt {
  None,          // the file is not stored
  AnswerIsLost,  // it may be stored, and a question tells
  MayComeYet     // the server may store it after the question
};

constexpr const char* againAdvice = "the same command can be given again";

// How far it had come, from the bytes that the library has told of.
[[nodiscard]] std::string PointOf(const PutOutcome& outcome) {
  if (outcome.AllSent()) return "after the file was sent";
  if (outcome.sent == 0) return "before the file was sent";
  return "after " + std::to_string(outcome.sent) + " of " + ByteCount(outcome.total);
}

[[nodiscard]] StateOnServer Unknown(const std::string& command, const std::string& address) {
  return {"the state on the server could not be found out",
          CommandToType(command, address) + " tells when the server answers"};
}

[[nodiscard]] StateOnServer NotCreated(Doubt doubt) {
  if (doubt == Doubt::MayComeYet) return NotSeenYet("there is no such document", "its creation");
  return {.text = "nothing was created", .next = againAdvice, .isUnchanged = true};
}

// The path leads to the other document of the name, so only the folder tells.
[[nodiscard]] StateOnServer StateBesideNamesake(const PutTarget& target, Doubt doubt) {
  switch (PresenceInFolder(target.address)) {
    case Presence::There:
      return {"the folder has a document of that name now, and only the answer may have been lost",
              CommandToType("ls", target.address.substr(0, target.address.rfind('/') + 1)) + " shows it"};
    case Presence::Gone:
      return NotCreated(doubt);
    default:
      return Unknown("ls", target.address.substr(0, target.address.rfind('/') + 1));
  }
}

// A name that isn't found on a server that answers is not there.
[[nodiscard]] StateOnServer StateAfterCreation(const PutTarget& target, Doubt doubt, bool answers) {
  const bool mayBeStored = doubt != Doubt::None;
  const Result<std::string> found = answers ? UidAtPlace(target.address) : Result<std::string>(Failure{});
  if (!found && mayBeStored) return Unknown("info", target.address);
  if (found && found->empty() && target.hasNamesake && mayBeStored) {
    return StateBesideNamesake(target, doubt);
  }
  if (!found || found->empty()) return NotCreated(doubt);
  const std::string& uid = *found;
  const std::string next =
      CommandToType("info", uid) + " tells of it, and a further put makes a new iteration";
  if (!mayBeStored) return {"a document has appeared there meanwhile: " + uid, next};
  if (VtDirectManager::ShouldCreate(uid.c_str())) {
    return {"the document is there now, without content: " + uid, next};
  }
  return {"a document is there now, and only the answer may have been lost: " + uid, next};
}

[[nodiscard]] StateOnServer StateAfterIteration(const PutTarget& target, Doubt doubt) {
  const bool mayBeStored = doubt != Doubt::None;
  const auto state = AskForNewest(target.address);
  if (!state && !mayBeStored) return {"nothing was changed"};
  if (!state) return Unknown("info", target.address);
  const auto& [version, newest] = *state;
  if (state->isNewest() && doubt == Doubt::MayComeYet) {
    return NotSeenYet(version + " is the newest iteration", "the new one");
  }
  if (state->isNewest()) {
    return {.text = "nothing was changed, " + version + " is the newest iteration still",
            .next = againAdvice,
            .isUnchanged = true};
  }
  const std::string next = CommandToType("versions", target.address) + " tells of them";
  if (!mayBeStored) return {"somebody has made the iteration " + newest + " meanwhile", next};
  return {"the newest iteration is " + newest + " now, and only the answer may have been lost", next};
}

[[nodiscard]] std::string ContentOfWorkingCopy(bool mayBeStored) {
  return mayBeStored ? "whether the file is stored in it is not known" : "its content is as it was";
}

[[nodiscard]] StateOnServer StateAfterStore(const PutTarget& target, bool mayBeStored) {
  const CheckoutState state = ReadCheckoutState(target.address);
  if (IsWorkingCopy(state.status)) {
    return {"you still have it checked out, and " + ContentOfWorkingCopy(mayBeStored)};
  }
  // The state of a temporary checkout is that of the document it was taken from.
  if (state.status == VtDirectManager::CheckoutNone || state.status == VtDirectManager::CheckoutNotPossible) {
    return {"it is not checked out any more",
            CommandToType("verify", target.address) + " tells the state of the checkout"};
  }
  if (state.status == VtDirectManager::CheckoutByOther) {
    return {"it is checked out by " + state.user + " now",
            CommandToType("verify", target.address) + " tells more"};
  }
  if (!mayBeStored) return {"nothing was stored"};
  return Unknown("verify", target.address);
}

[[nodiscard]] StateOnServer StateAfter(const PutTarget& target, Doubt doubt, bool answers) {
  switch (target.action) {
    case Action::Create:
      return StateAfterCreation(target, doubt, answers);
    case Action::Iterate:
      return StateAfterIteration(target, doubt);
    default:
      return StateAfterStore(target, doubt != Doubt::None);
  }
}

// Nothing of the file has reached the server whole, so nothing was stored.
[[nodiscard]] std::optional<Failure> LocalFailure(const PutOutcome& outcome) {
  if (!outcome.changedFile.empty()) {
    return SourceWasWrittenTo(outcome.changedFile, "nothing was stored");
  }
  if (outcome.brokenTicket) {
    return Failure{ExitCode::Failure,
                   "the server's answer for a place to upload to could not be understood; nothing was stored",
                   againAdvice};
  }
  if (outcome.copyIsShort) {
    return Failure{
        ExitCode::LocalFile,
        "the files could not be copied whole to the directory for temporary files, from where they "
        "are sent; nothing was stored",
        "make room there, or set TMPDIR to another one"};
  }
  return std::nullopt;
}

// What is wrong with the server, if anything is.
// @param why  what the failed call told
[[nodiscard]] std::optional<Failure> ServerFailureOf(Host& host, const PutTarget& target,
                                                     const PutOutcome& outcome, const std::string& why) {
  auto failure = DiagnoseServer(host, VtDirectManager::GetServerURL(target.address.c_str()));
  if (!failure && outcome.code == VtDirectManager::StatusConnectFailed) {
    return Failure{ExitCode::CannotConnect, why};
  }
  return failure;
}

// To be asked before the reasons are forgotten.
[[nodiscard]] Doubt DoubtAfter(const PutOutcome& outcome) {
  if (outcome.isUnconfirmed) return Doubt::MayComeYet;
  const bool tooLarge = outcome.code == VtDirectManager::StatusFileTooLarge;
  if (!outcome.AllSent() || tooLarge || !ChangeMayHaveHappened()) return Doubt::None;
  return ChangeMayStillHappen() ? Doubt::MayComeYet : Doubt::AnswerIsLost;
}

[[nodiscard]] StateOnServer StateAfterCheckIn(const std::string& uid, bool mayBeDone) {
  if (!IsWorkingCopy(ReadCheckoutState(uid).status)) {
    return {"it is not seen to be checked out any more", CommandToType("verify", uid) + " tells"};
  }
  const std::string again = CommandToType("checkin", uid) + " tries again";
  const std::string now = "you still have it checked out";
  if (!mayBeDone) return {now, again};
  StateOnServer state = NotSeenYet(now, "the check-in");
  // A check-in that was carried out after all is refused, so that this does no harm.
  state.next = "\"vtdirect recover\" asks again, and " + again;
  return state;
}

}  // namespace

Failure PutCheckInFailure(Host& host, const std::string& uid) {
  Failure failure = WithReason({});
  const bool mayBeDone = ChangeMayStillHappen();
  std::string why = WordsOfLastReason();
  const auto server = DiagnoseServer(host, VtDirectManager::GetServerURL(uid.c_str()));
  if (server && server->code == ExitCode::Interrupted) return InterruptedFailure();
  if (server) why = server->Text();
  failure.message = "the file is stored in the working copy " + uid + ", but checking it in failed";
  if (!why.empty()) failure.message += " (" + why + ")";
  if (server) failure.code = server->code;
  return WithState(failure, StateAfterCheckIn(uid, mayBeDone));
}

Failure PutFailure(Host& host, const PutRequest& request, const PutTarget& target,
                   const PutOutcome& outcome) {
  if (auto failure = LocalFailure(outcome)) return *failure;
  Failure failure = WithReason({});
  std::string why = WordsOfLastReason();
  const bool tooLarge = outcome.code == VtDirectManager::StatusFileTooLarge;
  const Doubt doubt = DoubtAfter(outcome);
  if (tooLarge) {
    why = "the server takes no files as large as this";
  } else if (const auto server = ServerFailureOf(host, target, outcome, why)) {
    if (server->code == ExitCode::Interrupted) return InterruptedFailure();
    failure.code = server->code;
    why = server->Text();
  }
  // The server answers, so that its state is told all the same.
  const bool answers = failure.code == ExitCode::Failure;
  if (outcome.isUnconfirmed && answers) failure.code = ExitCode::Incomplete;
  StateOnServer state = StateAfter(target, doubt, answers);
  if (tooLarge) state.next = "a smaller file, or a greater limit at the server, is needed";
  failure.message = WordsOf(target.action).doing + target.address + " from " + request.content.path +
                    " failed " + PointOf(outcome);
  if (!why.empty()) failure.message += " (" + why + ")";
  if (failure.reason) failure.reason->mayHaveHappened = doubt != Doubt::None;
  return WithState(failure, state);
}

}  // namespace vtdirect_cli
