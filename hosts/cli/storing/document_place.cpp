#include "hosts/cli/storing/document_place.h"

#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "hosts/cli/address.h"
#include "hosts/cli/files/escaped_name.h"
#include "hosts/cli/reasons.h"

namespace vtdirect_cli {
namespace {

// The names of a path behind the server's, each written in one way. Several names may stand for one server.
[[nodiscard]] std::vector<std::string> NamesOf(std::string_view path) {
  std::vector<std::string> names;
  if (const std::size_t server = path.find("//"); server != std::string_view::npos) {
    path.remove_prefix(server + 2);
    path.remove_prefix(std::min(path.find('/'), path.size()));
  }
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('/'), path.size());
    if (end > 0) names.push_back(NormalizedName(path.substr(0, end)));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return names;
}

[[nodiscard]] Failure NotToldFailure(const std::string& address, const VtDirectManager::Outcome& outcome) {
  const auto cause = outcome.Cause();
  return {ExitCode::CannotConnect,
          "where the document of " + address + " stands could not be found out (" + WordsOf(*cause) +
              "); nothing was changed",
          "the same command can be given again", cause};
}

}  // namespace

std::optional<Failure> RefusalOfAnotherPlace(const std::string& address, const std::string& uid) {
  const auto kind = ClassifyAddress(address);
  if (uid.empty() || !kind || IsById(address, *kind)) return std::nullopt;
  const VtDirectManager::Outcome outcome;
  const std::string folder = VtDirectManager::GetVFSFolderPath(uid.c_str());
  if (folder.empty() && AnswerIsMissing(outcome)) return NotToldFailure(address, outcome);
  if (folder.empty() || NamesOf(folder) == NamesOf(address.substr(0, address.rfind('/'))))
    return std::nullopt;
  return Failure{ExitCode::NotFound,
                 "not found: " + address + "; the document of that name, " + uid + ", stands in " +
                     WithClosingSlash(folder) + "; nothing was changed",
                 "give its own address if it is meant"};
}

OptionRow AnywhereOption() {
  return {"anywhere",
          0,
          nullptr,
          false,
          Completion::Nothing,
          "Take the document of that name in whichever folder it is, as the server's search finds it."};
}

Result<AddressKind> RequirePlacedAddress(const Arguments& arguments, const std::string& address) {
  const auto kind = RequireAddress(address);
  if (!kind || arguments.Has("anywhere") || IsById(address, *kind) || address.ends_with('/')) return kind;
  auto refusal = RefusalOfAnotherPlace(address, VtDirectManager::GetUID(address.c_str()));
  if (!refusal) return kind;
  if (refusal->code == ExitCode::NotFound) refusal->advice += ", or --anywhere";
  return *refusal;
}

Result<std::string> UidAtPlace(const std::string& path) {
  const VtDirectManager::Outcome outcome;
  const std::string uid = VtDirectManager::GetUID(path.c_str());
  if (uid.empty() && AnswerIsMissing(outcome)) return NotToldFailure(path, outcome);
  const auto refusal = RefusalOfAnotherPlace(path, uid);
  if (!refusal) return uid;
  if (refusal->code != ExitCode::NotFound) return *refusal;
  return std::string();
}

}  // namespace vtdirect_cli
