#include <vtdirect/vt_direct_manager.h>

#include <vector>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/browsing/tree_walk.h"
#include "hosts/cli/browsing/walked_folders.h"
#include "hosts/cli/checkouts/checkout_words.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/finding/version_order.h"
#include "hosts/cli/program/host.h"
#include "hosts/cli/program/interruption.h"
#include "hosts/cli/texts/name_pattern.h"

namespace vtdirect_cli {
namespace {

/// What a document has to be like.
struct Wanted {
  std::string name;    // a pattern; empty for any
  std::string number;  // a pattern; empty for any
  std::string newer;   // a version; empty for any
  bool mine = false;
};

/// What the listing told of the document that is looked at.
struct Listed {
  std::string number;
  std::string title;
  std::vector<std::string> versions;
  bool hasDetails = false;
  bool hasVersions = false;
};

/// One search under way.
class Search {
 public:
  Search(Host& host, Wanted wanted) : host_(host), wanted_(std::move(wanted)), folders_(Flags()) {}

  [[nodiscard]] ExitCode Run(const std::string& path) {
    TreeWork work;
    work.list = [this](const std::string& folder, const EntryFunction& receive) {
      return List(folder, receive);
    };
    work.show = [this](const TreeEntry& entry) { return entry.isFolder || Look(entry); };
    work.failed = [this](const std::string& folder, ListingEnd) {
      if (Interrupted()) return false;
      host_.output().Warning("cannot list " + folder +
                             (WordsOfLastReason().empty() ? "" : " (" + WordsOfLastReason() + ")"));
      ForgetReasons();
      return true;
    };
    ForgetReasons();
    const TreeEnd end = WalkTree(path, {}, work);
    if (Interrupted()) return host_.output().Fail(InterruptedFailure());
    if (failure_) return host_.output().Fail(*failure_);
    const bool broken = end.start == ListingEnd::Broken || end.start == ListingEnd::Unreachable;
    if (broken) return host_.output().Fail(DiagnoseDirectory(host_, path, 0));
    const bool isWhole = !end.failures && !end.folderBound && !end.waitingBound && end.beyondDepth == 0 &&
                         end.notEnterable == 0 && !lacks_;
    if (isWhole && !hasFound_) host_.output().NoteToWatcher("no document matches");
    if (isWhole) return ExitCode::Ok;
    return host_.output().Fail(
        {ExitCode::Incomplete, lacks_ ? LackText() : "not every folder could be searched"});
  }

 private:
  [[nodiscard]] std::uint32_t Flags() const {
    std::uint32_t flags =
        VtDirectManager::ReadDirFiles | VtDirectManager::ReadDirFolders | VtDirectManager::ReadDirDetails;
    if (!wanted_.newer.empty()) flags |= VtDirectManager::ReadDirVersions;
    return flags;
  }

  [[nodiscard]] ListingEnd List(const std::string& folder, const EntryFunction& receive) {
    return folders_.List(folder, [this, &receive](const VtDirectManager::DirEntryExt& entry) {
      Remember(entry);
      return receive(entry);
    });
  }

  // The walk hands a document on while its entry is still there.
  void Remember(const VtDirectManager::DirEntryExt& entry) {
    listed_ = {};
    if (entry.details != nullptr) {
      listed_.hasDetails = true;
      listed_.number = TextOrEmpty(entry.details->number);
      listed_.title = TextOrEmpty(entry.details->name);
    }
    listed_.hasVersions = entry.versions != nullptr;
    for (const char** text = entry.versions; text != nullptr && *text != nullptr; ++text)
      listed_.versions.emplace_back(*text);
  }

  // False ends the search.
  [[nodiscard]] bool Look(const TreeEntry& entry) {
    if (Interrupted()) return false;
    if (!wanted_.name.empty() && !HasName(entry.name)) return true;
    if (!wanted_.number.empty() && !HasNumber()) return true;
    if (!wanted_.newer.empty() && !IsNewer()) return true;
    if (wanted_.mine && !IsMine(entry.path)) return !failure_;
    Record json{{"path", entry.path}, {"name", entry.name}};
    if (listed_.hasDetails) json.insert(json.end(), {{"number", listed_.number}, {"title", listed_.title}});
    if (listed_.hasVersions) json.emplace_back("versions", listed_.versions);
    host_.output().Row({{"path", entry.path}}, json);
    hasFound_ = true;
    return host_.output().FlushRow();
  }

