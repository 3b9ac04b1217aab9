#include "hosts/cli/editing/lasting_name.h"

#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <algorithm>

#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/files/target_file.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] Failure NotToldFailure(const std::string& address, const std::optional<Reason>& reason) {
  const std::string why = reason ? " (" + WordsOf(*reason) + ")" : "";
  return WithNothing("changed", {ExitCode::Failure,
                                 "whether an edit of " + address + " is kept could not be found out" + why,
                                 "the same command can be given again", reason});
}

}  // namespace

Result<std::string> LastingName(const std::string& address, AddressKind kind, const std::string& document) {
  const auto kept = CheckoutBook().Find(document);
  const std::string& placed = !IsById(address, kind) ? address : kept ? kept->document : document;
  const VtDirectManager::Outcome outcome;
  const std::string path = VtDirectManager::GetVFSPathLatest(placed.c_str());
  // A part that is missing makes another path of it.
  if (AQuestionFailed(outcome) || (path.empty() && AnswerIsMissing(outcome))) {
    return NotToldFailure(address, outcome.Cause());
  }
  const std::size_t server = path.find("//");
  if (server == std::string::npos) return document;
  return VtDirectManager::GetServerURL(path.c_str()) +
         path.substr(std::min(path.find('/', server + 2), path.size()));
}

Result<std::string> NameOfEditedFile(const std::string& address, const std::string& document) {
  const VtDirectManager::Outcome outcome;
  const std::string name = SafeFileName(FileNameOf(document));
  if (!name.empty()) return name;
  if (AnswerIsMissing(outcome)) return NotToldFailure(address, outcome.Cause());
  return std::string("content");
}

}  // namespace vtdirect_cli
