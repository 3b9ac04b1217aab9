#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/storing/document_place.h"

namespace vtdirect_cli {
namespace {

ExitCode RunUid(Host& host, const Arguments& arguments) {
  const std::string address = arguments.Text("ADDRESS");
  const auto kind = RequirePlacedAddress(host, arguments, address);
  if (!kind) return host.output().Fail(kind.failure());

  const std::string uid = VtDirectManager::GetUID(address.c_str());
  // The library completes a UID by the file name when the server gives it, and takes the UID as it is
  // otherwise.
  const auto parsed = VtDirectManager::ParseUID(uid.c_str());
  const bool isNamed = parsed && !parsed->fileName.empty();
  const bool confirmed = isNamed || (!uid.empty() && VtDirectManager::FileExists(address.c_str()));
  if (!confirmed) return host.output().Fail(Diagnose(host, address, Seen::Missing));
  host.output().Row({{"uid", uid}});
  return ExitCode::Ok;
}

}  // namespace

CommandRow UidCommand() {
  return {"uid",
          "Print the UID of an object",
          "Prints the canonical UID of the object at ADDRESS, which stays valid when the object moves or the "
          "language changes. A UID that holds a file name is answered from its text alone, without asking "
          "the server whether the object is there.",
          {{"ADDRESS", "A path or a UID; see ADDRESSES."}},
          {AnywhereOption()},
          Requests::Some,
          RunUid,
          {{"uid", MemberType::Text, nullptr, "the canonical UID"}}};
}

}  // namespace vtdirect_cli