  // The file's name or the one that people gave the document.
  [[nodiscard]] bool HasName(const std::string& name) const {
    return MatchesIgnoringCase(wanted_.name, name) ||
           (listed_.hasDetails && MatchesIgnoringCase(wanted_.name, listed_.title));
  }

  [[nodiscard]] bool HasNumber() {
    lacks_ = lacks_ || !listed_.hasDetails;
    return listed_.hasDetails && MatchesIgnoringCase(wanted_.number, listed_.number);
  }

  [[nodiscard]] bool IsNewer() {
    lacks_ = lacks_ || !listed_.hasVersions;
    for (const std::string& version : listed_.versions) {
      if (ComesAfter(version, wanted_.newer)) return true;
    }
    return false;
  }

  [[nodiscard]] bool IsMine(const std::string& path) {
    ForgetReasons();
    switch (ReadCheckoutState(path).status) {
      case VtDirectManager::CheckoutByUserUnrecorded:
      case VtDirectManager::CheckoutInTempWorkspace:
      case VtDirectManager::CheckoutInWorkspace:
        return true;
      case VtDirectManager::CheckoutStatusFailed:
        failure_ = Diagnose(host_, path, Seen::Unknown);
        return false;
      default:
        return false;
    }
  }

  [[nodiscard]] static std::string LackText() {
    return "some folders of this server show no numbers or versions, so documents in them were passed over";
  }

  Host& host_;
  Wanted wanted_;
  WalkedFolders folders_;
  Listed listed_;
  std::optional<Failure> failure_;
  bool lacks_ = false;
  bool hasFound_ = false;
};

ExitCode RunFind(Host& host, const Arguments& arguments) {
  const std::string path = arguments.Text("PATH");
  const auto kind = RequireAddress(path);
  if (!kind) return host.output().Fail(kind.failure());
  if (IsById(path, *kind)) return host.output().Fail(DiagnoseObjectAsDirectory(host, path));
  Wanted wanted{arguments.Text("name"), arguments.Text("number"), arguments.Text("newer"),
                arguments.Has("mine")};
  return Search(host, std::move(wanted)).Run(WithClosingSlash(path));
}

}  // namespace

CommandRow FindCommand() {
  return AsListing(
      {"find",
       "Find documents below a folder",
       "Walks the tree below PATH as tree does, and prints the path of each document that matches all "
       "options. In a PATTERN \"*\" stands for any characters and \"?\" for one; small and capital letters "
       "of ASCII are the same. Put it in quotes.\n\n"
       "A server shows numbers and titles from schema 4 on and versions from schema 5 on, in folders and not "
       "in workspaces. Where it shows none, --number and --newer pass documents over, and the exit status is "
       "11. Versions are compared part by part, so that B.10 comes after B.9. --mine asks the server for "
       "each document that the other options leave, which takes its time.",
       {{"PATH", "A path; see ADDRESSES."}},
       {{.name = "name", .value = "PATTERN", .help = "Only documents with this file name or title."},
        {.name = "number", .value = "PATTERN", .help = "Only documents with this number."},
        {.name = "mine", .help = "Only documents that you have checked out."},
        {.name = "newer", .value = "VERSION", .help = "Only documents with a version after this one."}},
       Requests::Some,
       RunFind,
       {{"path", MemberType::Text, nullptr, "the object's own path; a folder's closes with \"/\""},
        {"name", MemberType::Text, nullptr, "the name as it is in a path, escaped"},
        {"number", MemberType::Text, "when the server shows it", "the document's number"},
        {"title", MemberType::Text, "when the server shows it",
         "the document's name that people gave it, free text"},
        {"versions", MemberType::Texts, "with --newer, when the server shows them",
         "the document's versions"}}},
      {"path", "name", "number", "title"}, "Sort the lines by this column: path, name, number or title.");
}

}  // namespace vtdirect_cli
