#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/checkouts/newest_iteration.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/many/batch_options.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

struct Question {
  std::string address;
  std::string serverUrl{};  // taken before anything is asked: the library knows no server that is written off
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

[[nodiscard]] Failure WhyFailed(Host& host, const Question& question) {
  const auto reason = LastReason();
  if (const auto failure = DiagnoseServer(host, question.serverUrl)) return *failure;
  return ObjectFailure(host, question.address, reason);
}

void Ask(Host& host, const Question& question, Status& status) {
  ForgetReasons();
  status.uid = VtDirectManager::GetUID(question.address.c_str());
  if (!question.anywhere) status.failure = FailureOfAnotherPlace(question.address, status.uid);
  if (status.failure) return;
  // How the UID was found out does not count any more.
  if (!status.uid.empty()) ForgetReasons();
  const VtDirectManager::Outcome outcome;
  const int answer = status.uid.empty() ? -1
                                        : VtDirectManager::GetStatus(status.uid.c_str(), status.current,
                                                                     status.latest, nullptr);
  if (answer < 0 || LastAnswerWasBroken() || (answer == 0 && NewestIsUntold(outcome))) {
    status.current.clear();
    status.latest.clear();
    status.failure = WhyFailed(host, question);
    return;
  }
  status.checkout = ReadCheckoutState(status.uid);
}

[[nodiscard]] Record JsonOf(const Question& question, const Status& status) {
  Record record{{"address", question.address}, {"status", std::string(status.word())}};
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

[[nodiscard]] Record ShownOf(const Question& question, const Status& status) {
  // Where the status failed, the checkout was not asked for.
  std::string checkout = status.failure ? "" : CheckoutWord(status.checkout.status);
  if (!status.checkout.user.empty()) checkout += " (" + status.checkout.user + ")";
  return {{"status", std::string(status.word())},
          {"version", status.current},
          {"latest_version", status.latest},
          {"checkout", checkout},
          {"address", question.address}};
}

[[nodiscard]] ExitCode Report(Host& host, const Question& question, const Status& status) {
  host.output().Row(ShownOf(question, status), JsonOf(question, status));
  static_cast<void>(host.output().Flush());
  if (status.failure) return host.output().Fail(*status.failure);
  return status.current == status.latest ? ExitCode::Ok : ExitCode::Outdated;
}

[[nodiscard]] Question QuestionOf(const Arguments& arguments, const std::string& address) {
  return {address, VtDirectManager::GetServerURL(address.c_str()), arguments.Has("anywhere")};
}

[[nodiscard]] ExitCode TellStatus(Host& host, const Arguments& arguments, const std::string& address) {
  const Question question = QuestionOf(arguments, address);
  Status status;
  const auto kind = ClassifyAddress(address);
  if (kind && question.serverUrl.empty()) status.failure = RequireListedServer(address, *kind);
  if (!status.failure) Ask(host, question, status);
  if (Interrupted()) return host.output().Fail(InterruptedFailure());
  return Report(host, question, status);
}

[[nodiscard]] ExitCode TellUnusable(Host& host, const std::string& address, const Failure& why) {
  Status status;
  status.failure = why;
  return Report(host, {.address = address}, status);
}

ExitCode RunStatus(Host& host, const Arguments& arguments) {
  // A text that is no address is a mistake of the line, which is told before anything is asked.
  for (const std::string& address : arguments.All("ADDRESS")) {
    const auto kind = ClassifyAddress(address);
    if (!kind) return host.output().Fail(kind.failure());
  }
  const auto session = VtDirectManager::StartSession();
  return ReadEach(host, arguments, Wanted::Documents, TellStatus, TellUnusable);
}

[[nodiscard]] std::vector<OptionRow> Options() {
  std::vector<OptionRow> options = {AnywhereOption()};
  for (const OptionRow& row : ReadingManyOptions()) options.push_back(row);
  return options;
}

}  // namespace

CommandRow StatusCommand() {
  return AsListing(
      {"status",
       "Tell whether objects are up to date",
       "Prints one line for each ADDRESS, in their order: up-to-date, outdated or failed; the version of the "
       "object and the newest; the checkout; and the address, separated by tabs. A path without a version "
       "names the newest iteration, so it is a UID or a path with a version that can be outdated.\n\nThe "
       "checkout is none, by-you, by-other, temporary-workspace or workspace (the address is that of a "
       "working copy), not-possible (an older iteration), unsupported or unknown, with the user in "
       "brackets.\n\nA server that can't be used is asked once; every further address on it fails at once. "
       "The exit status tells the worst that happened: 10 when an object is outdated, and above that the "
       "classes of failure.",
       {{"ADDRESS", "A path, a pattern or a UID; see ADDRESSES. May be given several times.",
         Count::AtLeastOnce}},
       Options(),
       Requests::Some,
       RunStatus,
       {{"address", MemberType::Text, nullptr, "ADDRESS as it was given"},
        {"status", MemberType::Text, nullptr, "up-to-date, outdated or failed"},
        {"error", MemberType::Text, "when failed", "the class of the failure"},
        {"uid", MemberType::Text, "unless failed", "the object's UID"},
        {"version", MemberType::Text, "unless failed", "the object's version"},
        {"latest_version", MemberType::Text, "unless failed", "the newest version"},
        {"checkout", MemberType::Text, "unless failed",
         "none, by-you, by-other, temporary-workspace, workspace, not-possible, unsupported or unknown"},
        {"checked_out_by", MemberType::Text, "when checked out", "who holds the checkout"}}},
      {"status", "version", "latest_version", "checkout", "address"},
      "Sort the lines by this column: status, version, latest_version, checkout or address.");
}

}  // namespace vtdirect_cli
