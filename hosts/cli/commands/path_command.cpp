#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

struct Form {
  ArgumentName option;
  std::string (*path)(const char* address);
};

constexpr Form forms[] = {
    {"latest", VtDirectManager::GetVFSPathLatest},
    {"versioned", VtDirectManager::GetVFSPathVersioned},
    {"folder", VtDirectManager::GetVFSFolderPath},
};

// The form that is asked for; null when there is more than one.
[[nodiscard]] const Form* FormOf(const Arguments& arguments) {
  const Form* chosen = nullptr;
  for (const Form& form : forms) {
    if (!arguments.Has(form.option)) continue;
    if (chosen != nullptr) return nullptr;
    chosen = &form;
  }
  return chosen == nullptr ? &forms[0] : chosen;
}

[[nodiscard]] Failure WithoutPath(Host& host, const std::string& address) {
  if (VtDirectManager::FileExists(address.c_str()) && !LastAnswerWasBroken()) {
    return {ExitCode::Failure, "the server shows no path of " + address};
  }
  return Diagnose(host, address, Seen::Missing);
}

ExitCode RunPath(Host& host, const Arguments& arguments) {
  const std::string address = arguments.Text("ADDRESS");
  const Form* const form = FormOf(arguments);
  if (form == nullptr) {
    return host.output().Fail(
        {ExitCode::Usage, "--latest, --versioned and --folder ask for different paths; give one of them"});
  }
  const auto kind = RequirePlacedAddress(host, arguments, address);
  if (!kind) return host.output().Fail(kind.failure());

  ForgetReasons();
  const std::string path = form->path(PlacedAddress(address, *kind).c_str());
  if (path.empty()) return host.output().Fail(WithoutPath(host, address));
  host.output().Row({{"path", path}});
  return ExitCode::Ok;
}

}  // namespace

CommandRow PathCommand() {
  return {"path",
          "Print the path of an object",
          "Prints the path of the object at ADDRESS in the language of this run: of its newest iteration, "
          "which is the form without a version, unless told otherwise. For a path the newest iteration's is "
          "answered from its text alone, without asking the server whether the object is there.",
          {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
          {AnywhereOption(),
           {.name = "latest", .help = "The path of the newest iteration."},
           {.name = "versioned",
            .help = "The path of exactly this iteration: with its version when a newer one exists."},
           {.name = "folder", .help = "The path of the folder that holds it."}},
          Requests::Some,
          RunPath,
          {{"path", MemberType::Text, nullptr, "the path"}}};
}

}  // namespace vtdirect_cli
