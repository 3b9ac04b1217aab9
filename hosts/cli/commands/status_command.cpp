#include <vtdirect/vt_direct_manager.h>

#include <map>

#include "hosts/cli/address.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/diagnosis.h"
#include "hosts/cli/host.h"
#include "hosts/cli/interruption.h"
#include "hosts/cli/reasons.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

struct Subject {
  std::string address;
  AddressKind kind{};
  std::string serverUrl;  // taken before anything is asked: the library knows no server that is written off
  bool anywhere = false;
};

struct Status {
  std::string uid;
  std::string current;
  std::string latest;
  CheckoutState checkout;
  std::optional<Failure> failure;

  [[nodiscard]] const char* word() const {
    if (failure) return "failed";
    return current == latest ? "up-to-date" : "outdated";
  }
};

// The servers that can't be used, with the reason, by their URLs. The library's session writes off a server
// whose status query failed; this does it for the question for a UID as well, which a path needs first.
using WrittenOff = std::map<std::string, Failure>;

[[nodiscard]] bool IsOfServer(ExitCode code) {
  return code == ExitCode::CannotConnect || code == ExitCode::AuthenticationRefused ||
         code == ExitCode::ServerUnsupported;
}

[[nodiscard]] Result<std::vector<Subject>> ReadSubjects(const Arguments& arguments) {
  std::vector<Subject> subjects;
  for (const std::string& address : arguments.All("ADDRESS")) {
    const auto kind = ClassifyAddress(address);
    if (!kind) return kind.failure();
    subjects.push_back(
        {address, *kind, VtDirectManager::GetServerURL(address.c_str()), arguments.Has("anywhere")});
  }
  return subjects;
}

[[nodiscard]] Failure WhyFailed(Host& host, const Subject& subject, WrittenOff& writtenOff) {
  const auto reason = LastReason();
  if (const auto failure = DiagnoseServer(host, subject.serverUrl)) {
    if (IsOfServer(failure->code)) writtenOff.emplace(subject.serverUrl, *failure);
    return *failure;
  }
  return ObjectFailure(host, subject.address, reason);
}

void Ask(Host& host, const Subject& subject, WrittenOff& writtenOff, Status& status) {
  host.ForgetAuthenticationRefusal();
  ForgetReasons();
  status.uid = VtDirectManager::GetUID(subject.address.c_str());
  if (!subject.anywhere) status.failure = RefusalOfAnotherPlace(subject.address, status.uid);
  if (status.failure) return;
  const int answer = status.uid.empty() ? -1
                                        : VtDirectManager::GetStatus(status.uid.c_str(), status.current,
                                                                     status.latest, nullptr);
  if (answer < 0) {
    status.failure = WhyFailed(host, subject, writtenOff);
    return;
  }
  status.checkout = ReadCheckoutState(status.uid);
}

[[nodiscard]] Status StatusOf(Host& host, const Subject& subject, WrittenOff& writtenOff) {
  Status status;
  if (subject.serverUrl.empty()) {
    status.failure = RequireListedServer(subject.address, subject.kind);
  } else if (const auto known = writtenOff.find(subject.serverUrl); known != writtenOff.end()) {
    status.failure = known->second;
  } else {
    Ask(host, subject, writtenOff, status);
  }
  return status;
}

[[nodiscard]] Record JsonOf(const Subject& subject, const Status& status) {
  Record record{{"address", subject.address}, {"status", std::string(status.word())}};
  if (status.failure) {
    record.emplace_back("error", std::string(ClassOf(*status.failure)));
    return record;
  }
  record.insert(record.end(), {{"uid", status.uid},
                               {"version", status.current},
                               {"latest_version", status.latest},
                               {"checkout", std::string(CheckoutWord(status.checkout.status))}});
  if (!status.checkout.user.empty()) record.emplace_back("checked_out_by", status.checkout.user);
  return record;
}

[[nodiscard]] Record ShownOf(const Subject& subject, const Status& status) {
  // Where the status failed, the checkout was not asked for.
  std::string checkout = status.failure ? "" : CheckoutWord(status.checkout.status);
  if (!status.checkout.user.empty()) checkout += " (" + status.checkout.user + ")";
  return {{"status", std::string(status.word())},
          {"version", status.current},
          {"latest_version", status.latest},
          {"checkout", checkout},
          {"address", subject.address}};
}

[[nodiscard]] ExitCode Report(Host& host, const Subject& subject, const Status& status) {
  host.output().Row(ShownOf(subject, status), JsonOf(subject, status));
  static_cast<void>(host.output().Flush());
  if (status.failure) return host.output().Fail(*status.failure);
  return status.current == status.latest ? ExitCode::Ok : ExitCode::Outdated;
}

ExitCode RunStatus(Host& host, const Arguments& arguments) {
  const auto subjects = ReadSubjects(arguments);
  if (!subjects) return host.output().Fail(subjects.failure());

  const auto session = VtDirectManager::StartSession();
  WrittenOff writtenOff;
  ExitCode worst = ExitCode::Ok;
  for (const Subject& subject : *subjects) {
    const Status status = StatusOf(host, subject, writtenOff);
    if (Interrupted()) return host.output().Fail(InterruptedFailure());
    worst = Worse(worst, Report(host, subject, status));
  }
  return worst;
}

}  // namespace

CommandRow StatusCommand() {
  return {
      "status",
      "Tell whether objects are up to date",
      "Prints one line for each ADDRESS, in their order: up-to-date, outdated or failed; the version of the "
      "object and the newest; the checkout; and the address, parted by tabs. A path without a version names "
      "the newest iteration, so it is a UID or a path with a version that can be outdated.\n\nThe checkout "
      "is none, by-you, by-other, temporary-workspace or workspace (the address is that of a working copy), "
      "not-possible (an older iteration), unsupported or unknown, with the user in brackets.\n\nA server "
      "that can't be used is asked once; every further address on it fails at once. The exit status tells "
      "the worst that happened: 10 when an object is outdated, and above that the classes of failure.",
      {{"ADDRESS", "A path or a UID; see ADDRESSES. May be given several times.", Count::AtLeastOnce}},
      {AnywhereOption()},
      true,
      RunStatus,
      {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
       {"status", MemberType::Text, nullptr, "up-to-date, outdated or failed"},
       {"error", MemberType::Text, "when failed", "the class of the failure"},
       {"uid", MemberType::Text, "unless failed", "the object's UID"},
       {"version", MemberType::Text, "unless failed", "the object's version"},
       {"latest_version", MemberType::Text, "unless failed", "the newest version"},
       {"checkout", MemberType::Text, "unless failed",
        "none, by-you, by-other, temporary-workspace, workspace, not-possible, unsupported or unknown"},
       {"checked_out_by", MemberType::Text, "when checked out", "who holds the checkout"}}};
}

}  // namespace vtdirect_cli
