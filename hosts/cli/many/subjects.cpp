#include "hosts/cli/many/subjects.h"

#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <set>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/texts/name_pattern.h"

namespace vtdirect_cli {
namespace {

// A pattern, taken apart.
struct Pattern {
  std::string folder;              // up to the first step with a wildcard; closes with "/"
  std::vector<std::string> steps;  // from that one on
  bool isOfFolders = false;        // it closes with "/"
};

[[nodiscard]] std::size_t EndOfServer(const std::string& address) {
  return address.find('/', address.find("//") + 2);
}

[[nodiscard]] Pattern PatternOf(const std::string& address) {
  Pattern pattern;
  const std::size_t begin = address.rfind('/', address.find_first_of("*?")) + 1;
  pattern.folder = address.substr(0, begin);
  pattern.isOfFolders = address.ends_with('/');
  for (std::size_t at = begin; at < address.size();) {
    const std::size_t end = std::min(address.find('/', at), address.size());
    if (end > at) pattern.steps.push_back(address.substr(at, end - at));
    at = end + 1;
  }
  return pattern;
}

// The last step of a path.
[[nodiscard]] std::string LastStep(const std::string& path) {
  const std::string open = path.ends_with('/') ? path.substr(0, path.size() - 1) : path;
  return open.substr(open.rfind('/') + 1);
}

[[nodiscard]] std::vector<RemoteFolder> Matching(const std::vector<RemoteFolder>& folders,
                                                 const std::string& step) {
  std::vector<RemoteFolder> matching;
  for (const RemoteFolder& folder : folders) {
    if (MatchesPattern(step, LastStep(folder.address))) matching.push_back(folder);
  }
  return matching;
}

class Search {
 public:
  Search(Wanted wanted, Effort effort, Subjects& subjects)
      : wanted_(wanted), effort_(effort), subjects_(subjects) {}

  void Find(const std::string& address) {
    std::string server;
    static_cast<void>(VtDirectManager::GetLinkContext(address.c_str(), server));
    const Pattern pattern = PatternOf(address);
    std::vector<RemoteFolder> level{{"", pattern.folder}};
    std::vector<Subject> found;
    bool isWhole = true;
    for (std::size_t number = 0; number < pattern.steps.size() && !level.empty(); ++number) {
      const RemoteLevel listed = ReadRemoteLevel(server, level, effort_);
      isWhole = isWhole && listed.tree.failures.empty();
      subjects_.failures.insert(subjects_.failures.end(), listed.tree.failures.begin(),
                                listed.tree.failures.end());
      level = Matching(listed.below, pattern.steps[number]);
      if (number + 1 < pattern.steps.size()) continue;
      if (!pattern.isOfFolders) TakeDocuments(listed.tree, pattern.steps[number], found);
      if (pattern.isOfFolders || wanted_ == Wanted::DocumentsAndFolders) TakeFolders(level, found);
    }
    if (found.empty() && isWhole)
      subjects_.failures.push_back({ExitCode::NotFound, "nothing matches " + address});
    SortByPath(found);
    for (Subject& subject : found) {
      const std::string& identity = subject.uid.empty() ? subject.address : subject.uid;
      if (known_.insert(identity).second) subjects_.found.push_back(std::move(subject));
    }
  }

 private:
  static void TakeDocuments(const RemoteTree& tree, const std::string& step, std::vector<Subject>& found) {
    for (const auto& [path, document] : tree.documents) {
      if (!MatchesPattern(step, LastStep(document.address))) continue;
      found.push_back({.address = document.address,
                       .uid = document.uid,
                       .version = document.version,
                       .name = LastStep(path)});
    }
  }

  static void TakeFolders(const std::vector<RemoteFolder>& folders, std::vector<Subject>& found) {
    for (const RemoteFolder& folder : folders) {
      found.push_back({.address = folder.address, .isFolder = true, .name = LastStep(folder.path)});
    }
  }

  Wanted wanted_;
  Effort effort_;
  Subjects& subjects_;
  std::set<std::string> known_;
};

// The path of several documents leads to none of them.
void NameByIdentity(std::vector<Subject>& found) {
  for (std::size_t begin = 0; begin < found.size();) {
    const std::string path = found[begin].address;
    std::size_t end = begin;
    while (end < found.size() && found[end].address == path) ++end;
    for (std::size_t at = begin; end - begin > 1 && at < end; ++at) {
      if (!found[at].uid.empty()) found[at].address = found[at].uid;
    }
    begin = end;
  }
}

}  // namespace

bool IsPattern(const std::string& address) {
  const auto kind = ClassifyAddress(address);
  if (!kind || *kind != AddressKind::Path || IsById(address, *kind)) return false;
  const std::size_t root = EndOfServer(address);
  return root != std::string::npos && HasWildcard(std::string_view(address).substr(root));
}

Subjects FindSubjects(const std::vector<std::string>& addresses, Wanted wanted, Effort effort) {
  Subjects subjects;
  Search search(wanted, effort, subjects);
  for (const std::string& address : addresses) {
    if (!IsPattern(address)) {
      subjects.found.push_back({address});
    } else if (auto failure = RequireListedServer(address, AddressKind::Path)) {
      subjects.failures.push_back(std::move(*failure));
    } else {
      search.Find(address);
    }
  }
  return subjects;
}

void SortByPath(std::vector<Subject>& found) {
  std::stable_sort(found.begin(), found.end(),
                   [](const Subject& one, const Subject& other) { return one.address < other.address; });
  NameByIdentity(found);
}

}  // namespace vtdirect_cli
