#include "hosts/cli/many/subjects_below.h"

#include <vtdirect/vt_direct_manager.h>

#include <algorithm>
#include <set>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/checkouts/checkout_book.h"
#include "hosts/cli/work_folder/parallel.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] bool MayBeFolder(const std::string& address) {
  const auto kind = ClassifyAddress(address);
  return kind && *kind == AddressKind::Path && !IsById(address, *kind) &&
         !RequireListedServer(address, *kind);
}

// The UID of the working copy that vtdirect keeps for what has this one; empty for none.
[[nodiscard]] std::string KeptCopyOf(const BookContents& book, const std::string& uid) {
  const auto found = std::find_if(book.checkouts.begin(), book.checkouts.end(),
                                  [&uid](const KeptCheckout& checkout) { return LeadsTo(checkout, uid); });
  return found == book.checkouts.end() ? std::string() : found->uid;
}

[[nodiscard]] std::vector<Subject> DocumentsOf(const RemoteTree& tree) {
  std::vector<Subject> documents;
  for (const auto& [path, document] : tree.documents) {
    documents.push_back({.address = document.address, .uid = document.uid, .version = document.version});
  }
  SortByPath(documents);
  return documents;
}

class Gathering {
 public:
  explicit Gathering(OfFolders ofFolders)
      : ofFolders_(ofFolders),
        book_(ofFolders == OfFolders::CheckedOutHere ? CheckoutBook().Read() : BookContents()) {}

  void AddDocument(const Subject& subject) {
    static_cast<void>(TakesItsCopy(subject));
    AddOnce(subject);
  }

  void AddTree(const RemoteTree& tree) {
    AddFailures(tree.failures);
    for (const Subject& document : DocumentsOf(tree)) {
      if (ofFolders_ == OfFolders::All || TakesItsCopy(document)) AddOnce(document);
    }
  }

  void AddFailures(const std::vector<Failure>& failures) {
    gathered_.failures.insert(gathered_.failures.end(), failures.begin(), failures.end());
  }

  [[nodiscard]] Subjects TakeSubjects() { return std::move(gathered_); }

 private:
  void AddOnce(const Subject& subject) {
    if (known_.insert(UidOf(subject)).second) gathered_.found.push_back(subject);
  }

  // Whether the subject is the first one by which this working copy is met. A workspace of the folder shows the
  // same one that its document leads to, and a checkout ends once.
  [[nodiscard]] bool TakesItsCopy(const Subject& subject) {
    const std::string copy = KeptCopyOf(book_, UidOf(subject));
    return !copy.empty() && copies_.insert(copy).second;
  }

  // The UID of a document that was named by its path is not known before the command asks for it.
  [[nodiscard]] static const std::string& UidOf(const Subject& subject) {
    return subject.uid.empty() ? subject.address : subject.uid;
  }

  OfFolders ofFolders_;
  BookContents book_;
  Subjects gathered_;
  std::set<std::string> known_;   // UIDs, and addresses without one
  std::set<std::string> copies_;  // UIDs of working copies that are among what was gathered
};

}  // namespace

OptionRow RecursiveOption(const char* help) {
  return {.name = "recursive", .letter = 'r', .help = help};
}

bool IsFolder(const Subject& subject) {
  if (subject.isFolder || !MayBeFolder(subject.address)) return subject.isFolder;
  if (subject.address.ends_with('/')) return true;
  return subject.name.empty() && !VtDirectManager::FileExists(subject.address.c_str()) &&
         VtDirectManager::FileOrFolderExists(WithClosingSlash(subject.address).c_str());
}

RemoteTree TreeBelow(const std::string& address, Effort effort) {
  std::string server;
  static_cast<void>(VtDirectManager::GetLinkContext(address.c_str(), server));
  return ReadRemoteTree(server, {"", WithClosingSlash(address)}, effort);
}

Subjects WithDocumentsBelow(const Subjects& subjects, OfFolders ofFolders, Effort effort) {
  std::vector<char> isFolder(subjects.found.size());  // a thread for each, which bits would not allow
  RunInParallel(isFolder.size(), effort.threads,
                [&](std::size_t number) { isFolder[number] = IsFolder(subjects.found[number]) ? 1 : 0; });
  Gathering gathering(ofFolders);
  // Each tree is listed on all threads, so one comes after the other.
  for (std::size_t number = 0; number < isFolder.size(); ++number) {
    const Subject& subject = subjects.found[number];
    if (isFolder[number] == 0) {
      gathering.AddDocument(subject);
    } else {
      gathering.AddTree(TreeBelow(subject.address, effort));
    }
  }
  gathering.AddFailures(subjects.failures);
  return gathering.TakeSubjects();
}

}  // namespace vtdirect_cli
