#include "hosts/cli/storing/put_conditions.h"

#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <cerrno>
#include <cstring>

#include "hosts/cli/commands/dry_run.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/durable_file.h"
#include "hosts/cli/files/sha256.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] bool HasNoContentYet(const std::string& uid) {
  const auto reason = LastReason();
  return reason && reason->kind == VtDirectManager::FailureKind::NotFound &&
         VtDirectManager::ShouldCreate(uid.c_str());
}

[[nodiscard]] Failure NotCompared(const std::string& address) {
  if (Interrupted()) return InterruptedFailure();
  return WithReason({ExitCode::Failure,
                     WithWords("whether " + address + " has these bytes already could not be found out"),
                     "the same command can be given again"});
}

}  // namespace

std::vector<OptionRow> PutConditionOptions() {
  return {{.name = "expect",
           .value = "VERSION",
           .help = "Store only if this is the document's newest version, so that nothing is stored over "
                   "somebody else's "
                   "work."},
          {.name = "if-changed", .help = "Send nothing when the document has the bytes of FILE already."},
          DryRunOption()};
}

std::optional<Failure> RefusalOfConditions(const Arguments& arguments) {
  if (arguments.Has("expect") && arguments.Text("expect").empty()) {
    return Failure{ExitCode::Usage, "--expect takes a version"};
  }
  if (!arguments.Has("if-changed")) return std::nullopt;
  for (const ArgumentName option :
       {ArgumentName("viewable"), ArgumentName("metadata"), ArgumentName("link"), ArgumentName("language")}) {
    if (!arguments.Has(option)) continue;
    return Failure{ExitCode::Usage, std::string("--if-changed compares the content alone, and --") +
                                        option.text() + " stores something else"};
  }
  return std::nullopt;
}

std::optional<Failure> RefusalOfVersion(Host& host, const PutTarget& target, const std::string& expected) {
  if (target.action == PutTarget::Action::Create) {
    return WithNothing("sent", {ExitCode::Failure,
                                "there is no document " + target.address + ", and version " + expected +
                                    " of it is expected",
                                {},
                                std::nullopt,
                                FailureClass::Conflict});
  }
  ForgetReasons();
  std::string newest;
  std::string uid;
  if (!VtDirectManager::GetLatest(target.before.c_str(), newest, uid) || newest.empty()) {
    return Diagnose(host, target.address, Seen::Unknown);
  }
  if (newest == expected) return std::nullopt;
  return WithNothing(
      "sent",
      {ExitCode::Failure, target.address + " is version " + newest + " now, and " + expected + " is expected",
       "fetch that version first, and bring your changes into it", std::nullopt, FailureClass::Conflict});
}

Result<bool> HasBytesAlready(Host& host, const PutRequest& request, const PutTarget& target) {
  if (target.action == PutTarget::Action::Create) return false;
  ForgetReasons();
  const auto size = VtDirectManager::GetContentSize(target.before.c_str());
  if (!size && HasNoContentYet(target.before)) return false;
  if (!size) return NotCompared(target.address);
  if (*size != request.content.size()) return false;
  const DurableFile fetched(host.workDirectory() + "/compared");
  if (fetched.error() != 0) {
    return Failure{ExitCode::LocalFile,
                   "cannot write " + Printable(host.workDirectory()) + ": " + std::strerror(fetched.error())};
  }
  std::string uid;
  VtDirectManager::DownloadOptions options;
  options.progress = [](std::size_t, std::size_t) { return !Interrupted(); };
  options.compareSize = true;
  if (!VtDirectManager::GetFile(target.before.c_str(), fetched.path().c_str(), uid, options)) {
    return NotCompared(target.address);
  }
  const std::string here = Sha256OfFile(request.content.path);
  return !here.empty() && here == Sha256OfFile(fetched.path());
}

}  // namespace vtdirect_cli
