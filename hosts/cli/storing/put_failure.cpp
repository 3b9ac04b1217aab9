#include "hosts/cli/storing/put_failure.h"

#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/diagnosis.h"
#include "hosts/cli/reasons.h"
#include "hosts/cli/storing/document_place.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

using Action = PutTarget::Action;

constexpr const char* kAgain = "the same command can be given again";

// How far it had come, from the bytes that the library has told of.
[[nodiscard]] std::string PointOf(const PutOutcome& outcome) {
  if (outcome.AllSent()) return "after the file was sent";
  if (outcome.sent == 0) return "before the file was sent";
  return "after " + std::to_string(outcome.sent) + " of " + ByteCount(outcome.total);
}

[[nodiscard]] WhatStands Unknown(const std::string& command, const std::string& address) {
  return {"what stands now could not be found out",
          CommandToType(command, address) + " tells when the server answers"};
}

// The path leads to the other document of the name, so only the folder tells.
[[nodiscard]] WhatStands StandingBesideNamesake(const PutTarget& target) {
  switch (PresenceInFolder(target.address)) {
    case Presence::There:
      return {"the folder has a document of that name now, and only the answer may have been lost",
              CommandToType("ls", target.address.substr(0, target.address.rfind('/') + 1)) + " shows it"};
    case Presence::Gone:
      return {"nothing was created", kAgain, true};
    default:
      return Unknown("ls", target.address.substr(0, target.address.rfind('/') + 1));
  }
}

// A name that isn't found on a server that answers is not there.
[[nodiscard]] WhatStands StandingOfCreation(const PutTarget& target, bool mayBeStored, bool answers) {
  const Result<std::string> found = answers ? UidAtPlace(target.address) : Result<std::string>(Failure{});
  if (!found && mayBeStored) return Unknown("info", target.address);
  if (found && found->empty() && target.hasNamesake && mayBeStored) return StandingBesideNamesake(target);
  if (!found || found->empty()) return {"nothing was created", kAgain, true};
  const std::string& uid = *found;
  const std::string next =
      CommandToType("info", uid) + " tells of it, and a further put makes a new iteration";
  if (!mayBeStored) return {"a document has come to stand there meanwhile: " + uid, next};
  if (VtDirectManager::ShouldCreate(uid.c_str())) {
    return {"the document is there now, without content: " + uid, next};
  }
  return {"a document is there now, and only the answer may have been lost: " + uid, next};
}

[[nodiscard]] WhatStands StandingOfIteration(const PutTarget& target, bool mayBeStored) {
  std::string version;
  std::string newest;
  const int status = VtDirectManager::GetStatus(target.address.c_str(), version, newest, nullptr);
  if (status == 0)
    return {"nothing was changed, " + version + " is the newest iteration still", kAgain, true};
  if (status < 0 && !mayBeStored) return {"nothing was changed"};
  if (status < 0) return Unknown("info", target.address);
  const std::string next = CommandToType("versions", target.address) + " tells of them";
  if (!mayBeStored) return {"somebody has made the iteration " + newest + " meanwhile", next};
  return {"the newest iteration is " + newest + " now, and only the answer may have been lost", next};
}

[[nodiscard]] std::string ContentOfWorkingCopy(bool mayBeStored) {
  return mayBeStored ? "whether the file is stored in it is not known" : "its content is as it was";
}

[[nodiscard]] WhatStands StandingOfStore(const PutTarget& target, bool mayBeStored) {
  const CheckoutState state = ReadCheckoutState(target.address);
  if (IsWorkingCopy(state.status)) {
    return {"you still have it checked out, and " + ContentOfWorkingCopy(mayBeStored)};
  }
  // The state of a temporary checkout is that of the document it was taken from.
  if (state.status == VtDirectManager::CheckoutNone || state.status == VtDirectManager::CheckoutNotPossible) {
    return {"it is not checked out any more", CommandToType("verify", target.address) + " tells what stands"};
  }
  if (state.status == VtDirectManager::CheckoutByOther) {
    return {"it is checked out by " + state.user + " now",
            CommandToType("verify", target.address) + " tells more"};
  }
  if (!mayBeStored) return {"nothing was stored"};
  return Unknown("verify", target.address);
}

[[nodiscard]] WhatStands StandingOf(const PutTarget& target, bool mayBeStored, bool answers) {
  switch (target.action) {
    case Action::Create:
      return StandingOfCreation(target, mayBeStored, answers);
    case Action::Iterate:
      return StandingOfIteration(target, mayBeStored);
    default:
      return StandingOfStore(target, mayBeStored);
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
                   kAgain};
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

}  // namespace

Failure PutCheckInFailure(Host& host, const std::string& uid) {
  Failure failure = WithReason({});
  std::string why = WordsOfLastReason();
  const auto server = DiagnoseServer(host, VtDirectManager::GetServerURL(uid.c_str()));
  if (server && server->code == ExitCode::Interrupted) return InterruptedFailure();
  if (server) why = server->Text();
  const bool stands = IsWorkingCopy(ReadCheckoutState(uid).status);
  failure.message = "the file is stored in the working copy " + uid + ", but checking it in failed";
  if (!why.empty()) failure.message += " (" + why + ")";
  failure.message +=
      stands ? "; you still have it checked out" : "; it is not seen to be checked out any more";
  failure.advice =
      stands ? CommandToType("checkin", uid) + " tries again" : CommandToType("verify", uid) + " tells";
  if (server) failure.code = server->code;
  return failure;
}

Failure PutFailure(Host& host, const PutRequest& request, const PutTarget& target,
                   const PutOutcome& outcome) {
  if (auto failure = LocalFailure(outcome)) return *failure;
  Failure failure = WithReason({});
  std::string why = WordsOfLastReason();
  const bool tooLarge = outcome.code == VtDirectManager::StatusFileTooLarge;
  const bool mayBeStored = outcome.AllSent() && !tooLarge && ChangeMayHaveHappened();
  if (tooLarge) {
    why = "the server takes no files as large as this";
  } else if (const auto server = ServerFailureOf(host, target, outcome, why)) {
    if (server->code == ExitCode::Interrupted) return InterruptedFailure();
    failure.code = server->code;
    why = server->Text();
  }
  WhatStands standing = StandingOf(target, mayBeStored, failure.code == ExitCode::Failure);
  if (tooLarge) standing.next = "a smaller file, or a greater limit at the server, is needed";
  failure.message = WordsOf(target.action).doing + target.address + " from " + request.content.path +
                    " failed " + PointOf(outcome);
  if (!why.empty()) failure.message += " (" + why + ")";
  if (failure.reason) failure.reason->mayHaveHappened = mayBeStored;
  return WithStanding(failure, standing);
}

}  // namespace vtdirect_cli
