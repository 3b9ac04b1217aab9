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

[[nodiscard]] bool IsCheckedOutHere(const BookContents& book, const std::string& uid) {
  return std::any_of(book.checkouts.begin(), book.checkouts.end(),
                     [&uid](const KeptCheckout& checkout) { return LeadsTo(checkout, uid); });
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
    if (known_.insert(subject.uid.empty() ? subject.address : subject.uid).second) {
      gathered_.found.push_back(subject);
    }
  }

  void AddTree(const RemoteTree& tree) {
    AddFailures(tree.failures);
    for (const Subject& document : DocumentsOf(tree)) {
      if (ofFolders_ == OfFolders::All || IsCheckedOutHere(book_, document.uid)) AddDocument(document);
    }
  }

  void AddFailures(const std::vector<Failure>& failures) {
    gathered_.failures.insert(gathered_.failures.end(), failures.begin(), failures.end());
  }

  [[nodiscard]] Subjects TakeSubjects() { return std::move(gathered_); }

 private:
  OfFolders ofFolders_;
  BookContents book_;
  Subjects gathered_;
  std::set<std::string> known_;  // UIDs, and addresses without one
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
