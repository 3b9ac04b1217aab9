#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/browsing/listing.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {
namespace {

// One listing under way. Nothing of an entry is kept, so that a folder whose documents the library hands on
// row by row takes the same memory whatever it holds.
struct Listing {
  Output& output;
  std::string directory;  // with its closing "/"
  bool details = false;
  bool versions = false;
  std::uint64_t delivered = 0;
  bool lacksDetails = false;  // a document came without what was asked for
  bool lacksVersions = false;
};

[[nodiscard]] std::vector<std::string> TextsOf(const char** texts) {
  std::vector<std::string> out;
  for (; texts != nullptr && *texts != nullptr; ++texts) out.emplace_back(*texts);
  return out;
}

void AddDetails(const VtDirectManager::DirEntryDetails* details, Record& shown, Record& json) {
  const std::string number = details == nullptr ? "" : TextOrEmpty(details->number);
  const std::string title = details == nullptr ? "" : TextOrEmpty(details->name);
  shown.insert(shown.end(), {{"number", number}, {"title", title}});
  if (details != nullptr) json.insert(json.end(), {{"number", number}, {"title", title}});
}

void AddVersions(const VtDirectManager::DirEntryExt& entry, Record& shown, Record& json) {
  const std::vector<std::string> versions = TextsOf(entry.versions);
  shown.emplace_back("versions", versions);
  if (entry.versions == nullptr) return;
  json.emplace_back("versions", versions);
  json.emplace_back("version_ids", TextsOf(entry.versionIds));
}

[[nodiscard]] bool ShowEntry(Listing& listing, const VtDirectManager::DirEntryExt& entry) {
  ++listing.delivered;
  const std::string name = TextOrEmpty(entry.name);
  const std::string closed = entry.isFolder ? name + "/" : name;
  Record json{{"path", listing.directory + closed},
              {"name", name},
              {"kind", std::string(entry.isFolder ? "folder" : "document")}};
  Record shown;
  if (listing.details) shown.emplace_back("kind", std::string(entry.isFolder ? "d" : "-"));
  shown.emplace_back("name", closed);
  if (listing.details) AddDetails(entry.details, shown, json);
  if (listing.versions) AddVersions(entry, shown, json);
  if (!entry.isFolder) {
    listing.lacksDetails |= listing.details && entry.details == nullptr;
    listing.lacksVersions |= listing.versions && entry.versions == nullptr;
  }
  listing.output.Row(shown, json);
  return listing.output.FlushRow();
}

void ShowNickname(const char* nickname, void* user) {
  const std::string name = nickname;
  static_cast<Output*>(user)->Row(
      {{"name", name + "/"}}, {{"path", "//" + name + "/"}, {"name", name}, {"kind", std::string("server")}});
}

ExitCode ListServers(Host& host) {
  VtDirectManager::ReadRootDirs(ShowNickname, &host.output());
  if (host.servers().empty()) {
    host.output().Note("no servers are listed; list one with --server NICK=URL or in the configuration file");
  }
  return ExitCode::Ok;
}

[[nodiscard]] std::uint32_t FlagsOf(const Listing& listing) {
  std::uint32_t flags = VtDirectManager::ReadDirFiles | VtDirectManager::ReadDirFolders;
  if (listing.details) flags |= VtDirectManager::ReadDirDetails;
  if (listing.versions) flags |= VtDirectManager::ReadDirVersions;
  return flags;
}

void NoteWhatIsLacking(const Listing& listing) {
  if (listing.lacksDetails) listing.output.Note("this listing of the server shows no numbers and titles");
  if (listing.lacksVersions) {
    listing.output.Note("this listing of the server shows no versions");
  }
}

ExitCode ListDirectory(Host& host, const std::string& path, Listing& listing) {
  ForgetReasons();
  const ListingEnd end =
      ListPath(listing.directory, FlagsOf(listing),
               [&listing](const VtDirectManager::DirEntryExt& entry) { return ShowEntry(listing, entry); });
  if (end == ListingEnd::Broken) return host.output().Fail(DiagnoseDirectory(host, path, listing.delivered));
  NoteWhatIsLacking(listing);
  return ExitCode::Ok;
}

ExitCode RunLs(Host& host, const Arguments& arguments) {
  if (!arguments.Has("PATH")) return ListServers(host);
  const std::string path = arguments.Text("PATH");
  const auto kind = RequireAddress(path);
  if (!kind) return host.output().Fail(kind.failure());
  if (IsById(path, *kind)) return host.output().Fail(DiagnoseObjectAsDirectory(host, path));
  Listing listing{host.output(), WithClosingSlash(path), arguments.Has("long"), arguments.Has("versions")};
  return ListDirectory(host, path, listing);
}

}  // namespace

CommandRow LsCommand() {
  return AsListing(
      {"ls",
       "List a folder, or the servers",
       "Prints one line for each entry of the folder at PATH, each as it arrives and in the order of the "
       "server; a name is printed as it is in a path, and a folder's closes with \"/\". However many "
       "documents a folder holds, listing them takes the same memory where the server lists folders by its "
       "newer services, from schema 4 on; every other listing is held whole. Without PATH the nicknames of "
       "the listed servers are printed, and no request is made.\n\nWith --long a line is kind (d for a "
       "folder, - for a document), name, number and title, separated by tabs; with --versions the versions "
       "follow, separated by blanks. A server shows them in folders only, and numbers and titles from schema "
       "4 on, versions from schema 5 on; what it doesn't show is empty.\n\nA missing \"/\" at the end of "
       "PATH is added. A document's path is refused with a message that says so.",
       {{"PATH", "A path; see ADDRESSES.", Count::AtMostOnce}},
       {{.name = "long", .letter = 'l', .help = "Show kind, number and title too."},
        {.name = "versions", .help = "Show the versions of each document."}},
       Requests::Some,
       RunLs,
       {{"path", MemberType::Text, nullptr, "the object's own path; a folder's closes with \"/\""},
        {"name", MemberType::Text, nullptr, "the name as it is in a path, escaped"},
        {"kind", MemberType::Text, nullptr, "document, folder or server"},
        {"number", MemberType::Text, "with --long, when the server shows it", "the document's number"},
        {"title", MemberType::Text, "with --long, when the server shows it",
         "the document's name that people gave it, free text"},
        {"versions", MemberType::Texts, "with --versions, when the server shows them",
         "the document's versions"},
        {"version_ids", MemberType::Texts, "with versions",
         "the server's id of each version, in their order"}}},
      {"name", "kind", "number", "title", "versions"},
      "Sort the lines by this column: name, kind, number, title or versions.");
}

}  // namespace vtdirect_cli
