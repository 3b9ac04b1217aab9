#include "hosts/cli/checkouts/unstored_copy.h"

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/storing/unstored_files.h"

namespace vtdirect_cli {

std::optional<Failure> RefusalOfUnstored(const std::string& address, const std::string& workingCopy,
                                         const char* done) {
  const UnstoredFiles unstored;
  const auto listing = unstored.List();
  for (const UnstoredFile& file : listing.files) {
    if (!AreSameUid(file.base, workingCopy) || unstored.IsToBeDropped(file.name)) continue;
    return WithNothing(
        done,
        {ExitCode::Failure, address + " was written to in a mount, and the server does not have that yet",
         "\"vtdirect recover\" tells why, \"vtdirect refresh DIR\" has the mount try again, and "
         "\"vtdirect recover --discard '" +
             unstored.ContentOf(file.name) + "'\" gives it up"});
  }
  auto failure = unstored.FailureOf(listing);
  if (!failure) return std::nullopt;
  return WithNothing(done, std::move(*failure));
}

}  // namespace vtdirect_cli
