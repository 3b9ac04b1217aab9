#include <vtdirect/vt_direct_manager.h>

#include <charconv>

#include "hosts/cli/browsing/address.h"
#include "hosts/cli/browsing/folders_ahead.h"
#include "hosts/cli/browsing/tree_walk.h"
#include "hosts/cli/browsing/walked_folders.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/host.h"

namespace vtdirect_cli {
namespace {

// One walk, from its arguments to its exit status.
struct Tree {
  Host& host;
  std::string path;   // as the user gave it
  std::string start;  // with its closing "/"
  TreeBounds bounds;
  bool fullPaths = false;
  bool depthGiven = false;
  unsigned atOnce = 1;  // folders that are listed at one time
  std::uint64_t shown = 0;
  ExitCode worst = ExitCode::Ok;
};

// A whole number from 1 to `most`; nothing for any other text.
[[nodiscard]] std::optional<std::uint32_t> ReadNumber(const std::string& text, std::uint32_t most) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole && number >= 1 && number <= most ? std::optional(number) : std::nullopt;
}

[[nodiscard]] Result<std::uint32_t> ReadDepth(const Arguments& arguments) {
  const std::uint32_t deepest = TreeBounds().depth;
  if (!arguments.Has("depth")) return deepest;
  if (const auto depth = ReadNumber(arguments.Text("depth"), deepest)) return *depth;
  return Failure{ExitCode::Usage, "--depth takes a number from 1 to " + std::to_string(deepest)};
}

[[nodiscard]] Result<std::uint32_t> ReadParallel(const Arguments& arguments) {
  // As many exchanges as the platform makes with one server at one time.
  constexpr std::uint32_t most = 16;
  if (!arguments.Has("parallel")) return std::uint32_t{1};
  if (const auto atOnce = ReadNumber(arguments.Text("parallel"), most)) return *atOnce;
  return Failure{ExitCode::Usage, "--parallel takes a number from 1 to " + std::to_string(most)};
}

[[nodiscard]] bool ShowLine(Tree& tree, const TreeEntry& entry) {
  const std::string indented =
      std::string(2UL * (entry.depth - 1), ' ') + entry.name + (entry.isFolder ? "/" : "");
  const std::string text = tree.fullPaths ? entry.path : indented;
  Output& output = tree.host.output();
  output.Row({{"path", text}}, {{"path", entry.path},
                                {"name", entry.name},
                                {"kind", std::string(entry.isFolder ? "folder" : "document")},
                                {"depth", std::uint64_t{entry.depth}}});
  return output.FlushRow();
}

// A folder that can't be listed is told of and passed over; a server that can't be used ends the walk.
[[nodiscard]] bool PassOver(Tree& tree, const std::string& path) {
  const std::string url = VtDirectManager::GetServerURL(path.c_str());
  if (const auto failure = DiagnoseServer(tree.host, url)) {
    tree.worst = tree.host.output().Fail(*failure);
    return false;
  }
  tree.host.output().Warning("cannot list " + path + " to its end");
  return true;
}

[[nodiscard]] TreeEnd Walk(Tree& tree) {
  // The walk's own listing is one of them.
  WalkedFolders folders(VtDirectManager::ReadDirFiles | VtDirectManager::ReadDirFolders);
  FoldersAhead ahead([&folders](const std::string& path,
                                const EntryFunction& receive) { return folders.List(path, receive); },
                     tree.atOnce - 1);
  TreeWork work{
      [&ahead](const std::string& path, const EntryFunction& receive) { return ahead.Enter(path, receive); },
      [&tree](const TreeEntry& entry) {
        ++tree.shown;
        return ShowLine(tree, entry);
      },
      [&tree](const std::string& path, ListingEnd /*end*/) { return PassOver(tree, path); },
  };
  if (tree.atOnce > 1) {
    work.expect = [&ahead](std::vector<std::string> paths) { ahead.Expect(std::move(paths)); };
    work.expected = 2UL * tree.atOnce;
  }
  return WalkTree(tree.start, tree.bounds, work);
}

// What is missing in a walk that went on to its end, or the empty text.
[[nodiscard]] std::string WhatIsMissing(const Tree& tree, const TreeEnd& end) {
  if (end.folderBound) return "more than " + std::to_string(tree.bounds.folders) + " folders";
  if (end.waitingBound) return "more folder names in one place than can be kept";
  if (end.beyondDepth > 0 && !tree.depthGiven) {
    return std::to_string(end.beyondDepth) + " folders lie more than " + std::to_string(tree.bounds.depth) +
           " levels deep";
  }
  if (end.notEnterable > 0) {
    return std::to_string(end.notEnterable) + " folders have a name that cannot be in a path";
  }
  return end.failures ? "some folders could not be listed" : "";
}

ExitCode Report(Tree& tree, const TreeEnd& end) {
  if (end.start == ListingEnd::Broken || end.start == ListingEnd::Unreachable) {
    return tree.host.output().Fail(DiagnoseDirectory(tree.host, tree.path, tree.shown));
  }
  if (tree.worst != ExitCode::Ok) return tree.worst;
  const std::string missing = WhatIsMissing(tree, end);
  if (missing.empty()) return ExitCode::Ok;
  return tree.host.output().Fail({ExitCode::Incomplete, "the tree is not complete: " + missing});
}

ExitCode RunTree(Host& host, const Arguments& arguments) {
  Tree tree{host, arguments.Text("PATH"), WithClosingSlash(arguments.Text("PATH")), {}};
  tree.fullPaths = arguments.Has("full-paths");
  const auto kind = RequireAddress(tree.path);
  if (!kind) return host.output().Fail(kind.failure());
  const auto depth = ReadDepth(arguments);
  if (!depth) return host.output().Fail(depth.failure());
  tree.bounds.depth = *depth;
  tree.depthGiven = arguments.Has("depth");
  const auto atOnce = ReadParallel(arguments);
  if (!atOnce) return host.output().Fail(atOnce.failure());
  tree.atOnce = *atOnce;
  if (IsById(tree.path, *kind)) return host.output().Fail(DiagnoseObjectAsDirectory(host, tree.path));
  ForgetReasons();
  return Report(tree, Walk(tree));
}

}  // namespace

