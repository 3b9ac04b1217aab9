#include "hosts/cli/checkouts/unstored_copy.h"

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/storing/unstored_files.h"

namespace vtdirect_cli {

std::optional<Failure> RefusalOfUnstored(const std::string& address, const std::string& workingCopy,
                                         const char* done) {
  const UnstoredFiles unstored;
  for (const UnstoredFile& file : unstored.All()) {
    if (!AreSameUid(file.base, workingCopy) || unstored.IsToBeDropped(file.name)) continue;
    return WithNothing(
        done,
        {ExitCode::Failure, address + " was written to in a mount, and the server does not have that yet",
         "\"vtdirect recover\" tells why, \"vtdirect refresh DIR\" has the mount try again, and "
         "\"vtdirect recover --discard '" +
             unstored.ContentOf(file.name) + "'\" gives it up"});
  }
  return std::nullopt;
}

}  // namespace vtdirect_cli