CommandRow TreeCommand() {
  return {
      "tree",
      "Print a folder and all below it",
      "Walks the tree below PATH depth first and prints one line for each folder and document, indented "
      "by two blanks a level; a folder's name closes with \"/\". In each folder the documents come "
      "first, as the server delivers them, then its folders by the bytes of their names. Only names of "
      "folders are kept in memory, one folder's for each level.\n\n"
      "A folder that can't be listed is passed over with a warning. A folder that contains itself would "
      "have no end, so a walk goes 64 levels deep and lists a million folders at most. When any of this "
      "leaves something out, the exit status is 11. A missing \"/\" at the end of PATH is added.",
      {{"PATH", "A path; see ADDRESSES."}},
      {{.name = "depth",
        .letter = 'd',
        .value = "LEVELS",
        .help = "Show at most this many levels below PATH; what is left out is no failure."},
       {.name = "parallel",
        .value = "NUMBER",
        .help =
            "List so many folders at one time, 16 at most; without it, one after the other. The output is "
            "the same."},
       {.name = "full-paths",
        .letter = 'f',
        .help = "Print whole paths without indentation, fit for sort and grep."}},
      Requests::Some,
      RunTree,
      {{"path", MemberType::Text, nullptr, "the object's own path; a folder's closes with \"/\""},
       {"name", MemberType::Text, nullptr, "the name as it is in a path, escaped"},
       {"kind", MemberType::Text, nullptr, "document, folder or server"},
       {"depth", MemberType::Number, nullptr, "levels below PATH, from 1"}}};
}

}  // namespace vtdirect_cli
